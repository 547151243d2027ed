// The object that makes surfaces and clippers on a screen.
#pragma once

#include "platform/container/Screen.h"
#include "platform/directdraw/Clipper.h"
#include "platform/directdraw/Surface.h"

namespace lumora
{

class DirectDraw : public Object
{
public:
    static constexpr std::uint32_t CooperativeLevelNormal = 8;
    static constexpr std::uint32_t WaitForBlankBegin = 1;

    /// For the default driver of `screen`.
    static std::shared_ptr<DirectDraw> Create(std::shared_ptr<Screen> screen);

    /// DDInvalidParams for another level than normal or a window that does not exist.
    void SetCooperativeLevel(WindowHandle window, std::uint32_t level);

    /// DDInvalidParams for a wrong record size or missing width and height, a side outside 1 .. Surface::MaximumSide;
    /// OutOfMemory when the pixels cannot be had.
    std::shared_ptr<Surface> CreateSurface(const SurfaceDescription& description);

    /// `flags` must be 0.
    std::shared_ptr<Clipper> CreateClipper(std::uint32_t flags);

    /// Returns at the start of the next vertical blank; `flags` must be 1.
    void WaitForVerticalBlank(std::uint32_t flags);

private:
    explicit DirectDraw(std::shared_ptr<Screen> screen) : screen_(std::move(screen)) {}
    std::shared_ptr<Screen> screen_;
};

} // namespace lumora
