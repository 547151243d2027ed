// A host program that draws on every picture before it is averaged and shown: a caption and a ring around what matters.
//
// Usage: example-surface-host [MODEL [BACKGROUND]]; writes captioned-1.png, captioned-2.png and captioned-4.png.
#include "hosts/headless/HostedViewport.h"
#include "platform/drivers/standard/StandardDrivers.h"
#ifdef LUMORA_HAS_IMPORT
#include "import/Import.h"
#endif

#include <algorithm>
#include <cairo.h>
#include <cstdio>
#include <memory>
#include <numbers>
#include <string>

using namespace lumora;

namespace
{

// The surface's own pixels, as Cairo sees them: 32 bits each, blue in the lowest byte, rows `pitch` pixels apart.
class Canvas
{
public:
    explicit Canvas(std::shared_ptr<Surface> surface) : surface_(std::move(surface))
    {
        const PixelView pixels = surface_->Lock();
        picture_ =
            cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(pixels.pixels), CAIRO_FORMAT_RGB24,
                                                pixels.width, pixels.height, static_cast<int>(pixels.pitch * 4));
        context_ = cairo_create(picture_);
    }
    ~Canvas()
    {
        cairo_destroy(context_);
        cairo_surface_destroy(picture_);
        surface_->Unlock(); // before the control takes the picture on
    }
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    cairo_t* Context() { return context_; }

private:
    std::shared_ptr<Surface> surface_;
    cairo_surface_t* picture_ = nullptr;
    cairo_t* context_ = nullptr;
};

// In pixels of the window, whatever the sampling factor.
void DrawCaption(const std::shared_ptr<Surface>& surface, double factor)
{
    Canvas canvas{surface};
    cairo_t* const cairo = canvas.Context();
    cairo_scale(cairo, factor, factor);
    cairo_set_source_rgb(cairo, 1, 0.55, 0.1);
    cairo_set_line_width(cairo, 3);
    cairo_arc(cairo, 320, 200, 130, 0, 2 * std::numbers::pi);
    cairo_stroke(cairo);
    cairo_move_to(cairo, 20, 460);
    cairo_set_font_size(cairo, 26);
    cairo_show_text(cairo, "Drawn by the host, averaged with the scene");
}

std::shared_ptr<Frame> Scene([[maybe_unused]] int argc, [[maybe_unused]] char** argv)
{
#ifdef LUMORA_HAS_IMPORT
    if (argc > 1)
        return ImportModel(argv[1]).root;
#endif
    const auto scene = Frame::Make();
    const auto square = MeshBuilder::Make();
    const Vector corners[] = {{-1, -1, 0}, {-0.5F, 1, 0}, {1, 0.7F, 0}, {0.7F, -0.6F, 0}};
    const std::int32_t face[] = {4, 0, 1, 2, 3, 0};
    square->AddFaces(corners, {}, face);
    scene->AddVisual(square);
    return scene;
}

// Looks at the scene from the front so that it fills the picture.
void LookAtAll(Viewport& viewport, const std::shared_ptr<Frame>& model)
{
    const auto scene = Frame::Make();
    scene->AddChild(model);
    viewport.SetScene(scene);
    const Box box = scene->Bounds(nullptr);
    const Vector centre = box.Centre();
    const float size = std::max({box.maximum.x - box.minimum.x, box.maximum.y - box.minimum.y, 0.1F});
    viewport.SetCameraPosition(centre.x, centre.y, centre.z - 1.4F * size);
    viewport.SetCameraOrientation(0, 0, 1, 0, 1, 0);
    viewport.SetFrontClippingPlane(0.1F * size);
    viewport.SetBackClippingPlane(3 * size);
    viewport.SetFieldOfView(0.055F * size);
}

} // namespace

int main(int argc, char** argv)
try
{
    const auto host = std::make_shared<headless::HeadlessHost>(StandardDrivers());
    const auto form = headless::HostedViewport::Live(host);
    Viewport& viewport = form->Control();
    viewport.SetExposeDDSurface(true);
    if (argc > 2)
        viewport.SetBackgroundTexture(argv[2]);
    LookAtAll(viewport, Scene(argc, argv));
    viewport.DDSurfaceAvailable.Connect([&] { DrawCaption(viewport.DirectDrawSurface(), viewport.AntiAlias()); });
    viewport.SetEnabled(true);
    for (const auto antiAlias : {tdlNone, tdl2X, tdl4X})
    {
        viewport.SetAntiAlias(antiAlias); // the next picture is drawn so
        viewport.RenderScene();
        SavePicture("captioned-" + std::to_string(antiAlias) + ".png", form->Picture());
    }
}
catch (const RuntimeError& failure)
{
    std::fprintf(stderr, "example-surface-host: %s\n", failure.what());
    return 1;
}
