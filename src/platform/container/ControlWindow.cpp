// Which window a handle means.
#include "platform/container/ControlWindow.h"

#include <map>

namespace lumora
{

namespace
{

using Registry = std::map<WindowHandle, std::weak_ptr<ControlWindow>>;

// Never destroyed: windows that live until the end of the process still find it.
Registry& Windows()
{
    static Registry& registry = *new Registry;
    return registry;
}

} // namespace

std::shared_ptr<ControlWindow> ControlWindow::FromHandle(WindowHandle handle)
{
    const auto found = Windows().find(handle);
    return found == Windows().end() ? nullptr : found->second.lock();
}

void ControlWindow::Register(WindowHandle handle, const std::shared_ptr<ControlWindow>& window)
{
    Windows()[handle] = window;
}

void ControlWindow::Unregister(WindowHandle handle)
{
    Windows().erase(handle);
}

} // namespace lumora
