// 32-bit surfaces: what devices draw into, what hosts draw on, and the screen.
#pragma once

#include "platform/directdraw/Clipper.h"
#include "platform/drivers/PixelView.h"

#include <memory>
#include <optional>
#include <vector>

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

/// A picture of 32-bit pixels (0x00RRGGBB), black at first, or the screen itself (primary). Created by
/// DirectDraw::CreateSurface.
class Surface : public Object, public std::enable_shared_from_this<Surface>
{
public:
    static constexpr int MaximumSide = 32768;
    static constexpr std::uint32_t BltWait = 0x1000000;

    int Width() const;
    int Height() const;
    const SurfaceDescription& Description() const { return description_; }
    bool IsPrimary() const { return (description_.caps & surfacecaps::PrimarySurface) != 0; }

    /// Only the clipper's window is changed by blits to this surface. Nothing removes the clipper.
    void SetClipper(const std::shared_ptr<Clipper>& clipper);

    /// Copies `sourceRect` of `source` (all of it when absent) to `destination` (all of this when absent), stretching
    /// by the nearest pixel. On the primary surface, destination is in screen coordinates and is clipped to the
    /// clipper's window; elsewhere a rectangle outside the surface raises DDInvalidRect. Overlapping copies within one
    /// surface are exact. DDSurfaceBusy while either surface is locked or has its device context out.
    void Blt(const std::optional<PixelRect>& destination, Surface& source, const std::optional<PixelRect>& sourceRect,
             std::uint32_t flags);

    /// A context to draw with; one at a time (DDSurfaceBusy), until ReleaseDC.
    std::shared_ptr<DeviceContext> GetDC();
    void ReleaseDC(const std::shared_ptr<DeviceContext>& context);

    /// The pixels for direct access, until Unlock. DDSurfaceBusy when locked or a context is out. Not on the primary.
    PixelView Lock();
    void Unlock();

    /// The pixels, for devices of this library: no lock is taken.
    PixelView Pixels();

private:
    friend class DirectDraw;
    Surface() = default;

    SurfaceDescription description_;
    std::shared_ptr<class Screen> screen_; // primary only
    std::vector<std::uint32_t> pixels_;
    std::shared_ptr<Clipper> clipper_;
    std::weak_ptr<DeviceContext> context_;
    bool locked_ = false;
};

} // namespace lumora
