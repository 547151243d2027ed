// Viewports: clearing and drawing.
#include "platform/automation/Faults.h"
#include "platform/scenegraph/Checks.h"
#include "platform/scenegraph/FrameTraversal.h"
#include "platform/scenegraph/MeshBuilder.h"
#include "platform/scenegraph/RMViewport.h"
#include "platform/scenegraph/Rotation.h"

#include <algorithm>

namespace lumora
{

namespace
{

constexpr const char* Source = "RMViewport";

// The light of a scene that has none: together 1 on a face seen head-on, never black from any side.
constexpr float SoftAmbient = 0.25F;
constexpr float CameraLight = 0.75F;

void CollectLights(Frame& root, Double3 viewDirection, std::vector<LightState>& lights)
{
    const auto collect = [&](Frame& frame)
    {
        if (frame.Lights().empty() || !lumora::IsFinite(frame.WorldTransform()))
            return;
        for (const auto& light : frame.Lights())
            lights.push_back(light->In(frame.WorldTransform()));
    };
    VisitFrames(root, collect);
    if (!lights.empty())
        return;
    LightState ambient;
    ambient.kind = LightKind::Ambient;
    ambient.color = {SoftAmbient, SoftAmbient, SoftAmbient};
    LightState atCamera;
    atCamera.kind = LightKind::Directional;
    atCamera.color = {CameraLight, CameraLight, CameraLight};
    atCamera.direction = viewDirection;
    lights.push_back(ambient);
    lights.push_back(atCamera);
}

FogState FogOf(const SceneSettings& settings)
{
    FogState fog;
    if (!settings.fogEnabled)
        return fog;
    fog.mode = settings.fogMode;
    fog.color = settings.fogColor;
    fog.start = settings.fogStart;
    fog.end = settings.fogEnd;
    fog.density = settings.fogDensity;
    return fog;
}

Transparency TransparencyOf(std::uint32_t renderMode)
{
    if ((renderMode & rendermode::BlendedTransparency) == 0)
        return Transparency::Stippled;
    return (renderMode & rendermode::SortedTransparency) != 0 ? Transparency::Sorted : Transparency::Blended;
}

// Whether all corners of the box lie beyond one and the same plane of the view.
bool IsOutside(const Box& box, const Matrix4& toClip)
{
    unsigned outsideAll = 0x3F;
    for (int corner = 0; corner < 8 && outsideAll != 0; ++corner)
    {
        const Double3 p{box.Corner(corner)};
        const Double4 clip = Transform({p.x, p.y, p.z, 1}, toClip);
        outsideAll &= (clip.x < -clip.w ? 1U : 0U) | (clip.x > clip.w ? 2U : 0U) | (clip.y < -clip.w ? 4U : 0U) |
                      (clip.y > clip.w ? 8U : 0U) | (clip.z < 0 ? 16U : 0U) | (clip.z > clip.w ? 32U : 0U);
    }
    return outsideAll != 0;
}

std::uint32_t Lower(std::uint32_t a, std::uint32_t b, std::uint32_t mask)
{
    return std::min(a & mask, b & mask);
}

// Moves clip space so that its sides meet the outer edges of the viewport's pixels: coordinates count pixel centres, and the
// view's left edge runs through the centres of the first column, half of which it would cut off where pixels are sampled
// more than once. Every point keeps its device coordinates.
void FitClipSpaceToPixels(PassState& pass, const PixelRect& rect)
{
    const double centreX = rect.left + rect.Width() / 2.0 - 0.5;
    const double centreY = rect.top + rect.Height() / 2.0 - 0.5;
    const double shiftX = (pass.centreX - centreX) / pass.halfWidth;
    const double shiftY = (centreY - pass.centreY) / pass.halfHeight;
    for (auto& row : pass.cameraToClip.m)
    {
        row[0] += row[3] * shiftX;
        row[1] += row[3] * shiftY;
    }
    pass.centreX = centreX;
    pass.centreY = centreY;
}

// A driver's pass ends however its drawing goes.
class Pass
{
public:
    Pass(Driver& driver, const PassState& state) : driver_(driver) { driver_.Begin(state); }
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;

    ~Pass()
    {
        if (!ended_)
            EndQuietly();
    }

    void Draw(const std::vector<DrawItem>& items)
    {
        for (const DrawItem& item : items)
            driver_.Draw(item);
    }

