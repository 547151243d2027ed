// 32-bit surfaces: what devices draw into, what hosts draw on, and the screen.
#pragma once

#include "base/ZeroedPixels.h"
#include "platform/directdraw/Clipper.h"
#include "platform/pictures/PixelView.h"

#include <memory>
#include <optional>

namespace lumora
{

/// Capability bits of SurfaceDescription.
namespace surfacecaps
{
inline constexpr std::uint32_t OffscreenPlain = 0x40;
inline constexpr std::uint32_t PrimarySurface = 0x200;
inline constexpr std::uint32_t SystemMemory = 0x800;
inline constexpr std::uint32_t Device3D = 0x2000;
inline constexpr std::uint32_t VideoMemory = 0x4000;
} // namespace surfacecaps

struct SurfaceDescription
{
    std::uint32_t size = 124; ///< of the record; always 124
    std::uint32_t flags = 0;  ///< 1 caps, 2 height, 4 width
    int height = 0;
    int width = 0;
    std::uint32_t caps = 0;
};

class DeviceContext;
class Surface;

/// The pixels of a locked surface, which stay where they are as long as this is held. The lock itself ends with
/// Surface::Unlock, or when this is let go of.
struct SurfaceLock
{
    std::shared_ptr<Surface> surface;
    PixelView pixels;
};

/// Draws into a surface and may put the work off. Its surface tells it when somebody else is about to read or write the
/// pixels.
class SurfacePainter
{
public:
    /// Every pixel drawn so far is in the surface on return. Errors are the painter's.
    virtual void FinishDrawing() = 0;

protected:
    ~SurfacePainter() = default;
};

/// A picture of 32-bit pixels (0x00RRGGBB), black at first, or the screen itself (primary). Created by
/// DirectDraw::CreateSurface.
class Surface : public Object, public std::enable_shared_from_this<Surface>
{
public:
    static constexpr int MaximumSide = 32768;

    /// The most pixels of one surface: 1 GiB of memory, four times 3840 by 2160 each way and half as much again.
    static constexpr std::int64_t MaximumPixels = std::int64_t{1} << 28;

    static constexpr std::uint32_t BltWait = 0x1000000;

    ~Surface() override;
    Surface(const Surface&) = delete;
    Surface& operator=(const Surface&) = delete;

    int Width() const;
    int Height() const;
    const SurfaceDescription& Description() const { return description_; }
    bool IsPrimary() const;

    /// Only the clipper's window is changed by blits to this surface. Nothing removes the clipper. DDInvalidParams
    /// unless this is the primary surface.
    void SetClipper(const std::shared_ptr<Clipper>& clipper);

    /// Copies `sourceRect` of `source` (all of it when absent) to `destination` (all of this when absent), stretching
    /// by the nearest pixel. On the primary surface, destination is in screen coordinates and is clipped to the
    /// clipper's window; elsewhere a rectangle outside the surface raises DDInvalidRect. Overlapping copies within one
    /// surface are exact. DDSurfaceBusy while either surface is locked or has its device context out. DDInvalidRect for
    /// an empty rectangle; DDInvalidParams for flags other than BltWait, for the primary surface as the source, and
    /// when the clipper has no window.
    void Blt(const std::optional<PixelRect>& destination, Surface& source, const std::optional<PixelRect>& sourceRect,
             std::uint32_t flags);

    /// A context to draw with; one at a time (DDSurfaceBusy), until ReleaseDC or until nobody refers to it any more.
    /// Not on the primary. What a device put off is drawn first, here and in Blt and Lock.
    std::shared_ptr<DeviceContext> GetDC();

    /// Draws through `context` do nothing from now on. DDInvalidParams for a context that is not out.
    void ReleaseDC(const std::shared_ptr<DeviceContext>& context);

    /// The pixels for direct access, until Unlock: they stay where they are although nobody else may refer to the
    /// surface any more. DDSurfaceBusy when locked or a context is out. Not on the primary.
    PixelView Lock();

    /// The same for callers who may forget to unlock: the lock also ends with the last reference to it.
    std::shared_ptr<const SurfaceLock> LockShared();

    /// Ends either kind of lock. DDInvalidParams when it is not locked.
    void Unlock();

    /// Fills `area` (all of it when absent) with a pixel value. DDInvalidRect for a rectangle that is empty or reaches
    /// outside; DDSurfaceBusy when locked or a context is out. Not on the primary.
    void Fill(const std::optional<PixelRect>& area, std::uint32_t pixel);

    /// The pixels, for devices of this library: no lock is taken, and what a device put off is not drawn. None on the
    /// primary.
    PixelView Pixels();

    /// DDSurfaceBusy while it is locked or its device context is out.
    void RequireFree() const;
    bool IsFree() const;

    /// Who draws into it from now on, or nothing. The painter takes itself away before it ends.
    void SetPainter(SurfacePainter* painter) { painter_ = painter; }
    SurfacePainter* Painter() const { return painter_; }

private:
    friend class DirectDraw;
    Surface() = default;
    void BlitToScreen(const PixelRect& destination, const PixelView& picture);
    void RequirePixels() const;
    void BeginLock();
    bool IsContextOut() const;
    void FinishDrawing();

    SurfaceDescription description_;
    std::shared_ptr<class Screen> screen_; // primary only
    ZeroedPixels pixels_;
    std::shared_ptr<Clipper> clipper_;
    std::shared_ptr<DeviceContext> context_; // kept to be handed out again
    std::shared_ptr<Surface> lockedSelf_;    // while locked
    std::weak_ptr<const SurfaceLock> sharedLock_;
    SurfacePainter* painter_ = nullptr;
};

} // namespace lumora
