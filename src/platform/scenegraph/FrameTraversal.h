// Walks a hierarchy of any depth without recursion.
#pragma once

#include "platform/scenegraph/Frame.h"

#include <vector>

namespace lumora
{

/// Calls `visit` for `top` and every frame below it: parents before children, children in their order.
template<typename Visit>
void VisitFrames(Frame& top, Visit&& visit)
{
    std::vector<Frame*> waiting{&top};
    while (!waiting.empty())
    {
        Frame& frame = *waiting.back();
        waiting.pop_back();
        visit(frame);
        const auto& children = frame.Children();
        for (auto child = children.rbegin(); child != children.rend(); ++child)
            waiting.push_back(child->get());
    }
}

} // namespace lumora
