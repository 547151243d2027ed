// Stands in for windows and surfaces in a tree that has only their headers.
#include "platform/automation/RuntimeError.h"
#include "platform/directdraw/Surface.h"

#include <map>

namespace lumora
{

namespace
{
std::map<WindowHandle, std::weak_ptr<ControlWindow>> windows;
}

std::shared_ptr<ControlWindow> ControlWindow::FromHandle(WindowHandle handle)
{
    return windows[handle].lock();
}

void ControlWindow::Register(WindowHandle handle, const std::shared_ptr<ControlWindow>& window)
{
    windows[handle] = window;
}

void ControlWindow::Unregister(WindowHandle handle)
{
    windows.erase(handle);
}

void Clipper::SetHWnd(std::uint32_t, WindowHandle window)
{
    window_ = ControlWindow::FromHandle(window);
}

PixelView Surface::Pixels()
{
    return {pixels_.data(), description_.width, description_.height, description_.width};
}

} // namespace lumora
