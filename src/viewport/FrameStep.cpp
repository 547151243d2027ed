// One picture, from the host's call to the device's update.
#include "base/Numbers.h"
#include "properties/DeviceNames.h"
#include "properties/Quality.h"
#include "viewport/Names.h"
#include "viewport/Viewport.h"

namespace lumora
{

namespace
{

constexpr std::uint32_t ClearAll = clearflags::Target | clearflags::Depth | clearflags::DirtyRectangles;
constexpr std::uint32_t ClearTargetAndDepth = clearflags::Target | clearflags::Depth;

} // namespace

void Viewport::RenderScene()
{
    if (!properties_.Enabled)
        return;
    const Trap trap{Source};
    trap([&] { UpdatePositions.Raise(); });
    RenderFrame(false);
}

void Viewport::RenderSceneCorrectTranslucency()
{
    if (!properties_.Enabled)
        return;
    const Trap trap{Source};
    trap([&] { UpdatePositions.Raise(); });
    RenderFrame(true);
}

// A handler of any event raised on the way may release or replace what the next step needs: each step looks anew, and
// what is gone is an error of that step.
void Viewport::RenderFrame(bool CorrectTranslucency)
{
    RequireRunning();
    if (!drawing_.SceneFrame)
        return;
    const Trap trap{Source};
    trap([&] { RebuildPending(); });
    // A handler of CameraMoved draws while the device is being made.
    if (drawing_.SurfacesPending && drawing_.RMViewport)
        trap([&] { CreateSecondarySurfaces(); });
    PixelRect destination;
    const bool exposed = properties_.ExposeDDSurface;
    if (exposed)
        trap([&] { destination = PresentationRect(); });
    if (exposed)
        ClearExposed(CorrectTranslucency);
    else
        trap([&] { Required(drawing_.RMViewport).Clear(ClearAll); });
    FirstPass();
    OverlayAndWidgetPasses();
    MainPass();
    if (const auto device = drawing_.Device)
        lastFrame_.Triangles = device->TakeTriangleCount();
    if (exposed)
        PresentExposed(destination);
}

DriverMemory Viewport::MemoryOfDriver() const
{
    return drawing_.Device ? drawing_.Device->TheDriver().Memory() : DriverMemory{};
}

void Viewport::RebuildPending()
{
    if (!drawing_.DeviceRebuildPending || !IsRunMode())
        return;
    const Trap trap{Source};
    trap([&] { RequireFreeSurfaces(); });
    drawing_.DeviceRebuildPending = false;
    trap([&] { BuildNavControls(); });
    ClientRect client;
    trap([&] { client = ClientPixels(); });
    trap([&] { RecreateDirectX(properties_.Direct3DDeviceGUID, client); });
}

void Viewport::RenderRoot(std::uint32_t quality, const std::shared_ptr<Frame>& root)
{
    const Trap trap{Source};
    trap([&] { Required(drawing_.Device).SetQuality(quality); });
    trap([&] { Required(drawing_.RMViewport).Render(root); });
}

void Viewport::ClearExposed(bool CorrectTranslucency)
{
    const Trap trap{Source};
    if (properties_.CoolMode == 0 && drawing_.PendingFlatPass && CorrectTranslucency)
    {
        RenderRoot(quality::Flat, drawing_.SceneFrame);
        trap([&] { Required(drawing_.Device).Update(); });
    }
    drawing_.PendingFlatPass = false;
    if (!properties_.Accumulate)
        trap([&] { Required(drawing_.RMViewport).Clear(ClearTargetAndDepth); });
    if (drawing_.BackgroundSurface && properties_.CoolMode == 0)
        trap(
            [&] {
                Required(drawing_.RenderSurface)
                    .Blt(std::nullopt, *drawing_.BackgroundSurface, std::nullopt, Surface::BltWait);
            });
}

void Viewport::FirstPass()
{
    if (properties_.CoolMode == 0)
        return;
    const Trap trap{Source};
    RenderRoot(properties_.CoolMode == 1 ? quality::Flat : quality::Wireframe, drawing_.SceneFrame);
    trap([&] { Required(drawing_.Device).Update(); });
}

void Viewport::OverlayAndWidgetPasses()
{
    const Trap trap{Source};
    trap([&] { Required(drawing_.Device).SetQuality(quality::Gouraud); });
    if (properties_.RenderOverlay && drawing_.OverlayFrame)
        trap([&] { Required(drawing_.RMViewport).Render(drawing_.OverlayFrame); });
    if (properties_.NavControlPrimary || properties_.NavControlGlide || properties_.NavControlAdvance)
        trap([&] { Required(drawing_.RMViewport).Render(widgets_.NavControlsScene); });
}

void Viewport::MainPass()
{
    const Trap trap{Source};
    std::uint32_t wanted = CombinedQuality(properties_);
    if (properties_.CoolMode != 0)
        wanted = properties_.CoolMode == 1 ? quality::Wireframe : quality::Flat;
    trap([&] { Required(drawing_.Device).SetQuality(wanted); });

    // Fog is measured in eye depth, which an orthographic camera, far away as it stands, has too much of.
    const auto scene = drawing_.SceneFrame;
    bool fogSuspended = false;
    if (properties_.ProjectionType == D3DRMPROJECT_ORTHOGRAPHIC)
        trap([&] { fogSuspended = Required(scene).GetSceneFogEnable() == 1; });
    if (fogSuspended)
        trap([&] { scene->SetSceneFogEnable(0); });
    if (properties_.CoolMode == 1)
        trap([&] { Required(drawing_.RMViewport).Clear(clearflags::Depth); });
    try
    {
        trap([&] { Required(drawing_.RMViewport).Render(drawing_.SceneFrame); });
    }
    catch (...)
    {
        if (fogSuspended)
            IgnoringErrors([&] { scene->SetSceneFogEnable(1); });
        throw;
    }
    if (fogSuspended)
        trap([&] { scene->SetSceneFogEnable(1); });
    if (properties_.WaitForVSYNC)
        trap([&] { Required(drawing_.DirectDrawObject).WaitForVerticalBlank(DirectDraw::WaitForBlankBegin); });
    trap([&] { Required(drawing_.Device).Update(); });
}

} // namespace lumora
