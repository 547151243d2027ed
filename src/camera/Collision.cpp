// How far the nearest obstacle lies in a direction: a grid of rays through the viewport.
#include "base/Numbers.h"
#include "camera/CameraMath.h"
#include "camera/CameraUndo.h"
#include "viewport/Names.h"
#include "viewport/Viewport.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace lumora
{

namespace
{

constexpr float NothingThere = 100000000.0F;

// Where the camera is turned to look in a direction, and how far it is pushed so that the front plane does not hide
// what is near.
struct ProbeView
{
    Orientation orientation;
    float shift;
};

ProbeView ViewTowards(RetainedMode& vectors, const Orientation& camera, mudtDirection direction, float front)
{
    const auto turned = [&](Vector vector, Vector axis, float angle)
    { return vectors.VectorRotate(vector, axis, angle); };
    const auto [forward, up] = camera;
    constexpr float QuarterTurn = CameraPi / 2;
    constexpr float ThreeQuarterTurn = 3 * CameraPi / 2;
    switch (direction)
    {
    case tdlDirForward:
        return {camera, 0};
    case tdlDirBack:
        return {{turned(forward, up, CameraPi), up}, front};
    case tdlDirLeft:
        return {{turned(forward, up, ThreeQuarterTurn), up}, front};
    case tdlDirRight:
        return {{turned(forward, up, QuarterTurn), up}, -front};
    default:
        break;
    }
    const Vector side = turned(forward, up, QuarterTurn);
    const bool upwards = direction == tdlDirUp;
    const float angle = upwards ? ThreeQuarterTurn : QuarterTurn;
    return {{turned(forward, side, angle), turned(up, side, angle)}, upwards ? -front : front};
}

// How far a distance may be off by the rounding of Singles on the way from one position to another. A camera that was
// stopped at exactly the distance it keeps must not count as too near.
float RoundingBetween(Vector from, Vector to)
{
    constexpr float Roundings = 8;
    float largest = 1;
    for (const float coordinate : {from.x, from.y, from.z, to.x, to.y, to.z})
        largest = std::max(largest, std::abs(coordinate));
    return Roundings * std::numeric_limits<float>::epsilon() * largest;
}

mudtDirection DirectionOf(int axis, bool positive)
{
    static constexpr mudtDirection Directions[3][2] = {
        {tdlDirLeft, tdlDirRight}, {tdlDirDown, tdlDirUp}, {tdlDirBack, tdlDirForward}};
    return Directions[axis][positive ? 1 : 0];
}

} // namespace

void Viewport::ShortenByCollision(int axis, float& distance)
{
    const Trap trap{Source};
    std::shared_ptr<Frame> frame;
    std::shared_ptr<MeshBuilder> mesh;
    float obstacle = 0;
    trap([&]
         { obstacle = ProbeCollision(properties_.CollisionSamples, DirectionOf(axis, distance > 0), frame, mesh); });
    const float room = obstacle - properties_.CollisionDistance;
    if (room >= std::abs(distance))
        return;
    distance = distance > 0 ? room : -room;
    trap([&] { Collision.Raise(frame, mesh); });
}

float Viewport::RayPickScreenPoint(std::int32_t X, std::int32_t Y, Vector look, std::shared_ptr<Frame>& Frame,
                                   std::shared_ptr<MeshBuilder>& MeshBuilder)
{
    const Ray ray = RayThrough(X, Y, drawing_.SceneFrame);
    const auto hits = Required(drawing_.SceneFrame).RayPick(drawing_.SceneFrame, ray, RayPickFlags::BoundingBoxes);
    if (!hits->HasPick(0))
        return NothingThere;
    const PickHit& nearest = hits->GetPick(0);
    MeshBuilder = std::dynamic_pointer_cast<lumora::MeshBuilder>(nearest.visual);
    Frame = nearest.framePath.back();
    // A right-handed camera looks against its direction.
    return nearest.description.position.z * static_cast<float>(std::abs(Dot(Double3{ray.direction}, Double3{look})));
}

float Viewport::ProbeGrid(std::int32_t Samples, std::shared_ptr<Frame>& Frame,
                          std::shared_ptr<MeshBuilder>& MeshBuilder)
{
    const ClientRect client = ClientPixels();
    // Rays go through whole pixels: more of them than there are pixels would only repeat each other.
    const std::int32_t samples = std::min(Samples, std::max(client.Width, client.Height) + 1);
    // A single sample looks through the centre.
    const auto along = [&](std::int32_t start, std::int32_t size, std::int32_t index)
    { return ToLong(start + size * (samples == 1 ? 0.5 : static_cast<double>(index) / (samples - 1))); };
    const Vector look = Required(drawing_.CameraFrame).GetOrientation(drawing_.SceneFrame).direction;
    float nearest = NothingThere;
    for (std::int32_t column = 0; column < samples; ++column)
        for (std::int32_t row = 0; row < samples; ++row)
        {
            std::shared_ptr<lumora::Frame> frame;
            std::shared_ptr<lumora::MeshBuilder> mesh;
            const float distance = RayPickScreenPoint(along(client.Left, client.Width, column),
                                                      along(client.Top, client.Height, row), look, frame, mesh);
            if (distance >= nearest)
                continue;
            nearest = distance;
            Frame = frame;
            MeshBuilder = mesh;
        }
    return nearest;
}

float Viewport::ProbeCollision(std::int32_t Samples, mudtDirection Direction, std::shared_ptr<Frame>& Frame,
                               std::shared_ptr<MeshBuilder>& MeshBuilder)
{
    const Trap trap{Source};
    float nearest = NothingThere;
    if (Direction == tdlDirForward)
    {
        trap([&] { nearest = ProbeGrid(Samples, Frame, MeshBuilder); });
        return nearest;
    }
    Orientation saved;
    trap([&] { saved = Required(drawing_.CameraFrame).GetOrientation(drawing_.SceneFrame); });
    ProbeView view{};
    trap([&]
         { view = ViewTowards(Required(drawing_.RetainedMode), saved, Direction, properties_.FrontClippingPlane); });
    CameraUndo undo{drawing_.CameraFrame};
    const auto orient = [&](const Orientation& to)
    { trap([&] { drawing_.CameraFrame->SetOrientation(drawing_.SceneFrame, to.direction, to.up); }); };
    const auto shift = [&](float along)
    { trap([&] { drawing_.CameraFrame->AddTranslation(CombineType::After, 0, 0, along); }); };
    orient(view.orientation);
    shift(view.shift);
    trap([&] { nearest = ProbeGrid(Samples, Frame, MeshBuilder); });
    shift(-view.shift);
    orient(saved);
    undo.Dismiss();
    return nearest;
}

bool Viewport::IsTooNear(Vector start, std::shared_ptr<Frame>& Frame, std::shared_ptr<MeshBuilder>& MeshBuilder)
{
    const Trap trap{Source};
    float obstacle = 0;
    Vector position;
    trap([&] { obstacle = ProbeCollision(properties_.CollisionSamples, tdlDirForward, Frame, MeshBuilder); });
    trap([&] { position = Required(drawing_.CameraFrame).GetPosition(drawing_.SceneFrame); });
    return obstacle < properties_.CollisionDistance - RoundingBetween(start, position);
}

bool Viewport::ProbeRotationCollision(Vector start)
{
    const Trap trap{Source};
    std::shared_ptr<Frame> frame;
    std::shared_ptr<MeshBuilder> mesh;
    if (!IsTooNear(start, frame, mesh))
        return false;
    trap([&] { Collision.Raise(frame, mesh); });
    return true;
}

} // namespace lumora
