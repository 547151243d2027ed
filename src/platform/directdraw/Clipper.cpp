// Binding a clipper to its window.
#include "platform/directdraw/Clipper.h"

#include "base/Faults.h"
#include "base/RuntimeError.h"

namespace lumora
{

void Clipper::SetHWnd(std::uint32_t flags, WindowHandle window)
{
    faults::Point("Clipper.SetHWnd");
    if (flags != 0)
        throw RuntimeError{error::DDInvalidParams, "Clipper", "A clipper is bound to a window with flags 0"};
    const std::shared_ptr<ControlWindow> found = ControlWindow::FromHandle(window);
    if (!found)
        throw RuntimeError{error::DDInvalidParams, "Clipper",
                           "There is no window with handle " + std::to_string(window)};
    window_ = found;
}

} // namespace lumora
