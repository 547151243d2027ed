// The window of the control on the host's form, and the attributes the framework keeps with it.
#pragma once

#include "platform/pictures/Picture.h"
#include "platform/pictures/PixelView.h"

#include <cstdint>
#include <memory>

namespace lumora
{

using WindowHandle = std::intptr_t;

/// Attributes raise InvalidPropertyValue for what the window does not accept. Scale values are in the window's scale
/// mode (twips by default); pixels are those of the screen.
class ControlWindow : public Object
{
public:
    virtual WindowHandle Handle() const = 0;

    virtual std::int32_t BackColor() const = 0;
    virtual void SetBackColor(std::int32_t color) = 0;
    virtual std::int16_t BorderStyle() const = 0; ///< 0 none, 1 fixed single
    virtual void SetBorderStyle(std::int16_t style) = 0;
    virtual std::shared_ptr<Picture> MouseIcon() const = 0;
    virtual void SetMouseIcon(const std::shared_ptr<Picture>& icon) = 0;
    virtual std::int16_t MousePointer() const = 0; ///< 0 .. 15, or 99 for MouseIcon
    virtual void SetMousePointer(std::int16_t pointer) = 0;
    virtual bool Enabled() const = 0;
    virtual void SetEnabled(bool enabled) = 0;

    /// The design-time picture shown in the window; nothing shows none.
    virtual std::shared_ptr<Picture> GetPicture() const = 0;
    virtual void SetPicture(const std::shared_ptr<Picture>& picture) = 0;

    /// The client area in the window's scale mode.
    virtual double ScaleLeft() const = 0;
    virtual double ScaleTop() const = 0;
    virtual double ScaleWidth() const = 0;
    virtual double ScaleHeight() const = 0;
    virtual double ScaleToPixelsX(double value) const = 0;
    virtual double ScaleToPixelsY(double value) const = 0;

    /// The client area's rectangle on the screen, in pixels.
    virtual PixelRect ScreenRect() const = 0;

    /// Shows `source` at `destination` on the screen (stretched by the nearest pixel when the sizes differ), within the
    /// part of this window that is visible. The pixels are copied before it returns.
    virtual void Present(const PixelView& source, const PixelRect& destination) = 0;

    /// The window with this handle in this process, or nothing.
    static std::shared_ptr<ControlWindow> FromHandle(WindowHandle handle);

protected:
    /// Hosts call these when a window comes into being and goes.
    static void Register(WindowHandle handle, const std::shared_ptr<ControlWindow>& window);
    static void Unregister(WindowHandle handle);
};

} // namespace lumora
