// The scene of the on-screen navigation controls: arrows, knob, plates and strips, in units of the corner they stand
// in.
#include "base/Numbers.h"
#include "geometry/modPrimitiveCreation.h"
#include "viewport/Names.h"
#include "viewport/Viewport.h"

#include <algorithm>
#include <array>
#include <span>

namespace lumora
{

namespace
{

// How an arrow stands: its shaft along `up`, its middle `up` times half its length from the knob.
struct ArrowRow
{
    std::int32_t id;
    Vector direction;
    Vector up;
    Vector color;
};

constexpr std::array<ArrowRow, 3> Arrows{{
    {navcontrol::XArrow, {0, 0, 1}, {1, 0, 0}, {0.75F, 0.25F, 0.25F}},
    {navcontrol::YArrow, {0, 0, 1}, {0, 1, 0}, {0.25F, 0.75F, 0.25F}},
    {navcontrol::ZArrow, {0, 1, 0}, {0, 0, 1}, {0.25F, 0.25F, 0.75F}},
}};

constexpr float HalfShaft = 0.05F;
constexpr float SolidAlpha = 0.99F;
constexpr Vector Grey{0.75F, 0.75F, 0.75F};
constexpr Vector GreyGlow{0.1875F, 0.1875F, 0.1875F};
constexpr Vector PlateColor{0.75F, 0.725F, 0.675F};
constexpr float PlateAlpha = 0.85F;
constexpr Vector PlateGlow{0.18F, 0.17F, 0.15F};

constexpr float AboveFloor = 0.004F; // keeps plates apart from what stands on the axes
constexpr float StripWidth = 0.04F;
constexpr float BesidePrimary = 0.11F;
constexpr float BesideGlide = 0.05F;

using Corners = std::vector<Vector>;

// Plates of the primary control that are squares between the axes, as seen by views along the positive sides.
const Corners Floor{{0, AboveFloor, 0}, {0, AboveFloor, 0.1F}, {0.1F, AboveFloor, 0.1F}, {0.1F, AboveFloor, 0}};
const Corners SideTriangle{{0, 0, 0}, {0, 0.1F, 0}, {0, 0, 0.1F}};
const Corners FarX{{0.1F, 0, 0}, {0.1F, 0.1F, 0}, {0.1F, 0.1F, 0.1F}, {0.1F, 0, 0.1F}};
const Corners FarZ{{0, 0, 0.1F}, {0, 0.1F, 0.1F}, {0.1F, 0.1F, 0.1F}, {0.1F, 0, 0.1F}};

// Whether the camera of an axis view sees the plates from behind.
bool SeesBacks(tdlOrientation view)
{
    return view == tdlRearView || view == tdlBottomView || view == tdlLeftView;
}

Corners TurnedOver(Corners corners, bool over)
{
    if (over)
        std::ranges::reverse(corners);
    return corners;
}

Corners FloorStrip(float start)
{
    const float end = start + StripWidth;
    return {{start, AboveFloor, 0}, {start, AboveFloor, 0.1F}, {end, AboveFloor, 0.1F}, {end, AboveFloor, 0}};
}

// The strip of the Advance control lies in the plane that its view looks at.
Corners AdvanceStripFor(bool perspective, tdlOrientation view, float start)
{
    const float end = start + StripWidth;
    constexpr float Off = AboveFloor;
    if (perspective || view == tdlTopView)
        return FloorStrip(start);
    switch (view)
    {
    case tdlBottomView:
        return {{end, Off, 0}, {end, Off, 0.1F}, {start, Off, 0.1F}, {start, Off, 0}};
    case tdlRightView:
        return {{Off, 0.1F, start}, {Off, 0.1F, end}, {Off, 0, end}, {Off, 0, start}};
    case tdlLeftView:
        return {{Off, 0, start}, {Off, 0, end}, {Off, 0.1F, end}, {Off, 0.1F, start}};
    case tdlFrontView:
        return {{start, 0, Off}, {start, 0.1F, Off}, {end, 0.1F, Off}, {end, 0, Off}};
    default:
        return {{end, 0, Off}, {end, 0.1F, Off}, {start, 0.1F, Off}, {start, 0, Off}};
    }
}

/// Builds one set of controls under a frame. Each step is one call on the scene graph.
class NavControlBuilder
{
public:
    NavControlBuilder(RetainedMode& root, NavControls& widgets, float size)
        : root_(root), widgets_(widgets), frame_(widgets.NavControlFrame), size_(size)
    {
        trap_([&] { greyMaterial_ = MakeGlow(GreyGlow); });
        trap_([&] { plateMaterial_ = MakeGlow(PlateGlow); });
    }

