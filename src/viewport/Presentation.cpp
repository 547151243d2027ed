// An exposed surface on its way to the screen.
#include "platform/automation/Numbers.h"
#include "viewport/HeldContext.h"
#include "viewport/Names.h"
#include "viewport/Viewport.h"

namespace lumora
{

namespace
{

constexpr int LargestSamplingFactor = 16;

} // namespace

// Where the window is now: it may have moved since the last picture.
PixelRect Viewport::PresentationRect() const
{
    const PixelRect window = container_->Window()->ScreenRect();
    double width = 0;
    double height = 0;
    ClientSizePixels(width, height);
    const std::int32_t border = BorderPixels();
    return {window.left, window.top, ToLong(window.left + width) + border, ToLong(window.top + height) + border};
}

// A handler may expose and cover the surface, or draw another picture of another size: then this one is gone with its
// surface, and what followed has been shown or is yet to be drawn.
void Viewport::PresentExposed(const PixelRect& destination)
{
    const Trap trap{Source};
    const auto drawn = drawing_.RenderSurface;
    const auto target = drawing_.AntiAliasTarget;
    const int factor = drawing_.SamplingFactor;
    trap([&] { DDSurfaceAvailable.Raise(); });
    RequireRunning();
    if (drawing_.RenderSurface != drawn)
        return;
    if (factor == tdlNone)
    {
        trap([&] { ShowSurface(drawn, destination); });
        return;
    }
    trap([&] { AverageIntoTarget(factor); });
    trap([&] { AntiAliasSurfaceAvailable.Raise(); });
    RequireRunning();
    if (drawing_.AntiAliasTarget == target)
        trap([&] { ShowSurface(target, destination); });
}

// A window without a size shows nothing.
void Viewport::ShowSurface(const std::shared_ptr<Surface>& picture, const PixelRect& destination)
{
    if (!destination.IsEmpty())
        Required(drawing_.PrimarySurface).Blt(destination, Required(picture), std::nullopt, Surface::BltWait);
}

void Viewport::AverageIntoTarget(int factor)
{
    if (factor < 1 || factor > LargestSamplingFactor)
        throw RuntimeError{error::InvalidCall, Source,
                           "AntiAlias is " + std::to_string(factor) + ": use 1 (none), 2 or 4"};
    if (!drawing_.AntiAliasTarget)
        throw RuntimeError{error::ObjectNotSet, Source,
                           "The surface that takes the averaged picture could not be created: choose a smaller window "
                           "or AntiAlias 1"};
    if (!drawing_.Averager)
        drawing_.Averager = std::make_unique<BlockAverager>();
    HeldContext source{Required(drawing_.RenderSurface)};
    HeldContext target{*drawing_.AntiAliasTarget};
    drawing_.Averager->Average(source->Pixels(), factor, target->Pixels());
    target.Release();
    source.Release();
}

} // namespace lumora
