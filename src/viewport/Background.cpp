// The picture behind an exposed scene.
#include "platform/automation/Numbers.h"
#include "platform/directdraw/DeviceContext.h"
#include "viewport/Viewport.h"

#include <algorithm>

namespace lumora
{

// Failures leave no background, and no error.
void Viewport::DrawBackgroundTexture()
{
    IgnoringErrors(
        [&]
        {
            double width = 0;
            double height = 0;
            ClientSizePixels(width, height);
            SurfaceDescription description;
            description.flags = 7;
            description.width = std::max(1, ToLong(width + BorderPixels()));
            description.height = std::max(1, ToLong(height + BorderPixels()));
            description.caps = surfacecaps::Device3D | surfacecaps::OffscreenPlain | surfacecaps::SystemMemory;
            drawing_.BackgroundSurface = Required(drawing_.DirectDrawObject).CreateSurface(description);

            const auto bitmap = Required(drawing_.BackgroundPicture).Handle();
            const DeviceContext picture{Required(bitmap).Pixels()};
            const auto context = drawing_.BackgroundSurface->GetDC();
            const PixelRect whole{0, 0, description.width, description.height};
            if (properties_.BackgroundTextureStretch)
                context->StretchBlt(whole, picture, {0, 0, picture.Width(), picture.Height()});
            else
                context->BitBlt(0, 0, whole.right, whole.bottom, picture, 0, 0);
            drawing_.BackgroundSurface->ReleaseDC(context);
        });
}

} // namespace lumora
