// A screen in memory: the pixels a person would see, a cursor and a clock that only move when they are told to.
#pragma once

#include "hosts/headless/Region.h"
#include "platform/container/Screen.h"

#include <cstdint>
#include <string>
#include <vector>

namespace lumora::headless
{

class VirtualWindow;

/// What a program showed in a message box. Nobody has to press OK.
struct Message
{
    std::string text;
    std::string title;
    friend bool operator==(const Message&, const Message&) = default;
};

class VirtualScreen : public Screen
{
public:
    static constexpr std::uint32_t DesktopColor = 0x008080;
    static constexpr int MaximumSide = 16384;

    /// InvalidCall unless both sides are in 1 .. MaximumSide. The cursor is in the middle, the clock at 1000.
    explicit VirtualScreen(int width = 1920, int height = 1080);

    int Width() const override;
    int Height() const override;
    double TwipsPerPixelX() const override;
    double TwipsPerPixelY() const override;
    ScreenPoint GetCursorPos() const override;

    /// Stops at the screen's edges. No window is told.
    void SetCursorPos(int x, int y) override;
    int ShowCursor(bool show) override;
    std::uint32_t Milliseconds() const override;

    /// Advances the clock to the next of 60 blanks a second, counted from time 0, and counts it.
    void WaitForVerticalBlank() override;
    void MessageBox(const std::string& text, const std::string& title) override;
    void Present(const PixelView& source, const PixelRect& destination) override;

    // For whoever runs the machine. None of these can be told to fail.

    /// InvalidCall as for the constructor, OutOfMemory; nothing changed then. Windows stay where they are and show
    /// their back colors; the cursor stops at the edges.
    void SetSize(int width, int height);

    /// 15 at first. InvalidCall unless both are above 0.
    void SetTwipsPerPixel(double x, double y);
    double UnitsPerPixelX() const { return twipsPerPixelX_; }
    double UnitsPerPixelY() const { return twipsPerPixelY_; }

    /// 0x00RRGGBB. InvalidCall outside the screen.
    std::uint32_t PixelAt(int x, int y) const;

    /// What is on the screen now; valid as long as the screen has this size.
    PixelView Pixels();
    PixelRect Bounds() const { return {0, 0, width_, height_}; }

    ScreenPoint Cursor() const { return cursor_; }
    void PlaceCursor(int x, int y);
    int CursorDisplayCounter() const { return displayCounter_; }
    bool IsCursorVisible() const { return displayCounter_ >= 0; }

    void AdvanceClock(std::uint32_t milliseconds) { clock_ += milliseconds; }
    std::uint32_t Clock() const { return static_cast<std::uint32_t>(clock_); }
    int VerticalBlankCount() const { return verticalBlankCount_; }

    const std::vector<Message>& Messages() const { return messages_; }

    /// The windows from the lowest to the topmost.
    const std::vector<VirtualWindow*>& Windows() const { return windows_; }

private:
    friend class VirtualWindow;

    /// The parts of `area` that no window above `window` covers and that are on the screen.
    Region VisibleParts(const VirtualWindow& window, const PixelRect& area) const;

    /// Shows in `region` what windows that nobody has painted show: the desktop, borders, back colours, pictures.
    void Erase(const Region& region);

    int width_;
    int height_;
    double twipsPerPixelX_ = 15;
    double twipsPerPixelY_ = 15;
    std::vector<std::uint32_t> pixels_;
    std::vector<VirtualWindow*> windows_;
    ScreenPoint cursor_;
    int displayCounter_ = 0;
    std::uint64_t clock_ = 1000;
    int verticalBlankCount_ = 0;
    std::vector<Message> messages_;
};

} // namespace lumora::headless
