#include "platform/scenegraph/RetainedMode.h"

#include "base/Faults.h"
#include "platform/scenegraph/frames/Checks.h"
#include "platform/scenegraph/frames/Rotation.h"

namespace lumora
{

namespace
{

constexpr const char* Source = "RetainedMode";

Vector FiniteResult(Double3 value)
{
    const Vector result = value.ToVector();
    if (!IsFinite(result))
        RaiseBadValue(Source, "The result of a vector operation is not finite");
    return result;
}

float FiniteResult(double value)
{
    const auto result = static_cast<float>(value);
    if (!std::isfinite(result))
        RaiseBadValue(Source, "The result of a vector operation is not finite");
    return result;
}

} // namespace

RetainedMode::RetainedMode(std::shared_ptr<const DriverList> drivers)
{
    SetDrivers(std::move(drivers));
}

void RetainedMode::SetDrivers(std::shared_ptr<const DriverList> drivers)
{
    RequireObject(Source, drivers, "The list of drivers");
    drivers_ = std::move(drivers);
}

void RetainedMode::Initialise()
{
    faults::Point("RetainedMode.Initialise");
}

std::shared_ptr<Frame> RetainedMode::CreateFrame(const std::shared_ptr<Frame>& parent)
{
    faults::Point("RetainedMode.CreateFrame");
    return Frame::Make(parent);
}

std::shared_ptr<MeshBuilder> RetainedMode::CreateMeshBuilder()
{
    faults::Point("RetainedMode.CreateMeshBuilder");
    return MeshBuilder::Make();
}

std::shared_ptr<Material> RetainedMode::CreateMaterial(float power)
{
    faults::Point("RetainedMode.CreateMaterial");
    return std::make_shared<Material>(power);
}

std::shared_ptr<Texture> RetainedMode::CreateTexture(int width, int height, std::span<const std::uint32_t> pixels)
{
    faults::Point("RetainedMode.CreateTexture");
    return std::make_shared<Texture>(width, height, pixels);
}

std::shared_ptr<Light> RetainedMode::CreateLight(LightKind kind, Vector color)
{
    faults::Point("RetainedMode.CreateLight");
    return std::make_shared<Light>(kind, color);
}

std::shared_ptr<Animation> RetainedMode::CreateAnimation()
{
    faults::Point("RetainedMode.CreateAnimation");
    return std::make_shared<Animation>();
}

std::shared_ptr<Device> RetainedMode::CreateDeviceFromClipper(const std::shared_ptr<Clipper>& clipper,
                                                              const Guid& driver, int width, int height)
{
    faults::Point("RetainedMode.CreateDeviceFromClipper");
    return Device::FromClipper(drivers_->Create(driver), clipper, width, height);
}

std::shared_ptr<Device> RetainedMode::CreateDeviceFromSurface(const Guid& driver,
                                                              const std::shared_ptr<DirectDraw>& directDraw,
                                                              const std::shared_ptr<Surface>& surface)
{
    faults::Point("RetainedMode.CreateDeviceFromSurface");
    RequireObject(Source, directDraw, "The DirectDraw object");
    return Device::FromSurface(drivers_->Create(driver), surface);
}

std::shared_ptr<RMViewport> RetainedMode::CreateViewport(const std::shared_ptr<Device>& device,
                                                         const std::shared_ptr<Frame>& camera, int x, int y, int width,
                                                         int height)
{
    faults::Point("RetainedMode.CreateViewport");
    return std::make_shared<RMViewport>(device, camera, x, y, width, height);
}

Vector RetainedMode::VectorRotate(Vector vector, Vector axis, float angle)
{
    faults::Point("RetainedMode.VectorRotate");
    const Double3 unit = UnitOf(vector);
    const Double3 unitAxis = UnitOf(axis);
    if (Dot(unit, unit) == 0 || Dot(unitAxis, unitAxis) == 0)
        return FiniteResult(unit);
    return FiniteResult(UnitOf(Turned(unit, unitAxis, angle)));
}

float RetainedMode::VectorModulus(Vector vector)
{
    faults::Point("RetainedMode.VectorModulus");
    return FiniteResult(Length(vector));
}

Vector RetainedMode::VectorScale(Vector vector, float factor)
{
    faults::Point("RetainedMode.VectorScale");
    return FiniteResult(Double3{vector} * double{factor});
}

Vector RetainedMode::VectorNormalize(Vector vector)
{
    faults::Point("RetainedMode.VectorNormalize");
    return FiniteResult(UnitOf(vector));
}

float RetainedMode::VectorDotProduct(Vector a, Vector b)
{
    faults::Point("RetainedMode.VectorDotProduct");
    return FiniteResult(Dot(a, b));
}

Vector RetainedMode::VectorCrossProduct(Vector a, Vector b)
{
    faults::Point("RetainedMode.VectorCrossProduct");
    return FiniteResult(Cross(a, b));
}

} // namespace lumora
