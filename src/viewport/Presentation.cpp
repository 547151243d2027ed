// An exposed surface on its way to the screen.
#include "base/Numbers.h"
#include "viewport/HeldContext.h"
#include "viewport/Names.h"
#include "viewport/Viewport.h"

namespace lumora
{

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

// The large surface is drawn for whoever looks at it, and otherwise not at all: the device averages tile by tile while
// it draws. No moment needs to be known at which somebody may look. The surface tells its device whenever its context,
// its lock or a blit from or to it is asked for, in an event, between pictures or after the surface was replaced, and
// has the whole picture by then. Whoever holds its pixels already while a picture is drawn gets it at the device's
// update.
void Viewport::AverageIntoTarget(int factor)
{
    if (factor < 1 || factor > BlockAverager::LargestFactor)
        throw RuntimeError{error::InvalidCall, Source,
                           "AntiAlias is " + std::to_string(factor) + ": use 1 (none), 2 or 4"};
    if (!drawing_.AntiAliasTarget)
        throw RuntimeError{error::ObjectNotSet, Source,
                           "The surface that takes the averaged picture could not be created: choose a smaller window "
                           "or AntiAlias 1"};
    HeldContext target{*drawing_.AntiAliasTarget};
    Required(drawing_.Device).Average(target->Pixels(), factor);
    target.Release();
}

} // namespace lumora
