// Viewports: clearing and drawing.
#include "base/Faults.h"
#include "platform/scenegraph/RMViewport.h"
#include "platform/scenegraph/drawing/DrawList.h"
#include "platform/scenegraph/frames/Checks.h"
#include "platform/scenegraph/frames/Rotation.h"
#include "platform/scenegraph/mesh/MeshBuilder.h"

#include <algorithm>

namespace lumora
{

namespace
{

constexpr const char* Source = "RMViewport";

// The light of a scene that has none: together 1 on a face seen head-on, never black from any side.
constexpr float SoftAmbient = 0.25F;
constexpr float CameraLight = 0.75F;

void CollectLights(DrawList& scene, Double3 viewDirection, std::vector<LightState>& lights)
{
    for (Frame* frame : scene.FramesWithLights())
        if (lumora::IsFinite(frame->WorldTransform()))
            for (const auto& light : frame->Lights())
                lights.push_back(light->In(frame->WorldTransform()));
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

std::uint32_t Lower(std::uint32_t a, std::uint32_t b, std::uint32_t mask)
{
    return std::min(a & mask, b & mask);
}

// Moves clip space so that its sides meet the outer edges of the viewport's pixels: coordinates count pixel centres,
// and the view's left edge runs through the centres of the first column, half of which it would cut off where pixels
// are sampled more than once. Every point keeps its device coordinates.
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

    void Draw(const DrawItem& item) { driver_.Draw(item); }

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

// Fill and light, which the device and the mesh bound together.
void RMViewport::TakeQuality(DrawItem& item, std::uint32_t own) const
{
    const std::uint32_t most = device_->GetQuality();
    const std::uint32_t fill = Lower(most, own, quality::FillMask);
    item.fill = fill >= quality::FillSolid       ? FillStyle::Solid
                : fill >= quality::FillWireframe ? FillStyle::Wireframe
                                                 : FillStyle::Points;
    item.gouraud = Lower(most, own, quality::ShadeMask) > 0;
    item.lit = Lower(most, own, quality::LightMask) >= quality::LightOn;
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
    DrawList& scene = DrawList::Of(*root);
    std::vector<LightState> lights; // taken away while in use: what is called on the way might draw, too
    std::swap(lights, lights_);
    CollectLights(scene, pass.viewDirection, lights);
    pass.lights = lights;
    pass.fog = FogOf(root->Scene());
    const std::vector<std::uint32_t>& seen = scene.FindSeen(*frame, *worldToCamera * pass.cameraToClip);

    Pass drawing{device_->TheDriver(), pass};
    std::uint64_t triangles = 0;
    DrawItem item;
    item.isInView = true;
    for (const std::uint32_t place : seen)
    {
        const DrawList::Seen visual = scene[place];
        if (item.mesh != visual.mesh) // counting references costs
            item.mesh = visual.mesh;
        item.world = visual.world;
        TakeQuality(item, visual.quality);
        drawing.Draw(item);
        triangles += visual.triangleCount;
    }
    drawing.End();
    device_->CountTriangles(triangles);
    lights.clear();
    std::swap(lights, lights_);
}

} // namespace lumora
