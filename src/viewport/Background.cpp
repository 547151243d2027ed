// The picture behind an exposed scene, and the one in its place.
#include "base/Numbers.h"
#include "platform/pictures/Bitmap.h"
#include "viewport/HeldContext.h"
#include "viewport/Viewport.h"

namespace lumora
{

// A surface of the control's size that shows the picture from its top-left corner, or all over it.
std::shared_ptr<Surface> Viewport::SurfaceShowing(const std::shared_ptr<Picture>& picture, bool stretched)
{
    Bitmap& bitmap = Required(Required(picture).Handle());
    const auto surface = Required(drawing_.DirectDrawObject).CreateSurface(ClientSurface());
    const DeviceContext source{bitmap.Pixels()};
    const HeldContext target{*surface};
    const PixelRect whole{0, 0, surface->Width(), surface->Height()};
    if (stretched)
        target->StretchBlt(whole, source, {0, 0, source.Width(), source.Height()});
    else
        target->BitBlt(0, 0, whole.right, whole.bottom, source, 0, 0);
    return surface;
}

// Failures leave no background, and no error.
void Viewport::DrawBackgroundTexture()
{
    IgnoringErrors(
        [&] {
            drawing_.BackgroundSurface =
                SurfaceShowing(drawing_.BackgroundPicture, properties_.BackgroundTextureStretch);
        });
}

// Whatever fails, the screen stays as it was: in window mode there is no surface to show.
void Viewport::DisplayPreRenderedImage(const std::shared_ptr<Picture>& picPicture)
{
    IgnoringErrors(
        [&]
        {
            Surface& render = Required(drawing_.RenderSurface);
            const auto picture = SurfaceShowing(picPicture, false);
            const PixelRect destination = PresentationRect();
            Required(drawing_.RMViewport).Clear(clearflags::Target | clearflags::Depth);
            render.Blt(std::nullopt, *picture, std::nullopt, Surface::BltWait);
            ShowSurface(drawing_.RenderSurface, destination);
        });
}

} // namespace lumora