    void BuildPrimary(D3DRMPROJECTIONTYPE projection, tdlOrientation view)
    {
        const bool perspective = projection == D3DRMPROJECT_PERSPECTIVE;
        MakeSharedMeshes();
        const auto tip = MakeTip();
        const auto shaft = MakeShaft();
        for (const ArrowRow& row : Arrows)
            AddArrow(row, shaft, tip, perspective);
        AddKnob(perspective);
        const bool over = !perspective && SeesBacks(view);
        AddPlate(TurnedOver(Floor, over), perspective ? navcontrol::HorizontalPlate : navcontrol::OrthographicPlate);
        if (perspective)
            AddPlate(SideTriangle, navcontrol::VerticalTriangle);
        else
            AddPlate(TurnedOver(FarX, over), navcontrol::OrthographicPlate);
        if (projection == D3DRMPROJECT_ORTHOGRAPHIC)
            AddPlate(TurnedOver(FarZ, over), navcontrol::OrthographicPlate);
    }

    // One face in plate colour.
    void AddPlate(const Corners& corners, std::int32_t id)
    {
        std::shared_ptr<MeshBuilder> plate;
        trap_([&] { plate = root_.CreateMeshBuilder(); });
        std::shared_ptr<Face> face;
        trap_([&] { face = plate->CreateFace(); });
        for (const Vector corner : corners)
            trap_([&] { face->AddVertex(corner.x, corner.y, corner.z); });
        trap_([&] { plate->SetColor(CreateColorRGBA(PlateColor.x, PlateColor.y, PlateColor.z, PlateAlpha)); });
        trap_([&] { plate->SetMaterial(plateMaterial_); });
        trap_([&] { plate->SetAppData(id); });
        trap_([&] { plate->Scale(size_, size_, size_); });
        trap_([&] { frame_->AddVisual(plate); });
    }

private:
    // Without lights of the host's a part still shows: it glows with a quarter of its colour.
    std::shared_ptr<Material> MakeGlow(Vector color)
    {
        const auto material = root_.CreateMaterial(0);
        material->SetEmissive(color.x, color.y, color.z);
        return material;
    }

    void MakeSharedMeshes()
    {
        if (widgets_.NavShaftMesh)
            return;
        trap_([&] { widgets_.NavShaftMesh = CreateCone(root_, 2, 8, 100); });
        trap_([&] { widgets_.NavTipMesh = CreateCone(root_, 2, 8, 20); });
        trap_([&] { widgets_.NavKnobMesh = CreateSphere(root_, 8, 16); });
    }

    // Tip, shaft and knob are made as far as they can be: an arrow that lacks one of them still serves.
    std::shared_ptr<MeshBuilder> MakeTip()
    {
        std::shared_ptr<MeshBuilder> tip;
        lenient_([&] { tip = root_.CreateMeshBuilder(); });
        lenient_([&] { Required(tip).AddMeshBuilder(widgets_.NavTipMesh); });
        MakeGrey(tip);
        lenient_([&] { Required(tip).Scale(0.018F, 0.015F, 0.018F); });
        lenient_([&] { Required(tip).Translate(0, 0.057F, 0); });
        lenient_([&] { Required(tip).Scale(size_, size_, size_); });
        return tip;
    }

    std::shared_ptr<MeshBuilder> MakeShaft()
    {
        std::shared_ptr<MeshBuilder> shaft;
        lenient_([&] { shaft = root_.CreateMeshBuilder(); });
        lenient_([&] { Required(shaft).AddMeshBuilder(widgets_.NavShaftMesh); });
        lenient_([&] { Required(shaft).Scale(0.0125F, 0.1F, 0.0125F); });
        lenient_([&] { Required(shaft).Scale(size_, size_, size_); });
        return shaft;
    }

    void AddKnob(bool perspective)
    {
        std::shared_ptr<MeshBuilder> knob;
        lenient_([&] { knob = root_.CreateMeshBuilder(); });
        lenient_([&] { Required(knob).AddMeshBuilder(widgets_.NavKnobMesh); });
        MakeGrey(knob);
        lenient_([&] { Required(knob).Scale(0.022F, 0.022F, 0.022F); });
        lenient_([&] { Required(knob).Scale(size_, size_, size_); });
        if (perspective)
            lenient_([&] { Required(knob).SetAppData(navcontrol::Knob); });
        lenient_([&] { frame_->AddVisual(knob); });
    }

