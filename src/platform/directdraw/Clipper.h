// Clips what goes to the screen to a window.
#pragma once

#include "platform/container/ControlWindow.h"

#include <memory>

namespace lumora
{

/// Created by DirectDraw::CreateClipper.
class Clipper : public Object
{
public:
    /// Binds the window with this handle; `flags` must be 0. DDInvalidParams when there is no such window.
    void SetHWnd(std::uint32_t flags, WindowHandle window);

    /// The bound window, or nothing when none was bound or it is gone.
    std::shared_ptr<ControlWindow> Window() const { return window_.lock(); }

private:
    std::weak_ptr<ControlWindow> window_;
};

} // namespace lumora
