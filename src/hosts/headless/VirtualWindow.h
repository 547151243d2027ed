// A window on a virtual screen: what of it is visible, and the attributes that hosts keep.
#pragma once

#include "hosts/headless/VirtualScreen.h"
#include "platform/container/ControlWindow.h"

#include <memory>
#include <vector>

namespace lumora::headless
{

/// The units of a window's coordinates.
enum class ScaleMode
{
    Twips = 1, ///< 1440 an inch
    Points = 2,
    Pixels = 3,
};

/// What a window keeps for its control (see ControlWindow).
struct WindowAttributes
{
    std::int32_t backColor = 0;
    std::int16_t borderStyle = 0;
    std::int16_t mousePointer = 0;
    bool enabled = true;
    std::shared_ptr<Picture> mouseIcon;
    std::shared_ptr<Picture> picture;
};

/// Other windows of the screen that lie above this one cover it. What a window shows stays on the screen until it is
/// covered; parts that come to light again show the back colour until somebody draws there. A window that moves takes
/// what is visible of it along.
class VirtualWindow final : public ControlWindow, public std::enable_shared_from_this<VirtualWindow>
{
public:
    static constexpr int MaximumSide = 16384;

    /// A new topmost window. `client` is its client area on the screen, in pixels; it may reach outside the screen.
    /// InvalidCall for sides outside 0 .. MaximumSide or a place beyond 2^20 pixels from the screen.
    static std::shared_ptr<VirtualWindow> Create(std::shared_ptr<VirtualScreen> screen, const PixelRect& client);

    ~VirtualWindow() override;
    VirtualWindow(const VirtualWindow&) = delete;
    VirtualWindow& operator=(const VirtualWindow&) = delete;

    WindowHandle Handle() const override;

    /// 0x00BBGGRR, or 0x80000000 plus the number of a system colour (0 .. 24). The window is erased.
    std::int32_t BackColor() const override;
    void SetBackColor(std::int32_t color) override;

    /// The fixed single border is one black pixel on each side, outside the client area.
    std::int16_t BorderStyle() const override;
    void SetBorderStyle(std::int16_t style) override;
    std::shared_ptr<Picture> MouseIcon() const override;
    void SetMouseIcon(const std::shared_ptr<Picture>& icon) override;
    std::int16_t MousePointer() const override;
    void SetMousePointer(std::int16_t pointer) override;
    bool Enabled() const override;
    void SetEnabled(bool enabled) override;

    /// Shown from the client area's top-left, over the back colour. The window is erased.
    std::shared_ptr<Picture> GetPicture() const override;
    void SetPicture(const std::shared_ptr<Picture>& picture) override;

    double ScaleLeft() const override;
    double ScaleTop() const override;
    double ScaleWidth() const override;
    double ScaleHeight() const override;
    double ScaleToPixelsX(double value) const override;
    double ScaleToPixelsY(double value) const override;
    PixelRect ScreenRect() const override;
    void Present(const PixelView& source, const PixelRect& destination) override;

    // For whoever runs the machine. None of these can be told to fail.

    const PixelRect& ClientRect() const { return client_; }
    PixelRect OuterRect() const;
    const WindowAttributes& Attributes() const { return attributes_; }
    bool IsEnabled() const { return attributes_.enabled; }

    /// The visible part of the client area, in screen pixels.
    Region VisibleRegion() const;

    /// Errors as Create.
    void SetClientRect(const PixelRect& client);
    void Raise();
    void Lower();
    ScaleMode CurrentScaleMode() const { return scaleMode_; }
    void SetScaleMode(ScaleMode mode) { scaleMode_ = mode; }

    /// InvalidCall when another window has this handle.
    void SetHandle(WindowHandle handle);

    /// Scale units per pixel in the current scale mode.
    double UnitsPerPixelX() const;
    double UnitsPerPixelY() const;

private:
    friend class VirtualScreen;
    VirtualWindow(std::shared_ptr<VirtualScreen> screen, const PixelRect& client);

    /// Visible pixels, as they were; places count from the client area's top-left.
    struct KeptPart
    {
        PixelRect place;
        std::vector<std::uint32_t> pixels;
    };

    void ChangePlace(const PixelRect& client, std::int16_t borderStyle);
    void ChangeOrder(std::size_t place);
    std::vector<KeptPart> KeepVisible() const;
    void ShowKept(std::vector<KeptPart>& parts);
    void DrawErased(const PixelRect& part) const;
    void EraseSelf();

    std::shared_ptr<VirtualScreen> screen_;
    PixelRect client_;
    WindowHandle handle_ = 0;
    WindowAttributes attributes_;
    ScaleMode scaleMode_ = ScaleMode::Twips;
};

} // namespace lumora::headless
