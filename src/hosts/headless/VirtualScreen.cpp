// The screen's pixels, cursor and clock.
#include "hosts/headless/VirtualScreen.h"

#include "base/Faults.h"
#include "base/RuntimeError.h"
#include "hosts/headless/VirtualWindow.h"
#include "platform/pictures/Blit.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <new>

namespace lumora::headless
{

namespace
{

constexpr std::uint64_t BlanksPerSecond = 60;

[[noreturn]] void RaiseInvalid(const char* description)
{
    throw RuntimeError{error::InvalidCall, "VirtualScreen", description};
}

std::vector<std::uint32_t> EmptyDesktop(int width, int height)
{
    if (width < 1 || height < 1 || width > VirtualScreen::MaximumSide || height > VirtualScreen::MaximumSide)
        RaiseInvalid("A virtual screen's sides must be between 1 and 16384 pixels");
    try
    {
        return std::vector<std::uint32_t>(static_cast<std::size_t>(width) * static_cast<std::size_t>(height),
                                          VirtualScreen::DesktopColor);
    }
    catch (const std::bad_alloc&)
    {
        throw RuntimeError{error::OutOfMemory, "VirtualScreen", "There is not enough memory for this screen"};
    }
}

} // namespace

VirtualScreen::VirtualScreen(int width, int height)
    : width_(width), height_(height), pixels_(EmptyDesktop(width, height)), cursor_{width / 2, height / 2}
{
}

int VirtualScreen::Width() const
{
    faults::Point("Screen.Width");
    return width_;
}

int VirtualScreen::Height() const
{
    faults::Point("Screen.Height");
    return height_;
}

double VirtualScreen::TwipsPerPixelX() const
{
    faults::Point("Screen.TwipsPerPixelX");
    return twipsPerPixelX_;
}

double VirtualScreen::TwipsPerPixelY() const
{
    faults::Point("Screen.TwipsPerPixelY");
    return twipsPerPixelY_;
}

ScreenPoint VirtualScreen::GetCursorPos() const
{
    faults::Point("Screen.GetCursorPos");
    return cursor_;
}

void VirtualScreen::SetCursorPos(int x, int y)
{
    faults::Point("Screen.SetCursorPos");
    PlaceCursor(x, y);
}

int VirtualScreen::ShowCursor(bool show)
{
    faults::Point("Screen.ShowCursor");
    displayCounter_ += show ? 1 : -1;
    return displayCounter_;
}

std::uint32_t VirtualScreen::Milliseconds() const
{
    faults::Point("Screen.Milliseconds");
    return Clock();
}

void VirtualScreen::WaitForVerticalBlank()
{
    faults::Point("Screen.WaitForVerticalBlank");
    // The first whole millisecond of blank n is n / 60 s rounded up; several milliseconds lie between two.
    const std::uint64_t next = clock_ * BlanksPerSecond / 1000 + 1;
    clock_ = (next * 1000 + BlanksPerSecond - 1) / BlanksPerSecond;
    ++verticalBlankCount_;
}

void VirtualScreen::MessageBox(const std::string& text, const std::string& title)
{
    faults::Point("Screen.MessageBox");
    messages_.push_back({text, title});
}

void VirtualScreen::Present(const PixelView& source, const PixelRect& destination)
{
    faults::Point("Screen.Present");
    CopyBlock(source, Pixels(), {source.Bounds(), destination}, Bounds());
}

void VirtualScreen::SetSize(int width, int height)
{
    pixels_ = EmptyDesktop(width, height);
    width_ = width;
    height_ = height;
    PlaceCursor(cursor_.x, cursor_.y);
    Erase({Bounds()});
}

void VirtualScreen::SetTwipsPerPixel(double x, double y)
{
    if (!(x > 0 && y > 0 && std::isfinite(x) && std::isfinite(y)))
        RaiseInvalid("Twips per pixel must be above 0");
    twipsPerPixelX_ = x;
    twipsPerPixelY_ = y;
}

std::uint32_t VirtualScreen::PixelAt(int x, int y) const
{
    if (x < 0 || y < 0 || x >= width_ || y >= height_)
        RaiseInvalid("This pixel is outside the screen");
    return pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x)] &
           0x00FFFFFF;
}

PixelView VirtualScreen::Pixels()
{
    return {pixels_.data(), width_, height_, width_};
}

void VirtualScreen::PlaceCursor(int x, int y)
{
    cursor_ = {std::clamp(x, 0, width_ - 1), std::clamp(y, 0, height_ - 1)};
}

Region VirtualScreen::VisibleParts(const VirtualWindow& window, const PixelRect& area) const
{
    Region parts = Intersect({Bounds()}, area);
    const auto place = std::ranges::find(windows_, &window);
    for (auto above = std::next(place); above != windows_.end(); ++above)
        parts = Subtract(parts, (*above)->OuterRect());
    return parts;
}

void VirtualScreen::Erase(const Region& region)
{
    for (const PixelRect& part : region)
    {
        FillBlock(Pixels(), part, DesktopColor);
        for (const VirtualWindow* const window : windows_)
            window->DrawErased(part);
    }
}

} // namespace lumora::headless
