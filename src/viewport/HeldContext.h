// A surface's device context for the length of a block.
#pragma once

#include "base/Trap.h"
#include "platform/directdraw/DeviceContext.h"
#include "platform/directdraw/Surface.h"

namespace lumora
{

/// Gives the context back whatever happens; Release tells whether that worked.
class HeldContext
{
public:
    explicit HeldContext(Surface& surface) : surface_(surface), context_(surface.GetDC()) {}
    ~HeldContext()
    {
        if (context_)
            IgnoringErrors([&] { Release(); });
    }
    HeldContext(const HeldContext&) = delete;
    HeldContext& operator=(const HeldContext&) = delete;

    DeviceContext* operator->() const { return context_.get(); }

    void Release()
    {
        surface_.ReleaseDC(context_);
        context_ = nullptr;
    }

private:
    Surface& surface_;
    std::shared_ptr<DeviceContext> context_;
};

} // namespace lumora
