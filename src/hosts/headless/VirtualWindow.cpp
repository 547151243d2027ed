// Attributes, places and pixels of virtual windows.
#include "hosts/headless/VirtualWindow.h"

#include "base/Faults.h"
#include "base/RuntimeError.h"
#include "platform/pictures/Bitmap.h"
#include "platform/pictures/Blit.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace lumora::headless
{

namespace
{

constexpr std::int16_t FixedSingle = 1;
constexpr std::int16_t CustomPointer = 99;
constexpr std::int16_t LastStandardPointer = 15;
constexpr std::uint32_t BorderColor = 0x000000;
constexpr int FarthestPlace = 1 << 20;
constexpr double TwipsPerPoint = 20;

// Handles fit 16 bits.
constexpr WindowHandle FirstHandle = 1000;
constexpr WindowHandle LastHandle = 32000;

constexpr std::uint32_t SystemColorFlag = 0x80000000;

/// The classic colour scheme, 0x00RRGGBB: scroll bar, desktop, active and inactive caption, menu, window, window
/// frame, menu text, window text, caption text, active and inactive border, application workspace, highlight and its
/// text, button face, shadow, grey text, button text, inactive caption text, button highlight, dark shadow, light,
/// tool tip text and tool tip.
constexpr std::array<std::uint32_t, 25> SystemColors = {
    0xD4D0C8, 0x008080, 0x0A246A, 0x808080, 0xD4D0C8, 0xFFFFFF, 0x000000, 0x000000, 0x000000,
    0xFFFFFF, 0xD4D0C8, 0xD4D0C8, 0x808080, 0x0A246A, 0xFFFFFF, 0xD4D0C8, 0x808080, 0x808080,
    0x000000, 0xD4D0C8, 0xFFFFFF, 0x404040, 0xD4D0C8, 0x000000, 0xFFFFE1};

bool IsColor(std::int32_t color)
{
    const auto value = static_cast<std::uint32_t>(color);
    return value <= 0x00FFFFFF || (value & ~SystemColorFlag) < SystemColors.size();
}

std::uint32_t ToPixel(std::int32_t color)
{
    const auto value = static_cast<std::uint32_t>(color);
    if ((value & SystemColorFlag) != 0)
        return SystemColors[value & ~SystemColorFlag];
    return (value & 0xFF) << 16 | (value & 0xFF00) | value >> 16;
}

void Require(bool accepted, const char* description)
{
    if (!accepted)
        throw RuntimeError{error::InvalidPropertyValue, "ControlWindow", description};
}

[[noreturn]] void RaiseInvalid(const std::string& description)
{
    throw RuntimeError{error::InvalidCall, "VirtualWindow", description};
}

void CheckPlace(const PixelRect& client)
{
    const auto isNear = [](int coordinate) { return coordinate >= -FarthestPlace && coordinate <= FarthestPlace; };
    if (!isNear(client.left) || !isNear(client.top) || !isNear(client.right) || !isNear(client.bottom))
        RaiseInvalid("A window cannot be that far from the screen");
    const auto isSide = [](int pixels) { return pixels >= 0 && pixels <= VirtualWindow::MaximumSide; };
    if (!isSide(client.Width()) || !isSide(client.Height()))
        RaiseInvalid("A window's sides must be between 0 and 16384 pixels");
}

WindowHandle NextHandle()
{
    static WindowHandle last = FirstHandle - 1;
    for (WindowHandle tried = FirstHandle; tried <= LastHandle; ++tried)
    {
        last = last < LastHandle ? last + 1 : FirstHandle;
        if (!ControlWindow::FromHandle(last))
            return last;
    }
    RaiseInvalid("There are too many windows");
}

PixelRect MovedBy(const PixelRect& rect, int x, int y)
{
    return {rect.left + x, rect.top + y, rect.right + x, rect.bottom + y};
}

} // namespace

VirtualWindow::VirtualWindow(std::shared_ptr<VirtualScreen> screen, const PixelRect& client)
    : screen_(std::move(screen)), client_(client), handle_(NextHandle())
{
}

std::shared_ptr<VirtualWindow> VirtualWindow::Create(std::shared_ptr<VirtualScreen> screen, const PixelRect& client)
{
    CheckPlace(client);
    VirtualScreen& onto = *screen;
    onto.windows_.reserve(onto.windows_.size() + 1);
    const std::shared_ptr<VirtualWindow> window{new VirtualWindow{std::move(screen), client}};
    onto.windows_.push_back(window.get());
    Register(window->handle_, window);
    window->EraseSelf();
    return window;
}

VirtualWindow::~VirtualWindow()
{
    const auto place = std::ranges::find(screen_->windows_, this);
    if (place == screen_->windows_.end())
        return;
    const Region uncovered = screen_->VisibleParts(*this, OuterRect());
    screen_->windows_.erase(place);
    screen_->Erase(uncovered);
    Unregister(handle_);
}

WindowHandle VirtualWindow::Handle() const
{
    faults::Point("ControlWindow.Handle");
    return handle_;
}

std::int32_t VirtualWindow::BackColor() const
{
    faults::Point("ControlWindow.BackColor");
    return attributes_.backColor;
}

void VirtualWindow::SetBackColor(std::int32_t color)
{
    faults::Point("ControlWindow.SetBackColor");
    Require(IsColor(color), "The back colour is neither red, green and blue nor a system colour");
    attributes_.backColor = color;
    EraseSelf();
}

std::int16_t VirtualWindow::BorderStyle() const
{
    faults::Point("ControlWindow.BorderStyle");
    return attributes_.borderStyle;
}

void VirtualWindow::SetBorderStyle(std::int16_t style)
{
    faults::Point("ControlWindow.SetBorderStyle");
    Require(style == 0 || style == FixedSingle, "The border style is 0 (none) or 1 (fixed single)");
    if (style != attributes_.borderStyle)
        ChangePlace(client_, style);
}

std::shared_ptr<Picture> VirtualWindow::MouseIcon() const
{
    faults::Point("ControlWindow.MouseIcon");
    return attributes_.mouseIcon;
}

void VirtualWindow::SetMouseIcon(const std::shared_ptr<Picture>& icon)
{
    faults::Point("ControlWindow.SetMouseIcon");
    attributes_.mouseIcon = icon;
}

std::int16_t VirtualWindow::MousePointer() const
{
    faults::Point("ControlWindow.MousePointer");
    return attributes_.mousePointer;
}

void VirtualWindow::SetMousePointer(std::int16_t pointer)
{
    faults::Point("ControlWindow.SetMousePointer");
    Require((pointer >= 0 && pointer <= LastStandardPointer) || pointer == CustomPointer,
            "The mouse pointer is 0 to 15, or 99 for the mouse icon");
    attributes_.mousePointer = pointer;
}

bool VirtualWindow::Enabled() const
{
    faults::Point("ControlWindow.Enabled");
    return attributes_.enabled;
}

void VirtualWindow::SetEnabled(bool enabled)
{
    faults::Point("ControlWindow.SetEnabled");
    attributes_.enabled = enabled;
}

std::shared_ptr<Picture> VirtualWindow::GetPicture() const
{
    faults::Point("ControlWindow.GetPicture");
    return attributes_.picture;
}

void VirtualWindow::SetPicture(const std::shared_ptr<Picture>& picture)
{
    faults::Point("ControlWindow.SetPicture");
    attributes_.picture = picture;
    EraseSelf();
}

double VirtualWindow::ScaleLeft() const
{
    faults::Point("ControlWindow.ScaleLeft");
    return 0;
}

double VirtualWindow::ScaleTop() const
{
    faults::Point("ControlWindow.ScaleTop");
    return 0;
}

double VirtualWindow::ScaleWidth() const
{
    faults::Point("ControlWindow.ScaleWidth");
    return client_.Width() * UnitsPerPixelX();
}

double VirtualWindow::ScaleHeight() const
{
    faults::Point("ControlWindow.ScaleHeight");
    return client_.Height() * UnitsPerPixelY();
}

double VirtualWindow::ScaleToPixelsX(double value) const
{
    faults::Point("ControlWindow.ScaleToPixelsX");
    return value / UnitsPerPixelX();
}

double VirtualWindow::ScaleToPixelsY(double value) const
{
    faults::Point("ControlWindow.ScaleToPixelsY");
    return value / UnitsPerPixelY();
}

PixelRect VirtualWindow::ScreenRect() const
{
    faults::Point("ControlWindow.ScreenRect");
    return client_;
}

void VirtualWindow::Present(const PixelView& source, const PixelRect& destination)
{
    faults::Point("ControlWindow.Present");
    const auto show = [&](const PixelRect& part) {
        CopyBlock(source, screen_->Pixels(), {source.Bounds(), destination}, part);
    };
    if (screen_->windows_.back() == this) // nothing covers it: no list of parts, which would take memory each time
        return show(Intersection(client_, screen_->Bounds()));
    std::ranges::for_each(VisibleRegion(), show);
}

PixelRect VirtualWindow::OuterRect() const
{
    const int border = attributes_.borderStyle == FixedSingle ? 1 : 0;
    return {client_.left - border, client_.top - border, client_.right + border, client_.bottom + border};
}

Region VirtualWindow::VisibleRegion() const
{
    return screen_->VisibleParts(*this, client_);
}

void VirtualWindow::SetClientRect(const PixelRect& client)
{
    CheckPlace(client);
    ChangePlace(client, attributes_.borderStyle);
}

void VirtualWindow::Raise()
{
    ChangeOrder(screen_->windows_.size() - 1);
}

void VirtualWindow::Lower()
{
    ChangeOrder(0);
}

void VirtualWindow::SetHandle(WindowHandle handle)
{
    const auto owner = FromHandle(handle);
    if (owner && owner.get() != this)
        RaiseInvalid("Another window has handle " + std::to_string(handle));
    Unregister(handle_);
    handle_ = handle;
    Register(handle_, shared_from_this());
}

double VirtualWindow::UnitsPerPixelX() const
{
    if (scaleMode_ == ScaleMode::Pixels)
        return 1;
    return scaleMode_ == ScaleMode::Points ? screen_->UnitsPerPixelX() / TwipsPerPoint : screen_->UnitsPerPixelX();
}

double VirtualWindow::UnitsPerPixelY() const
{
    if (scaleMode_ == ScaleMode::Pixels)
        return 1;
    return scaleMode_ == ScaleMode::Points ? screen_->UnitsPerPixelY() / TwipsPerPoint : screen_->UnitsPerPixelY();
}

void VirtualWindow::ChangePlace(const PixelRect& client, std::int16_t borderStyle)
{
    std::vector<KeptPart> kept = KeepVisible();
    const Region before = screen_->VisibleParts(*this, OuterRect());
    client_ = client;
    attributes_.borderStyle = borderStyle;
    screen_->Erase(Subtract(before, OuterRect()));
    EraseSelf();
    ShowKept(kept);
}

void VirtualWindow::ChangeOrder(std::size_t place)
{
    auto& windows = screen_->windows_;
    const Region before = screen_->VisibleParts(*this, OuterRect());
    std::erase(windows, this);
    windows.insert(windows.begin() + static_cast<std::ptrdiff_t>(place), this);
    const Region after = screen_->VisibleParts(*this, OuterRect());
    screen_->Erase(Subtract(before, after));
    screen_->Erase(Subtract(after, before));
}

std::vector<VirtualWindow::KeptPart> VirtualWindow::KeepVisible() const
{
    std::vector<KeptPart> kept;
    for (const PixelRect& part : VisibleRegion())
    {
        KeptPart& copy = kept.emplace_back();
        copy.place = MovedBy(part, -client_.left, -client_.top);
        for (int y = part.top; y < part.bottom; ++y)
        {
            const std::uint32_t* const row = screen_->Pixels().Row(y);
            copy.pixels.insert(copy.pixels.end(), row + part.left, row + part.right);
        }
    }
    return kept;
}

void VirtualWindow::ShowKept(std::vector<KeptPart>& parts)
{
    const Region visible = VisibleRegion();
    for (KeptPart& part : parts)
    {
        const PixelView pixels{part.pixels.data(), part.place.Width(), part.place.Height(), part.place.Width()};
        const PixelRect destination = MovedBy(part.place, client_.left, client_.top);
        for (const PixelRect& clip : visible)
            CopyBlock(pixels, screen_->Pixels(), {pixels.Bounds(), destination}, clip);
    }
}

void VirtualWindow::DrawErased(const PixelRect& part) const
{
    const PixelView pixels = screen_->Pixels();
    const PixelRect clientPart = Intersection(part, client_);
    FillBlock(pixels, Intersection(part, OuterRect()), BorderColor);
    FillBlock(pixels, clientPart, ToPixel(attributes_.backColor));
    if (!attributes_.picture || !attributes_.picture->Handle())
        return;
    const PixelView picture = attributes_.picture->Handle()->Pixels();
    const PixelRect destination = MovedBy(picture.Bounds(), client_.left, client_.top);
    CopyBlock(picture, pixels, {picture.Bounds(), destination}, clientPart);
}

void VirtualWindow::EraseSelf()
{
    screen_->Erase(screen_->VisibleParts(*this, OuterRect()));
}

} // namespace lumora::headless
