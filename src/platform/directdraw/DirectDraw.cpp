// Making surfaces and clippers, with every argument checked before memory is asked for.
#include "platform/directdraw/DirectDraw.h"

#include "base/Faults.h"
#include "base/RuntimeError.h"

namespace lumora
{

namespace
{

constexpr std::uint32_t RecordSize = 124;
constexpr std::uint32_t CapsGiven = 1;
constexpr std::uint32_t HeightGiven = 2;
constexpr std::uint32_t WidthGiven = 4;

[[noreturn]] void RaiseInvalid(const std::string& description)
{
    throw RuntimeError{error::DDInvalidParams, "DirectDraw", description};
}

bool AsksForPrimary(const SurfaceDescription& description)
{
    return (description.flags & CapsGiven) != 0 && (description.caps & surfacecaps::PrimarySurface) != 0;
}

bool IsSide(int pixels)
{
    return pixels >= 1 && pixels <= Surface::MaximumSide;
}

void CheckSize(const SurfaceDescription& description)
{
    if ((description.flags & (HeightGiven | WidthGiven)) != (HeightGiven | WidthGiven))
        RaiseInvalid("A surface needs a width and a height");
    if (!IsSide(description.width) || !IsSide(description.height))
        RaiseInvalid("A surface's sides must be between 1 and " + std::to_string(Surface::MaximumSide) + " pixels");
    if (std::int64_t{description.width} * description.height > Surface::MaximumPixels)
        throw RuntimeError{error::OutOfMemory, "DirectDraw",
                           "A surface of " + std::to_string(description.width) + " by " +
                               std::to_string(description.height) + " pixels is too large"};
}

} // namespace

std::shared_ptr<DirectDraw> DirectDraw::Create(std::shared_ptr<Screen> screen)
{
    faults::Point("DirectDraw.Create");
    if (!screen)
        RaiseInvalid("DirectDraw needs a screen");
    return std::shared_ptr<DirectDraw>(new DirectDraw{std::move(screen)});
}

void DirectDraw::SetCooperativeLevel(WindowHandle window, std::uint32_t level)
{
    faults::Point("DirectDraw.SetCooperativeLevel");
    if (level != CooperativeLevelNormal)
        RaiseInvalid("Only the normal cooperative level is offered");
    if (!ControlWindow::FromHandle(window))
        RaiseInvalid("There is no window with handle " + std::to_string(window));
}

std::shared_ptr<Surface> DirectDraw::CreateSurface(const SurfaceDescription& description)
{
    faults::Point("DirectDraw.CreateSurface");
    if (description.size != RecordSize)
        RaiseInvalid("A surface description has size 124");
    const bool primary = AsksForPrimary(description);
    if (!primary)
        CheckSize(description);
    else if (description.flags != CapsGiven)
        RaiseInvalid("The primary surface has the size of the screen: give its capabilities only");
    std::shared_ptr<Surface> surface{new Surface};
    surface->description_ = description;
    if (primary)
    {
        surface->screen_ = screen_;
        return surface;
    }
    if ((description.flags & CapsGiven) == 0)
        surface->description_.caps = surfacecaps::OffscreenPlain;
    surface->pixels_ =
        ZeroedPixels{static_cast<std::size_t>(description.width) * static_cast<std::size_t>(description.height)};
    if (surface->pixels_.Data() == nullptr)
        throw RuntimeError{error::OutOfMemory, "DirectDraw", "There is not enough memory for this surface"};
    return surface;
}

std::shared_ptr<Clipper> DirectDraw::CreateClipper(std::uint32_t flags)
{
    faults::Point("DirectDraw.CreateClipper");
    if (flags != 0)
        RaiseInvalid("A clipper is created with flags 0");
    return std::make_shared<Clipper>();
}

void DirectDraw::WaitForVerticalBlank(std::uint32_t flags)
{
    faults::Point("DirectDraw.WaitForVerticalBlank");
    if (flags != WaitForBlankBegin)
        RaiseInvalid("Only the start of the vertical blank can be waited for (flags 1)");
    screen_->WaitForVerticalBlank();
}

} // namespace lumora