    void End()
    {
        ended_ = true;
        driver_.End();
    }

private:
    void EndQuietly() noexcept
    {
        try
        {
            driver_.End();
        }
        catch (...) // the failure that brought us here is the one to report
        {
        }
    }

    Driver& driver_;
    bool ended_ = false;
};

} // namespace

void RMViewport::Clear(std::uint32_t flags)
{
    faults::Point("RMViewport.Clear");
    const ClearParts parts{(flags & clearflags::Target) != 0, (flags & clearflags::Depth) != 0};
    const Vector background = camera_->Scene().backgroundColor;
    const Color color = CreateColorRGBA(background.x, background.y, background.z, 0);
    device_->TheDriver().Clear(parts, rect_, color);
}

PassState RMViewport::MakePass(const Matrix4& worldToCamera) const
{
    const Matrix4& camera = camera_->WorldTransform();
    const std::uint32_t mode = device_->GetRenderMode();
    const ScreenMap map = DeviceMap();
    PassState pass;
    pass.worldToCamera = worldToCamera;
    pass.cameraToClip = CameraToClip();
    pass.eye = camera.Row(3);
    pass.viewDirection = UnitOf(camera.Row(2)) * LookSign();
    pass.orthographic = IsOrthographic();
    pass.centreX = map.centreX;
    pass.centreY = map.centreY;
    pass.halfWidth = map.halfWidth;
    pass.halfHeight = map.halfHeight;
    pass.scissor = rect_;
    FitClipSpaceToPixels(pass, rect_);
    pass.cull = device_->GetCullMode();
    pass.filter = static_cast<TextureFilter>(device_->GetTextureQuality());
    pass.transparency = TransparencyOf(mode);
    pass.viewDependentSpecular = (mode & rendermode::ViewDependentSpecular) != 0;
    return pass;
}

DrawItem RMViewport::ItemFor(MeshBuilder& mesh, const Matrix4& world) const
{
    const std::uint32_t most = device_->GetQuality();
    const std::uint32_t own = mesh.Quality();
    const std::uint32_t fill = Lower(most, own, quality::FillMask);
    DrawItem item;
    item.mesh = mesh.Compiled();
    item.world = world;
    item.fill = fill >= quality::FillSolid       ? FillStyle::Solid
                : fill >= quality::FillWireframe ? FillStyle::Wireframe
                                                 : FillStyle::Points;
    item.gouraud = Lower(most, own, quality::ShadeMask) > 0;
    item.lit = Lower(most, own, quality::LightMask) >= quality::LightOn;
    return item;
}

void RMViewport::CollectVisible(Frame& top, const Matrix4& worldToClip, std::vector<DrawItem>& items) const
{
    const auto collect = [&](Frame& frame)
    {
        if (frame.Visuals().empty())
            return;
        const Matrix4& world = frame.WorldTransform();
        if (!lumora::IsFinite(world))
            return;
        const Matrix4 toClip = world * worldToClip;
        for (const auto& visual : frame.Visuals())
        {
            auto* mesh = dynamic_cast<MeshBuilder*>(visual.get());
            if (mesh != nullptr && !mesh->Bounds().IsEmpty() && !IsOutside(mesh->Bounds(), toClip))
                items.push_back(ItemFor(*mesh, world));
        }
    };
    VisitFrames(top, collect);
}

void RMViewport::Render(const std::shared_ptr<Frame>& frame)
{
    faults::Point("RMViewport.Render");
    RequireObject(Source, frame, "The frame");
    const auto worldToCamera = Inverse(camera_->WorldTransform());
    if (!HasDepth() || !worldToCamera)
        return;

    PassState pass = MakePass(*worldToCamera);
    const auto root = frame->Root();
    Lists lists; // taken away while they are in use: what is called on the way might draw, too
    std::swap(lists, lists_);
    CollectLights(*root, pass.viewDirection, lists.lights);
    pass.lights = lists.lights;
    pass.fog = FogOf(root->Scene());
    CollectVisible(*frame, *worldToCamera * pass.cameraToClip, lists.items);

    Pass drawing{device_->TheDriver(), pass};
    drawing.Draw(lists.items);
    drawing.End();
    for (const DrawItem& item : lists.items)
        device_->CountTriangles(item.mesh->TriangleCount());
    lists.lights.clear();
    lists.items.clear();
    std::swap(lists, lists_);
}

} // namespace lumora
