// The property writers: store, push to what is live, tell the container.
#include "base/Numbers.h"
#include "properties/DeviceNames.h"
#include "properties/Quality.h"
#include "viewport/Names.h"
#include "viewport/Viewport.h"

namespace lumora
{

namespace
{

// Blended and sorted, and highlights seen from where the camera is.
constexpr std::uint32_t BlendedSortedMode =
    rendermode::BlendedTransparency | rendermode::SortedTransparency | rendermode::ViewDependentSpecular;

bool IsAtOrBelow(std::shared_ptr<Frame> frame, const std::shared_ptr<Frame>& ancestor)
{
    for (; frame; frame = frame->Parent())
        if (frame == ancestor)
            return true;
    return false;
}

} // namespace

#define LUMORA_WRITER_Plain(name, type)                                                                                \
    void Viewport::Set##name(type value)                                                                               \
    {                                                                                                                  \
        properties_.name = std::move(value);                                                                           \
        NotifyChanged(#name);                                                                                          \
    }
#define LUMORA_WRITER_Trapped(name, type)                                                                              \
    void Viewport::Set##name(type value)                                                                               \
    {                                                                                                                  \
        properties_.name = value;                                                                                      \
        const Trap trap{Source};                                                                                       \
        trap([&] { NotifyChanged(#name); });                                                                           \
    }
#define LUMORA_WRITER_Ignored(name, type)                                                                              \
    void Viewport::Set##name(type /*value*/) {}
#define LUMORA_WRITER_Custom(name, type)
#define LUMORA_WRITER_None(name, type)
#define LUMORA_PROPERTY(name, type, initial, reader, writer, saved, help) LUMORA_WRITER_##writer(name, type)
#include "properties/PropertyTable.def"
#undef LUMORA_PROPERTY
#undef LUMORA_WRITER_None
#undef LUMORA_WRITER_Custom
#undef LUMORA_WRITER_Ignored
#undef LUMORA_WRITER_Trapped
#undef LUMORA_WRITER_Plain

// The device and its identifier name: neither tells the container; the next live picture takes them up.

void Viewport::SetDirect3DDevice(tdlDirect3DDevice value)
{
    properties_.Direct3DDevice = value;
    drawing_.DeviceRebuildPending = true;
    properties_.Direct3DDeviceGUID = DeviceGuidName(value);
}

void Viewport::SetDirect3DDeviceGUID(std::string value)
{
    properties_.Direct3DDeviceGUID = std::move(value);
    drawing_.DeviceRebuildPending = true;
}

// Attributes of the window.

void Viewport::SetBackColor(std::int32_t value)
{
    const Trap trap{Source};
    trap([&] { container_->Window()->SetBackColor(value); });
    if (drawing_.SceneFrame && IsRunMode())
    {
        const auto share = [](std::int32_t channel) { return static_cast<float>(channel / 255.0); };
        trap(
            [&] {
                drawing_.SceneFrame->SetSceneBackgroundRGB(share(value % 256), share(value / 256 % 256),
                                                           share(value / 65536));
            });
    }
    trap([&] { NotifyChanged("BackColor"); });
}

void Viewport::SetEnabled(bool value)
{
    container_->Window()->SetEnabled(value);
    properties_.Enabled = value;
    if (value && IsRunMode())
        RenderScene();
    NotifyChanged("Enabled");
}

void Viewport::SetBorderStyle(tdlBorderStyle value)
{
    container_->Window()->SetBorderStyle(ToInteger(value));
    NotifyChanged("BorderStyle");
}

void Viewport::SetMouseIcon(std::shared_ptr<Picture> value)
{
    container_->Window()->SetMouseIcon(value);
    NotifyChanged("MouseIcon");
}

void Viewport::SetMousePointer(std::int32_t value)
{
    properties_.MousePointerValue = value;
    container_->Window()->SetMousePointer(ToInteger(value));
    NotifyChanged("MousePointer");
}

// A host's answer to one mouse move: the next move clears the flag, and the container is not told.
void Viewport::SetHighlightPointer(std::int32_t value)
{
    properties_.HighlightPointerSet = true;
    container_->Window()->SetMousePointer(ToInteger(value));
}

// Scenes.

void Viewport::SetScene(std::shared_ptr<Frame> value)
{
    if (!IsRunMode())
        return;
    if (value && drawing_.CameraFrame && IsAtOrBelow(value, drawing_.CameraFrame))
        throw RuntimeError{error::RMBadValue, Source,
                           "A scene cannot be the camera or lie below it: give a frame of its own"};
    const Trap trap{Source};
    const auto previous = drawing_.SceneFrame;
    if (previous && drawing_.CameraFrame)
        trap([&] { previous->DeleteChild(drawing_.CameraFrame); });
    drawing_.SceneFrame = std::move(value);
    try
    {
        if (drawing_.SceneFrame && drawing_.CameraFrame)
            trap([&] { drawing_.SceneFrame->AddChild(drawing_.CameraFrame); });
    }
    catch (...)
    {
        // A scene that does not take the camera is not taken either.
        drawing_.SceneFrame = previous;
        if (previous)
            IgnoringErrors([&] { previous->AddChild(drawing_.CameraFrame); });
        throw;
    }
    trap([&] { NotifyChanged("Scene"); });
}

void Viewport::SetSceneOverlay(std::shared_ptr<Frame> value)
{
    const Trap trap{Source};
    drawing_.OverlayFrame = std::move(value);
    trap([&] { NotifyChanged("SceneOverlay"); });
}

// On-screen controls.

void Viewport::WriteNavControl(bool& member, bool value, const char* name)
{
    const Trap trap{Source};
    member = value;
    if (drawing_.CameraFrame && IsRunMode())
    {
        trap([&] { BuildNavControls(); });
        trap([&] { UpdateCameraState(true); });
    }
    trap([&] { NotifyChanged(name); });
}

void Viewport::SetNavControlPrimary(bool value)
{
    WriteNavControl(properties_.NavControlPrimary, value, "NavControlPrimary");
}

void Viewport::SetNavControlGlide(bool value)
{
    WriteNavControl(properties_.NavControlGlide, value, "NavControlGlide");
}

void Viewport::SetNavControlAdvance(bool value)
{
    WriteNavControl(properties_.NavControlAdvance, value, "NavControlAdvance");
}

// Surfaces.

void Viewport::SetAntiAlias(tdlAntiAlias value)
{
    properties_.AntiAlias = value;
    drawing_.DeviceRebuildPending = true;
    NotifyChanged("AntiAlias");
}

void Viewport::SetExposeDDSurface(bool value)
{
    const Trap trap{Source};
    if (drawing_.RetainedMode && IsRunMode())
    {
        trap([&] { RequireFreeSurfaces(); });
        drawing_.PendingExposeDDSurface = value;
        drawing_.DeviceRebuildPending = true;
        drawing_.ExposeChangePending = true;
        ClientRect client;
        trap([&] { client = ClientPixels(); });
        trap([&] { RecreateDirectX(DeviceGuidName(properties_.Direct3DDevice), client); });
    }
    else
        properties_.ExposeDDSurface = value;
    trap([&] { NotifyChanged("ExposeDDSurface"); });
}

void Viewport::SetAccumulate(bool value)
{
    properties_.Accumulate = value;
    if (value && drawing_.RMViewport)
        drawing_.RMViewport->Clear(clearflags::Target | clearflags::Depth);
    NotifyChanged("Accumulate");
}

void Viewport::SetBackgroundTexture(std::string value)
{
    const Trap trap{Source};
    properties_.BackgroundTexture = std::move(value);
    if (IsRunMode())
    {
        drawing_.BackgroundPicture = nullptr;
        if (!properties_.BackgroundTexture.empty())
            IgnoringErrors([&] { drawing_.BackgroundPicture = LoadPicture(properties_.BackgroundTexture); });
    }
    drawing_.DeviceRebuildPending = true;
    trap([&] { NotifyChanged("BackgroundTexture"); });
}

// What the device and the viewport draw with. `push` gets the object while the control is live and has one; without it
// the value waits for the device to come.

template<typename Type, typename Push>
void Viewport::WriteLive(const char* name, const std::shared_ptr<Type>& object, Push&& push)
{
    const Trap trap{Source};
    if (object && IsRunMode())
        trap([&] { push(*object); });
    trap([&] { NotifyChanged(name); });
}

void Viewport::SetProjectionType(D3DRMPROJECTIONTYPE value)
{
    properties_.ProjectionType = value;
    WriteLive("ProjectionType", drawing_.RMViewport,
              [&](lumora::RMViewport& viewport) { viewport.SetProjection(value); });
}

void Viewport::SetCullMethod(D3DCULL value)
{
    properties_.CullMethod = value;
    if (drawing_.Device && IsRunMode())
        drawing_.Device->GetDirect3DDevice2()->SetRenderState(ImmediateDevice::CullModeState,
                                                              static_cast<std::uint32_t>(value));
    NotifyChanged("CullMethod");
}

void Viewport::SetTextureQuality(D3DRMTEXTUREQUALITY value)
{
    properties_.TextureQuality = value;
    WriteLive("TextureQuality", drawing_.Device,
              [&](lumora::Device& device) { device.SetTextureQuality(static_cast<std::uint32_t>(value)); });
}

void Viewport::SetShadeMode(D3DRMSHADEMODE value)
{
    properties_.ShadeMode = value;
    WriteLive("ShadeMode", drawing_.Device,
              [&](lumora::Device& device) { device.SetQuality(CombinedQuality(properties_)); });
}

void Viewport::SetFillMode(D3DRMFILLMODE value)
{
    properties_.FillMode = value;
    WriteLive("FillMode", drawing_.Device,
              [&](lumora::Device& device) { device.SetQuality(CombinedQuality(properties_)); });
}

void Viewport::SetLightMode(D3DRMLIGHTMODE value)
{
    properties_.LightMode = value;
    WriteLive("LightMode", drawing_.Device,
              [&](lumora::Device& device) { device.SetQuality(CombinedQuality(properties_)); });
}

void Viewport::SetRenderMode(tdlRenderMode value)
{
    properties_.RenderMode = value;
    const std::uint32_t mode = value == tdlBlendedSorted ? BlendedSortedMode : static_cast<std::uint32_t>(value);
    WriteLive("RenderMode", drawing_.Device, [&](lumora::Device& device) { device.SetRenderMode(mode); });
}

void Viewport::SetBackClippingPlane(float value)
{
    properties_.BackClippingPlane = value;
    WriteLive("BackClippingPlane", drawing_.RMViewport, [&](lumora::RMViewport& viewport) { viewport.SetBack(value); });
}

void Viewport::SetFrontClippingPlane(float value)
{
    properties_.FrontClippingPlane = value;
    WriteLive("FrontClippingPlane", drawing_.RMViewport,
              [&](lumora::RMViewport& viewport) { viewport.SetFront(value); });
}

void Viewport::SetFieldOfView(float value)
{
    const Trap trap{Source};
    properties_.FieldOfView = value;
    if (drawing_.RMViewport && IsRunMode())
    {
        trap([&] { drawing_.RMViewport->SetField(value); });
        if (properties_.ProjectionType == D3DRMPROJECT_ORTHOGRAPHIC)
            trap([&] { BuildNavControls(); });
        trap([&] { UpdateCameraState(true); });
    }
    trap([&] { NotifyChanged("FieldOfView"); });
}

} // namespace lumora
