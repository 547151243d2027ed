// An exposed surface on its way to the screen.
#include "platform/automation/Numbers.h"
#include "platform/directdraw/DeviceContext.h"
#include "viewport/Averaging.h"
#include "viewport/Names.h"
#include "viewport/Viewport.h"

namespace lumora
{

namespace
{

constexpr int LargestSamplingFactor = 16;

// Holds a surface's device context and gives it back, whatever happens between.
class HeldContext
{
public:
    explicit HeldContext(Surface& surface) : surface_(surface), context_(surface.GetDC()) {}
    ~HeldContext()
    {
        if (context_)
            IgnoringErrors([&] { Release(); });
    }
    HeldContext(const HeldContext&) = delete;
    HeldContext& operator=(const HeldContext&) = delete;

    const PixelView& Pixels() const { return context_->Pixels(); }

    void Release()
    {
        surface_.ReleaseDC(context_);
        context_ = nullptr;
    }

private:
    Surface& surface_;
    std::shared_ptr<DeviceContext> context_;
};

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

void Viewport::PresentExposed(const PixelRect& destination)
{
    const Trap trap{Source};
    trap([&] { DDSurfaceAvailable.Raise(); });
    const auto show = [&](const std::shared_ptr<Surface>& picture)
    {
        if (!destination.IsEmpty()) // a window without a size shows nothing
            Required(drawing_.PrimarySurface).Blt(destination, Required(picture), std::nullopt, Surface::BltWait);
    };
    if (properties_.AntiAlias == tdlNone)
    {
        trap([&] { show(drawing_.RenderSurface); });
        return;
    }
    trap([&] { AverageIntoTarget(); });
    trap([&] { AntiAliasSurfaceAvailable.Raise(); });
    trap([&] { show(drawing_.AntiAliasTarget); });
}

void Viewport::AverageIntoTarget()
{
    const int factor = properties_.AntiAlias;
    if (factor < 1 || factor > LargestSamplingFactor)
        throw RuntimeError{error::InvalidCall, Source,
                           "AntiAlias is " + std::to_string(factor) + ": use 1 (none), 2 or 4"};
    if (!drawing_.AntiAliasTarget)
        throw RuntimeError{error::ObjectNotSet, Source,
                           "The surface that takes the averaged picture could not be created: choose a smaller window "
                           "or AntiAlias 1"};
    HeldContext source{Required(drawing_.RenderSurface)};
    HeldContext target{*drawing_.AntiAliasTarget};
    AverageBlocks(source.Pixels(), factor, target.Pixels());
    target.Release();
    source.Release();
}

} // namespace lumora
