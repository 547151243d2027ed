// Everything the control draws with: made, made again, and released.
#include "base/Numbers.h"
#include "properties/DeviceNames.h"
#include "viewport/Names.h"
#include "viewport/Viewport.h"

#include <algorithm>

namespace lumora
{

namespace
{

// 32-bit arithmetic as the surfaces' records have it. A control without a size still gets a device, of one pixel: forms
// are often laid out after their controls were loaded.
std::int32_t SurfaceSide(std::int32_t pixels, std::int32_t factor, std::int32_t border)
{
    return std::max(1, ToLong(static_cast<double>(pixels) * factor + border));
}

SurfaceDescription OffscreenSurface(int width, int height, std::uint32_t memory)
{
    SurfaceDescription description;
    description.flags = 7;
    description.width = width;
    description.height = height;
    description.caps = surfacecaps::Device3D | surfacecaps::OffscreenPlain | memory;
    return description;
}

} // namespace

std::int32_t Viewport::BorderPixels() const
{
    return BorderStyle() == tdlFixedSingle ? 2 : 0;
}

void Viewport::ClientSizePixels(double& width, double& height) const
{
    const auto window = container_->Window();
    width = window->ScaleToPixelsX(window->ScaleWidth());
    height = window->ScaleToPixelsY(window->ScaleHeight());
}

ClientRect Viewport::ClientPixels() const
{
    const auto window = container_->Window();
    return {ToLong(window->ScaleToPixelsX(window->ScaleLeft())), ToLong(window->ScaleToPixelsY(window->ScaleTop())),
            ToLong(window->ScaleToPixelsX(window->ScaleWidth())),
            ToLong(window->ScaleToPixelsY(window->ScaleHeight()))};
}

void Viewport::InitializeDirectX(WindowHandle Window, const std::string& DeviceName, const ClientRect& client)
{
    const Trap trap{Source};
    trap([&] { drawing_.SceneFrame = Required(drawing_.RetainedMode).CreateFrame(nullptr); });
    trap([&] { drawing_.SceneFrame->AddChild(drawing_.CameraFrame); });
    trap([&] { BuildNavControls(); });
    trap([&] { CreateDirectDraw(Window); });
    trap([&] { CreateDevice(DeviceName, client); });
    trap([&] { CreateSecondarySurfaces(); });
}

void Viewport::RecreateDirectX(const std::string& DeviceName, const ClientRect& client)
{
    drawing_.RebuildFailure.clear();
    try
    {
        ReplaceDirectX(DeviceName, client);
    }
    catch (const RuntimeError& failure)
    {
        drawing_.RebuildFailure = Sentence(failure);
        throw;
    }
}

void Viewport::ReplaceDirectX(const std::string& DeviceName, const ClientRect& client)
{
    const Trap trap{Source};
    const bool wasExposed = drawing_.RenderSurface != nullptr;
    trap([&] { ReleaseDeviceAndViewport(); });
    if (properties_.ExposeDDSurface || wasExposed)
        trap([&] { ReleaseDirectDraw(); });
    if (drawing_.ExposeChangePending)
    {
        properties_.ExposeDDSurface = drawing_.PendingExposeDDSurface;
        drawing_.ExposeChangePending = false;
    }
    // Without a DirectDraw object a failed rebuild left nothing to go on with; a window device needs its clipper too.
    if (properties_.ExposeDDSurface || wasExposed || !drawing_.DirectDrawObject)
        trap([&] { CreateDirectDraw(container_->Window()->Handle()); });
    trap([&] { CreateDevice(DeviceName, client); });
    trap([&] { CreateSecondarySurfaces(); });
}

void Viewport::CreateSecondarySurfaces()
{
    const Trap trap{Source};
    drawing_.SurfacesPending = false;
    // A window device keeps the DirectDraw objects of the one before.
    drawing_.BackgroundSurface = nullptr;
    drawing_.AntiAliasTarget = nullptr;
    if (properties_.ExposeDDSurface && drawing_.BackgroundPicture)
        trap([&] { DrawBackgroundTexture(); });
    // A handler of CameraMoved may have changed AntiAlias since the exposed surface was made.
    if ((drawing_.RenderSurface ? drawing_.SamplingFactor : properties_.AntiAlias) != tdlNone)
        trap([&] { CreateAntiAliasSurface(); });
}

void Viewport::CreateDirectDraw(WindowHandle Window)
{
    const Trap trap{Source};
    trap([&] { drawing_.DirectDrawObject = DirectDraw::Create(container_->TheScreen()); });
    trap([&] { drawing_.DirectDrawObject->SetCooperativeLevel(Window, DirectDraw::CooperativeLevelNormal); });
    trap([&] { drawing_.Clipper = drawing_.DirectDrawObject->CreateClipper(0); });
    trap([&] { drawing_.Clipper->SetHWnd(0, Window); });
}

DeviceRecord Viewport::QueryDeviceDriver(const std::string& DeviceName) const
{
    const auto drivers = container_->Drivers();
    for (int i = 0; i < drivers->Count(); ++i)
    {
        const DriverList::Entry& entry = drivers->At(i);
        if (DeviceName.empty() || entry.identifierName == DeviceName)
            return {entry.guid, entry.identifierName, entry.name, entry.description};
    }
    return {};
}

// The control's record; its device type stays what was last asked for.
void Viewport::TakeDriver(const DeviceRecord& record)
{
    properties_.Direct3DDeviceGUID = record.IdentifierName;
    properties_.Direct3DDeviceName = record.Name;
    properties_.Direct3DDeviceDescription = record.Description;
}

void Viewport::CreateDevice(const std::string& DeviceName, const ClientRect& client)
{
    const Trap trap{Source};
    trap([&] { ReapplyCamera(); });
    trap([&] { Required(drawing_.RetainedMode).SetDrivers(container_->Drivers()); });
    DeviceRecord record;
    trap([&] { record = QueryDeviceDriver(DeviceName); });
    TakeDriver(record);
    drawing_.SurfacesPending = true;
    if (properties_.ExposeDDSurface)
        CreateExposedDevice(record, client);
    else
        CreateWindowDevice(record, client);
    CompleteDevice(client);
}

void Viewport::ReapplyCamera()
{
    const Trap trap{Source};
    const Vector direction = camera_.Direction;
    const Vector up = camera_.Up;
    const Vector position = camera_.Position;
    trap([&] { Required(drawing_.CameraFrame).SetOrientation(drawing_.SceneFrame, direction, up); });
    trap([&] { drawing_.CameraFrame->SetPosition(drawing_.SceneFrame, position.x, position.y, position.z); });
}

void Viewport::CreateExposedDevice(const DeviceRecord& record, const ClientRect& client)
{
    if (!TryExposedDevice(record, client) && !TryExposedFallback(client))
        throw RuntimeError{error::NoDevice, HaltSource, GetErrorDescription(2)};
}

// The control's record says from here on what was tried last.
bool Viewport::TryExposedFallback(const ClientRect& client)
{
    DeviceRecord fallback;
    return IgnoringErrors(
               [&]
               {
                   fallback = QueryDeviceDriver(drivername::RGB);
                   TakeDriver(fallback);
                   ReleaseDirectDraw();
                   CreateDirectDraw(container_->Window()->Handle());
               }) &&
           TryExposedDevice(fallback, client);
}

bool Viewport::TryExposedDevice(const DeviceRecord& record, const ClientRect& client)
{
    return IgnoringErrors(
        [&]
        {
            lumora::DirectDraw& directDraw = Required(drawing_.DirectDrawObject);
            SurfaceDescription primary;
            primary.flags = 1;
            primary.caps = surfacecaps::PrimarySurface;
            drawing_.PrimarySurface = directDraw.CreateSurface(primary);
            Required(drawing_.Clipper).SetHWnd(0, container_->Window()->Handle());
            drawing_.PrimarySurface->SetClipper(drawing_.Clipper);
            const std::int32_t border = BorderPixels();
            const std::int32_t width = SurfaceSide(client.Width, properties_.AntiAlias, border);
            const std::int32_t height = SurfaceSide(client.Height, properties_.AntiAlias, border);
            const bool hardware = record.IdentifierName == drivername::HAL;
            drawing_.RenderSurface = directDraw.CreateSurface(
                OffscreenSurface(width, height, hardware ? surfacecaps::VideoMemory : surfacecaps::SystemMemory));
            drawing_.Device =
                Required(drawing_.RetainedMode)
                    .CreateDeviceFromSurface(record.DriverGuid, drawing_.DirectDrawObject, drawing_.RenderSurface);
            drawing_.Device->SetSamplingFactor(std::max<std::int32_t>(1, properties_.AntiAlias));
            drawing_.SamplingFactor = properties_.AntiAlias;
            properties_.Direct3DDeviceName = record.Name;
            properties_.Direct3DDeviceDescription = record.Description;
        });
}

// A fall-back here leaves the identifier name as it was asked for; name and description tell what is really used.
void Viewport::CreateWindowDevice(const DeviceRecord& record, const ClientRect& client)
{
    if (TryWindowDevice(record, client))
        return;
    if (!TryWindowDevice(QueryDeviceDriver(drivername::RGB), client))
        throw RuntimeError{error::NoDevice, HaltSource, GetErrorDescription(2)};
}

bool Viewport::TryWindowDevice(const DeviceRecord& record, const ClientRect& client)
{
    return IgnoringErrors(
        [&]
        {
            const std::int32_t border = BorderPixels();
            drawing_.Device =
                Required(drawing_.RetainedMode)
                    .CreateDeviceFromClipper(drawing_.Clipper, record.DriverGuid, SurfaceSide(client.Width, 1, border),
                                             SurfaceSide(client.Height, 1, border));
            properties_.Direct3DDeviceName = record.Name;
            properties_.Direct3DDeviceDescription = record.Description;
        });
}

void Viewport::CompleteDevice(const ClientRect& client)
{
    const Trap trap{Source};
    std::int32_t width = 0;
    std::int32_t height = 0;
    trap([&] { width = SurfaceSide(client.Width, properties_.AntiAlias, BorderPixels()); });
    trap([&] { height = SurfaceSide(client.Height, properties_.AntiAlias, BorderPixels()); });
    trap(
        [&]
        {
            drawing_.RMViewport =
                Required(drawing_.RetainedMode)
                    .CreateViewport(drawing_.Device, drawing_.CameraFrame, client.Left, client.Top, width, height);
        });
    trap([&] { ApplyDeviceSettings(); });
    // Handlers hear of the camera here, and may halt the control: then there is no device to complete.
    if (!IsHalted())
        trap([&] { UpdateCameraState(true); });
    if (IsHalted())
        return;
    trap(
        [&]
        {
            Required(drawing_.Device)
                .GetDirect3DDevice2()
                ->SetRenderState(ImmediateDevice::CullModeState, static_cast<std::uint32_t>(properties_.CullMethod));
        });
}

void Viewport::ApplyDeviceSettings()
{
    const Trap trap{Source};
    trap([&] { SetTextureQuality(properties_.TextureQuality); });
    trap([&] { SetShadeMode(properties_.ShadeMode); });
    trap([&] { SetLightMode(properties_.LightMode); });
    trap([&] { SetFillMode(properties_.FillMode); });
    trap([&] { SetRenderMode(properties_.RenderMode); });
    trap([&] { SetProjectionType(properties_.ProjectionType); });
    trap([&] { SetBackClippingPlane(properties_.BackClippingPlane); });
    trap([&] { SetFrontClippingPlane(properties_.FrontClippingPlane); });
    trap([&] { SetFieldOfView(properties_.FieldOfView); });
}

// A target that cannot be had shows itself when the next picture is averaged into it.
void Viewport::CreateAntiAliasSurface()
{
    const Trap trap{Source};
    SurfaceDescription description;
    trap([&] { description = ClientSurface(); });
    IgnoringErrors([&] { drawing_.AntiAliasTarget = Required(drawing_.DirectDrawObject).CreateSurface(description); });
}

// In system memory, of the size that is shown.
SurfaceDescription Viewport::ClientSurface() const
{
    double width = 0;
    double height = 0;
    ClientSizePixels(width, height);
    const std::int32_t border = BorderPixels();
    return OffscreenSurface(std::max(1, ToLong(width + border)), std::max(1, ToLong(height + border)),
                            surfacecaps::SystemMemory);
}

// Whoever holds a surface's pixels would write where nobody looks any more.
void Viewport::RequireFreeSurfaces() const
{
    for (const auto& surface : {drawing_.RenderSurface, drawing_.BackgroundSurface, drawing_.AntiAliasTarget})
        if (surface)
            surface->RequireFree();
}

void Viewport::ReleaseDirectDraw()
{
    drawing_.Clipper = nullptr;
    drawing_.PrimarySurface = nullptr;
    drawing_.RenderSurface = nullptr;
    drawing_.BackgroundSurface = nullptr;
    drawing_.AntiAliasTarget = nullptr;
    drawing_.DirectDrawObject = nullptr;
}

// A surface that the device still finds alive is somebody else's, who gets the last picture.
void Viewport::ReleaseDeviceAndViewport()
{
    drawing_.RenderSurface = nullptr;
    drawing_.RMViewport = nullptr;
    drawing_.Device = nullptr;
}

} // namespace lumora
