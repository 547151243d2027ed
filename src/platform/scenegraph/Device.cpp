#include "platform/scenegraph/Device.h"

#include "base/Faults.h"
#include "base/Trap.h"
#include "platform/scenegraph/frames/Checks.h"
#include "platform/scenegraph/mesh/MeshBuilder.h"

#include <new>
#include <utility>

namespace lumora
{

namespace
{
constexpr const char* Source = "Device";
}

void ImmediateDevice::SetRenderState(std::uint32_t state, std::uint32_t value)
{
    faults::Point("ImmediateDevice.SetRenderState");
    if (state != CullModeState)
        throw RuntimeError{error::DDInvalidParams, "ImmediateDevice",
                           "Render state " + std::to_string(state) + " is not supported"};
    if (value < static_cast<std::uint32_t>(CullMode::None) ||
        value > static_cast<std::uint32_t>(CullMode::CounterClockwise))
        throw RuntimeError{error::DDInvalidParams, "ImmediateDevice", "There is no such cull mode"};
    device_->cullMode_ = static_cast<CullMode>(value);
}

std::shared_ptr<Device> Device::FromClipper(std::unique_ptr<Driver> driver, std::shared_ptr<Clipper> clipper, int width,
                                            int height)
{
    RequireObject(Source, driver, "The driver");
    RequireObject(Source, clipper, "The clipper");
    if (width < 1 || height < 1 || width > Surface::MaximumSide || height > Surface::MaximumSide)
        RaiseBadValue(Source, "The sides of a device must be in 1 .. " + std::to_string(Surface::MaximumSide));
    std::shared_ptr<Device> device{new Device};
    try
    {
        device->backBuffer_.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    }
    catch (const std::bad_alloc&)
    {
        throw RuntimeError{error::RMBadAlloc, Source, "There is not enough memory for a picture of this size"};
    }
    device->target_ = {device->backBuffer_.data(), width, height, width};
    device->driver_ = std::move(driver);
    device->clipper_ = std::move(clipper);
    device->driver_->SetTarget(device->target_);
    return device;
}

std::shared_ptr<Device> Device::FromSurface(std::unique_ptr<Driver> driver, std::shared_ptr<Surface> surface)
{
    RequireObject(Source, driver, "The driver");
    RequireObject(Source, surface, "The surface");
    std::shared_ptr<Device> device{new Device};
    device->target_ = surface->Pixels();
    device->driver_ = std::move(driver);
    device->surface_ = std::move(surface);
    if (SurfacePainter* const before = device->surface_->Painter())
        before->FinishDrawing();
    device->driver_->SetTarget(device->target_);
    device->surface_->SetPainter(device.get());
    return device;
}

// Somebody else who still has the surface gets the picture that was put off.
Device::~Device()
{
    if (!IsPainter())
        return;
    surface_->SetPainter(nullptr);
    if (surface_.use_count() > 1)
        IgnoringErrors([&] { driver_->Finish(); });
}

void Device::FinishDrawing()
{
    driver_->Finish();
}

int Device::Width() const
{
    return target_.width;
}

int Device::Height() const
{
    return target_.height;
}

void Device::SetSamplingFactor(int factor)
{
    faults::Point("Device.SetSamplingFactor");
    if (factor < 1 || factor > Surface::MaximumSide)
        RaiseBadValue(Source, "The sampling factor must be in 1 .. " + std::to_string(Surface::MaximumSide));
    samplingFactor_ = factor;
}

void Device::SetQuality(std::uint32_t quality)
{
    faults::Point("Device.SetQuality");
    if ((quality & quality::FillMask) > quality::FillSolid)
        RaiseBadValue(Source, "There is no such fill mode");
    quality_ = quality;
}

void Device::SetTextureQuality(std::uint32_t quality)
{
    faults::Point("Device.SetTextureQuality");
    if (quality > static_cast<std::uint32_t>(TextureFilter::LinearMipLinear))
        RaiseBadValue(Source, "There is no such texture quality");
    textureQuality_ = quality;
}

void Device::SetRenderMode(std::uint32_t mode)
{
    faults::Point("Device.SetRenderMode");
    renderMode_ = mode;
}

void Device::Update()
{
    faults::Point("Device.Update");
    // Whoever holds the pixels sees the picture without asking.
    if (samplingFactor_ > 1 && IsPainter() && surface_->IsFree())
        driver_->FinishLater();
    else
        driver_->Finish();
    const auto window = clipper_ ? clipper_->Window() : nullptr;
    if (!window)
        return;
    const PixelRect place = window->ScreenRect();
    window->Present(target_, {place.left, place.top, place.left + target_.width, place.top + target_.height});
}

void Device::Average(const PixelView& averages, int factor)
{
    faults::Point("Device.Average");
    if (factor < 1 || factor > BlockAverager::LargestFactor)
        RaiseBadValue(Source, "Blocks of 1 to 16 pixels a side can be averaged");
    if (surface_)
        surface_->RequireFree();
    if ((!surface_ || IsPainter()) && driver_->FinishAveraged(averages, factor))
        return;
    driver_->Finish();
    if (surface_ && surface_->Painter() != nullptr)
        surface_->Painter()->FinishDrawing();
    if (!averager_)
        averager_ = std::make_unique<BlockAverager>();
    averager_->Average(target_, factor, averages);
}

std::shared_ptr<ImmediateDevice> Device::GetDirect3DDevice2()
{
    faults::Point("Device.GetDirect3DDevice2");
    return std::shared_ptr<ImmediateDevice>{new ImmediateDevice{shared_from_this()}};
}

std::uint64_t Device::TakeTriangleCount()
{
    return std::exchange(triangleCount_, 0);
}

} // namespace lumora