    void MakeGrey(const std::shared_ptr<MeshBuilder>& mesh)
    {
        lenient_([&] { Required(mesh).SetColor(CreateColorRGBA(Grey.x, Grey.y, Grey.z, SolidAlpha)); });
        lenient_([&] { Required(mesh).SetMaterial(greyMaterial_); });
    }

    void AddArrow(const ArrowRow& row, const std::shared_ptr<MeshBuilder>& shaft,
                  const std::shared_ptr<MeshBuilder>& tip, bool perspective)
    {
        std::shared_ptr<Frame> arrow;
        trap_([&] { arrow = root_.CreateFrame(frame_); });
        trap_([&] { arrow->SetOrientation(frame_, row.direction, row.up); });
        const Vector place = row.up * (HalfShaft * size_);
        trap_([&] { arrow->SetPosition(frame_, place.x, place.y, place.z); });
        AttachNavControlMesh(arrow, shaft, tip, perspective ? row.id : navcontrol::None, row.color);
    }

    // The one shaft is recoloured and copied for each arrow; the one tip is shared by them all.
    void AttachNavControlMesh(const std::shared_ptr<Frame>& arrow, const std::shared_ptr<MeshBuilder>& shaft,
                              const std::shared_ptr<MeshBuilder>& tip, std::int32_t id, Vector color)
    {
        std::shared_ptr<Material> material;
        trap_([&] { material = MakeGlow(color * 0.25F); });
        trap_([&] { Required(shaft).SetColor(CreateColorRGBA(color.x, color.y, color.z, SolidAlpha)); });
        trap_([&] { Required(shaft).SetMaterial(material); });
        std::shared_ptr<MeshBuilder> copy;
        trap_([&] { copy = root_.CreateMeshBuilder(); });
        trap_([&] { copy->AddMeshBuilder(shaft); });
        trap_([&] { copy->SetAppData(id); });
        trap_([&] { arrow->AddVisual(copy); });
        trap_([&] { arrow->AddVisual(tip); });
    }

    static constexpr Trap trap_{Source};
    static constexpr SkippingTrap lenient_{};

    RetainedMode& root_;
    NavControls& widgets_;
    std::shared_ptr<Frame> frame_;
    float size_;
    std::shared_ptr<Material> greyMaterial_;
    std::shared_ptr<Material> plateMaterial_;
};

} // namespace

// By how much the controls, made for a window of 600 (orthographic: 300) pixels, are scaled to look the same in
// another.
float Viewport::NavControlSize() const
{
    const Trap trap{Source};
    double width = 0;
    double height = 0;
    trap([&] { ClientSizePixels(width, height); });
    const double larger = std::max({1, ToLong(width), ToLong(height)});
    if (properties_.ProjectionType == D3DRMPROJECT_PERSPECTIVE)
        return ToSingle(600 / larger);
    return ToSingle(300 / larger * (properties_.FieldOfView * 2.5));
}

// The frames are made anew on every run, so nothing of an earlier build stays visible.
void Viewport::BuildNavControls()
{
    const Trap trap{Source};
    widgets_.NavControlFrame = nullptr;
    widgets_.NavControlsScene = nullptr;
    trap([&] { widgets_.NavControlsScene = Required(drawing_.RetainedMode).CreateFrame(nullptr); });
    trap([&] { widgets_.NavControlFrame = drawing_.RetainedMode->CreateFrame(widgets_.NavControlsScene); });

    const bool perspective = properties_.ProjectionType == D3DRMPROJECT_PERSPECTIVE;
    const bool hasGlide = properties_.NavControlGlide && perspective;
    NavControlBuilder builder{*drawing_.RetainedMode, widgets_, NavControlSize()};
    if (properties_.NavControlPrimary)
        builder.BuildPrimary(properties_.ProjectionType, camera_.ViewOrientation);
    float start = properties_.NavControlPrimary ? BesidePrimary : 0;
    if (hasGlide)
    {
        builder.AddPlate(FloorStrip(start), navcontrol::GlideStrip);
        start += BesideGlide;
    }
    if (properties_.NavControlAdvance)
        builder.AddPlate(AdvanceStripFor(perspective, camera_.ViewOrientation, start),
                         perspective ? navcontrol::AdvanceStrip : navcontrol::ZoomStrip);
}

} // namespace lumora
