// The property readers. They work in every state.
#include "base/Numbers.h"
#include "viewport/Viewport.h"

namespace lumora
{

#define LUMORA_READER_Member(name, type)                                                                               \
    type Viewport::name() const                                                                                        \
    {                                                                                                                  \
        return properties_.name;                                                                                       \
    }
#define LUMORA_READER_Custom(name, type)
#define LUMORA_PROPERTY(name, type, initial, reader, writer, saved, help) LUMORA_READER_##reader(name, type)
#include "properties/PropertyTable.def"
#undef LUMORA_PROPERTY
#undef LUMORA_READER_Custom
#undef LUMORA_READER_Member

std::int32_t Viewport::BackColor() const
{
    return container_->Window()->BackColor();
}

tdlBorderStyle Viewport::BorderStyle() const
{
    return static_cast<tdlBorderStyle>(container_->Window()->BorderStyle());
}

std::shared_ptr<Picture> Viewport::MouseIcon() const
{
    return container_->Window()->MouseIcon();
}

std::int32_t Viewport::MousePointer() const
{
    return container_->Window()->MousePointer();
}

std::int32_t Viewport::HighlightPointer() const
{
    return container_->Window()->MousePointer();
}

std::shared_ptr<Frame> Viewport::Scene() const
{
    return drawing_.SceneFrame;
}

std::shared_ptr<Frame> Viewport::SceneOverlay() const
{
    return drawing_.OverlayFrame;
}

std::shared_ptr<lumora::DirectDraw> Viewport::DirectDraw() const
{
    return drawing_.DirectDrawObject;
}

std::shared_ptr<Surface> Viewport::DirectDrawSurface() const
{
    return drawing_.RenderSurface;
}

std::shared_ptr<Surface> Viewport::AntiAliasSurface() const
{
    return drawing_.AntiAliasTarget;
}

std::shared_ptr<Frame> Viewport::Camera() const
{
    return drawing_.CameraFrame;
}

std::int16_t Viewport::hwnd() const
{
    return ToInteger(static_cast<double>(container_->Window()->Handle()));
}

} // namespace lumora
