// Blits, device contexts and locks. A surface has one user at a time: whoever holds its context or its lock.
#include "platform/directdraw/Surface.h"

#include "base/Faults.h"
#include "base/RuntimeError.h"
#include "platform/container/Screen.h"
#include "platform/directdraw/DeviceContext.h"
#include "platform/pictures/Blit.h"

namespace lumora
{

namespace
{

[[noreturn]] void Raise(std::int32_t number, const char* description)
{
    throw RuntimeError{number, "Surface", description};
}

bool Contains(const PixelRect& outer, const PixelRect& inner)
{
    return inner.left >= outer.left && inner.top >= outer.top && inner.right <= outer.right &&
           inner.bottom <= outer.bottom;
}

PixelView PartOf(const PixelView& view, const PixelRect& rect)
{
    return {view.Row(rect.top) + rect.left, rect.Width(), rect.Height(), view.pitch};
}

} // namespace

Surface::~Surface()
{
    if (context_)
        context_->Release();
}

int Surface::Width() const
{
    return IsPrimary() ? screen_->Width() : description_.width;
}

int Surface::Height() const
{
    return IsPrimary() ? screen_->Height() : description_.height;
}

bool Surface::IsPrimary() const
{
    return screen_ != nullptr;
}

void Surface::SetClipper(const std::shared_ptr<Clipper>& clipper)
{
    faults::Point("Surface.SetClipper");
    if (!IsPrimary())
        Raise(error::DDInvalidParams, "Only the primary surface is clipped to a window");
    clipper_ = clipper;
}

void Surface::Blt(const std::optional<PixelRect>& destination, Surface& source,
                  const std::optional<PixelRect>& sourceRect, std::uint32_t flags)
{
    faults::Point("Surface.Blt");
    if ((flags & ~BltWait) != 0)
        Raise(error::DDInvalidParams, "Blits take no flag but the one that waits");
    if (source.IsPrimary())
        Raise(error::DDInvalidParams, "The primary surface cannot be read");
    source.RequireFree();
    RequireFree();
    const BlitBlock block{sourceRect.value_or(source.Pixels().Bounds()),
                          destination.value_or(PixelRect{0, 0, Width(), Height()})};
    if (!IsCopyable(block))
        Raise(error::DDInvalidRect, "A rectangle of this blit is empty or too large");
    if (!Contains(source.Pixels().Bounds(), block.source))
        Raise(error::DDInvalidRect, "The source rectangle reaches outside the source surface");
    source.FinishDrawing();
    if (IsPrimary())
    {
        BlitToScreen(block.destination, PartOf(source.Pixels(), block.source));
        return;
    }
    if (!Contains(Pixels().Bounds(), block.destination))
        Raise(error::DDInvalidRect, "The destination rectangle reaches outside the surface");
    FinishDrawing();
    CopyBlock(source.Pixels(), Pixels(), block, block.destination);
}

void Surface::BlitToScreen(const PixelRect& destination, const PixelView& picture)
{
    if (!clipper_)
    {
        screen_->Present(picture, destination);
        return;
    }
    const std::shared_ptr<ControlWindow> window = clipper_->Window();
    if (!window)
        Raise(error::DDInvalidParams, "The clipper of the primary surface has no window");
    window->Present(picture, destination);
}

void Surface::Fill(const std::optional<PixelRect>& area, std::uint32_t pixel)
{
    faults::Point("Surface.Fill");
    RequirePixels();
    RequireFree();
    const PixelRect rect = area.value_or(Pixels().Bounds());
    if (rect.IsEmpty() || !Contains(Pixels().Bounds(), rect))
        Raise(error::DDInvalidRect, "The rectangle to fill is empty or reaches outside the surface");
    FinishDrawing();
    FillBlock(Pixels(), rect, pixel);
}

std::shared_ptr<DeviceContext> Surface::GetDC()
{
    faults::Point("Surface.GetDC");
    RequirePixels();
    RequireFree();
    FinishDrawing();
    if (context_.use_count() == 1)
        *context_ = DeviceContext{Pixels()};
    else
        context_ = std::make_shared<DeviceContext>(Pixels());
    return context_;
}

void Surface::ReleaseDC(const std::shared_ptr<DeviceContext>& context)
{
    faults::Point("Surface.ReleaseDC");
    if (!context || context_ != context || !context->IsAttached())
        Raise(error::DDInvalidParams, "This device context is not out for this surface");
    context->Release();
}

void Surface::BeginLock()
{
    faults::Point("Surface.Lock");
    RequirePixels();
    RequireFree();
    FinishDrawing();
}

PixelView Surface::Lock()
{
    BeginLock();
    lockedSelf_ = shared_from_this();
    return Pixels();
}

std::shared_ptr<const SurfaceLock> Surface::LockShared()
{
    BeginLock();
    auto lock = std::make_shared<const SurfaceLock>(SurfaceLock{shared_from_this(), Pixels()});
    sharedLock_ = lock;
    return lock;
}

void Surface::Unlock()
{
    faults::Point("Surface.Unlock");
    if (!lockedSelf_ && sharedLock_.expired())
        Raise(error::DDInvalidParams, "The surface is not locked");
    sharedLock_.reset();
    const auto self = std::move(lockedSelf_); // may be the last one
}

PixelView Surface::Pixels()
{
    if (IsPrimary())
        return {};
    return {pixels_.Data(), description_.width, description_.height, description_.width};
}

void Surface::RequireFree() const
{
    if (!IsFree())
        Raise(error::DDSurfaceBusy,
              "The surface is locked or its device context is out: Unlock it, or release the context, first");
}

bool Surface::IsFree() const
{
    return !lockedSelf_ && sharedLock_.expired() && !IsContextOut();
}

bool Surface::IsContextOut() const
{
    return context_.use_count() > 1 && context_->IsAttached();
}

void Surface::FinishDrawing()
{
    if (painter_ != nullptr)
        painter_->FinishDrawing();
}

void Surface::RequirePixels() const
{
    if (IsPrimary())
        Raise(error::DDInvalidParams, "The pixels of the primary surface cannot be reached");
}

} // namespace lumora
