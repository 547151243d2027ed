// The rendering device: a driver bound to what it draws into.
#pragma once

#include "platform/directdraw/Clipper.h"
#include "platform/directdraw/Surface.h"
#include "platform/drivers/Averaging.h"
#include "platform/drivers/Driver.h"
#include "platform/scenegraph/frames/SceneObject.h"

#include <memory>
#include <vector>

namespace lumora
{

/// Bits of SetRenderMode; none of the first two is stippled transparency.
namespace rendermode
{
inline constexpr std::uint32_t BlendedTransparency = 1;
inline constexpr std::uint32_t SortedTransparency = 2; ///< together with blended
inline constexpr std::uint32_t ViewDependentSpecular = 16;
} // namespace rendermode

/// The device's immediate side: single render states.
class ImmediateDevice : public Object
{
public:
    static constexpr std::uint32_t CullModeState = 22;

    /// State 22 takes 1 none, 2 clockwise, 3 counter-clockwise. DDInvalidParams for another state or value.
    void SetRenderState(std::uint32_t state, std::uint32_t value);

private:
    friend class Device;
    explicit ImmediateDevice(std::shared_ptr<class Device> device) : device_(std::move(device)) {}
    std::shared_ptr<class Device> device_;
};

class Device : public SceneObject, public std::enable_shared_from_this<Device>, private SurfacePainter
{
public:
    /// A device that draws into a picture of its own and shows it in the clipper's window at each Update.
    /// RMBadValue unless both sides are in 1 .. Surface::MaximumSide; RMBadObject for nothing.
    static std::shared_ptr<Device> FromClipper(std::unique_ptr<Driver> driver, std::shared_ptr<Clipper> clipper,
                                               int width, int height);

    /// A device that draws into `surface`; showing it is the caller's business.
    static std::shared_ptr<Device> FromSurface(std::unique_ptr<Driver> driver, std::shared_ptr<Surface> surface);

    ~Device() override;

    int Width() const;
    int Height() const;

    /// Device pixels per screen coordinate of its viewports, each way; 1 at first. The picture is made `factor` times
    /// larger to be averaged down later; viewports on it go on speaking of the pixels that are shown.
    void SetSamplingFactor(int factor);
    int SamplingFactor() const { return samplingFactor_; }

    /// The most that is drawn: shade, light and fill bits, each capped by the mesh's own. RMBadValue for fill bits
    /// above solid.
    void SetQuality(std::uint32_t quality);
    std::uint32_t GetQuality() const { return quality_; }

    /// A TextureFilter; RMBadValue outside 0..5.
    void SetTextureQuality(std::uint32_t quality);
    std::uint32_t GetTextureQuality() const { return textureQuality_; }

    /// Bits of `rendermode`; unknown bits are kept and mean nothing.
    void SetRenderMode(std::uint32_t mode);
    std::uint32_t GetRenderMode() const { return renderMode_; }

    CullMode GetCullMode() const { return cullMode_; }

    /// Finishes the picture (sorted translucent faces last) and, with a clipper, shows it. Where a surface is sampled
    /// more than once the drawing may be put off until somebody looks at the surface or takes its averages.
    void Update();

    /// Puts the averages of the picture's blocks of `factor` by `factor` pixels (1 to 16) into `averages`: what
    /// BlockAverager takes from the surface, and what others drew on it counts too. The surface itself may be left
    /// behind, never drawn where nobody looks: its context, its lock and its blits bring it up to date at any time.
    /// DDSurfaceBusy while the surface is locked or its context is out.
    void Average(const PixelView& averages, int factor);

    std::shared_ptr<ImmediateDevice> GetDirect3DDevice2();

    /// The driver, for viewports.
    Driver& TheDriver() { return *driver_; }

    /// Triangles handed to the driver since the last call.
    std::uint64_t TakeTriangleCount();
    void CountTriangles(std::uint64_t count) { triangleCount_ += count; }

private:
    friend class ImmediateDevice;
    Device() = default;
    void FinishDrawing() override;
    bool IsPainter() const { return surface_ && surface_->Painter() == this; }

    std::unique_ptr<Driver> driver_;
    std::shared_ptr<Clipper> clipper_;      // with a window
    std::shared_ptr<Surface> surface_;      // with a surface
    std::vector<std::uint32_t> backBuffer_; // with a window
    PixelView target_;
    int samplingFactor_ = 1;
    std::uint32_t quality_ = 0x89;
    std::uint32_t textureQuality_ = 1;
    std::uint32_t renderMode_ = 0;
    CullMode cullMode_ = CullMode::CounterClockwise;
    std::uint64_t triangleCount_ = 0;
    std::unique_ptr<BlockAverager> averager_; // made for the first picture that the driver does not average itself
};

} // namespace lumora
