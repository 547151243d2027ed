// Walks a hierarchy of any depth without recursion.
#pragma once

#include "platform/scenegraph/frames/Frame.h"

#include <utility>
#include <vector>

namespace lumora
{

/// A list that keeps its memory for the next one of its thread, so that frames are drawn without taking any.
class FrameList
{
public:
    FrameList() { std::swap(frames_, Spare()); }
    ~FrameList()
    {
        frames_.clear();
        std::swap(frames_, Spare());
    }
    FrameList(const FrameList&) = delete;
    FrameList& operator=(const FrameList&) = delete;

    std::vector<Frame*>& Frames() { return frames_; }

private:
    static std::vector<Frame*>& Spare()
    {
        thread_local std::vector<Frame*> spare;
        return spare;
    }

    std::vector<Frame*> frames_;
};

/// Calls `visit` for `top` and every frame below it: parents before children, children in their order.
template<typename Visit>
void VisitFrames(Frame& top, Visit&& visit)
{
    FrameList list;
    std::vector<Frame*>& waiting = list.Frames();
    waiting.push_back(&top);
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
