// The camera's operations: set, read, move, turn, zoom, and the step that follows every change.
#include "camera/CameraMath.h"
#include "camera/CameraUndo.h"
#include "viewport/Names.h"
#include "viewport/Viewport.h"

namespace lumora
{

namespace
{

// Checked before the first component moves, so that a bad one leaves the camera where it is.
void RequireFinite(Vector vector, const char* what)
{
    if (!IsFinite(vector))
        throw RuntimeError{error::RMBadValue, Source, std::string{what} + " must be finite numbers"};
}

} // namespace

void Viewport::SetCameraPosition(float PositionX, float PositionY, float PositionZ)
{
    RequireRunning();
    const Trap trap{Source};
    trap([&] { Required(drawing_.CameraFrame).SetPosition(drawing_.SceneFrame, PositionX, PositionY, PositionZ); });
    trap([&] { UpdateCameraState(false); });
}

void Viewport::GetCameraPosition(float& PositionX, float& PositionY, float& PositionZ)
{
    const Vector position = GetCameraPosition();
    PositionX = position.x;
    PositionY = position.y;
    PositionZ = position.z;
}

Vector Viewport::GetCameraPosition()
{
    RequireRunning();
    return camera_.Position;
}

void Viewport::SetCameraOrientation(float DirX, float DirY, float DirZ, float UpX, float UpY, float UpZ)
{
    RequireRunning();
    const Trap trap{Source};
    trap(
        [&] {
            Required(drawing_.CameraFrame).SetOrientation(drawing_.SceneFrame, {DirX, DirY, DirZ}, {UpX, UpY, UpZ});
        });
    trap([&] { UpdateCameraState(false); });
}

void Viewport::GetCameraOrientation(float& DirX, float& DirY, float& DirZ, float& UpX, float& UpY, float& UpZ)
{
    const Orientation orientation = GetCameraOrientation();
    DirX = orientation.direction.x;
    DirY = orientation.direction.y;
    DirZ = orientation.direction.z;
    UpX = orientation.up.x;
    UpY = orientation.up.y;
    UpZ = orientation.up.z;
}

Orientation Viewport::GetCameraOrientation()
{
    RequireRunning();
    return {camera_.Direction, camera_.Up};
}

void Viewport::SetCameraVelocity(float VelocityX, float VelocityY, float VelocityZ, tdlNavigationMethod MovementMethod)
{
    RequireRunning();
    camera_.Velocity = {VelocityX, VelocityY, VelocityZ};
    camera_.VelocityMethod = MovementMethod;
}

void Viewport::GetCameraVelocity(float& VelocityX, float& VelocityY, float& VelocityZ,
                                 tdlNavigationMethod& MovementMethod)
{
    RequireRunning();
    VelocityX = camera_.Velocity.x;
    VelocityY = camera_.Velocity.y;
    VelocityZ = camera_.Velocity.z;
    MovementMethod = camera_.VelocityMethod;
}

void Viewport::SetCameraRotationalVelocity(float RotationalVelocityX, float RotationalVelocityY,
                                           float RotationalVelocityZ, float RotationOriginX, float RotationOriginY,
                                           float RotationOriginZ, tdlNavigationMethod RotationMethod)
{
    RequireRunning();
    camera_.RotationalVelocity = {RotationalVelocityX, RotationalVelocityY, RotationalVelocityZ};
    camera_.RotationOrigin = {RotationOriginX, RotationOriginY, RotationOriginZ};
    camera_.RotationMethod = RotationMethod;
}

void Viewport::GetCameraRotationalVelocity(float& RotationalVelocityX, float& RotationalVelocityY,
                                           float& RotationalVelocityZ, float& RotationOriginX, float& RotationOriginY,
                                           float& RotationOriginZ, tdlNavigationMethod& RotationMethod)
{
    RequireRunning();
    RotationalVelocityX = camera_.RotationalVelocity.x;
    RotationalVelocityY = camera_.RotationalVelocity.y;
    RotationalVelocityZ = camera_.RotationalVelocity.z;
    RotationOriginX = camera_.RotationOrigin.x;
    RotationOriginY = camera_.RotationOrigin.y;
    RotationOriginZ = camera_.RotationOrigin.z;
    RotationMethod = camera_.RotationMethod;
}

void Viewport::SetCameraZoomVelocity(float ZoomVelocity)
{
    RequireRunning();
    camera_.ZoomVelocity = ZoomVelocity;
}

void Viewport::GetCameraZoomVelocity(float& ZoomVelocity)
{
    RequireRunning();
    ZoomVelocity = camera_.ZoomVelocity;
}

void Viewport::AddCameraMovement(float& DistanceX, float& DistanceY, float& DistanceZ,
                                 tdlNavigationMethod MovementMethod)
{
    RequireRunning();
    RequireFinite({DistanceX, DistanceY, DistanceZ}, "Distances of a camera movement");
    if (MovementMethod != tdlGlide)
        MoveCameraAdvance(DistanceX, DistanceY, DistanceZ);
    else
        MoveCameraGlide(DistanceX, DistanceY, DistanceZ);
}

Vector Viewport::AddCameraMovement(Vector distance, tdlNavigationMethod MovementMethod)
{
    AddCameraMovement(distance.x, distance.y, distance.z, MovementMethod);
    return distance;
}

void Viewport::AddCameraRotation(float RotationX, float RotationY, float RotationZ, float RotationOriginX,
                                 float RotationOriginY, float RotationOriginZ, tdlNavigationMethod RotationMethod)
{
    RequireRunning();
    const Vector rotation{RotationX, RotationY, RotationZ};
    const Vector origin{RotationOriginX, RotationOriginY, RotationOriginZ};
    RequireFinite(rotation, "Angles of a camera rotation");
    RequireFinite(origin, "The origin of a camera rotation");
    if (RotationMethod != tdlGlide)
        RotateCameraAdvance(rotation, origin);
    else
        RotateCameraGlide(rotation, origin);
}

void Viewport::AddCameraZoom(float Zoom)
{
    RequireRunning();
    const Trap trap{Source};
    float field = 0;
    trap([&] { field = ZoomedField(properties_.FieldOfView, Zoom, properties_.ProjectionType); });
    trap([&] { SetFieldOfView(field); });
}

void Viewport::InitializeCameraPositionAndOrientation(tdlOrientation Orientation)
{
    RequireRunning();
    const Trap trap{Source};
    const auto [position, orientation] = PlacementOf(Orientation, properties_.ProjectionType);
    trap([&, at = position] { Required(drawing_.CameraFrame).SetPosition(drawing_.SceneFrame, at.x, at.y, at.z); });
    trap([&] { UpdateCameraState(true); });
    trap([&, to = orientation]
         { Required(drawing_.CameraFrame).SetOrientation(drawing_.SceneFrame, to.direction, to.up); });
    trap([&] { UpdateCameraState(true); });
    camera_.ViewOrientation = Orientation;
}

void Viewport::LookAt(const std::shared_ptr<Frame>& TargetFrame, D3DRMFRAMECONSTRAINT Constrain)
{
    RequireRunning();
    const Trap trap{Source};
    trap(
        [&] {
            Required(drawing_.CameraFrame)
                .LookAt(TargetFrame, drawing_.SceneFrame, static_cast<FrameConstraint>(Constrain));
        });
    trap([&] { UpdateCameraState(true); });
}

void Viewport::UpdateCameraState(bool Raise)
{
    const Trap trap{Source};
    trap([&] { camera_.Position = Required(drawing_.CameraFrame).GetPosition(drawing_.SceneFrame); });
    trap(
        [&]
        {
            const Orientation orientation = drawing_.CameraFrame->GetOrientation(drawing_.SceneFrame);
            camera_.Direction = orientation.direction;
            camera_.Up = orientation.up;
        });
    trap([&] { ApplyPositionConstraints(); });
    trap([&] { PlaceNavControls(); });
    if (!Raise)
        return;
    trap(
        [&]
        {
            CameraMoved.Raise(camera_.Position.x, camera_.Position.y, camera_.Position.z, camera_.Direction.x,
                              camera_.Direction.y, camera_.Direction.z, camera_.Up.x, camera_.Up.y, camera_.Up.z);
        });
}

// One component of a move, shortened by what stands in its way.
void Viewport::TranslateAlong(int axis, float& distance)
{
    if (distance == 0)
        return;
    const Trap trap{Source};
    if (properties_.CollisionDetection)
        trap([&] { ShortenByCollision(axis, distance); });
    const Vector move{axis == 0 ? distance : 0, axis == 1 ? distance : 0, axis == 2 ? distance : 0};
    trap([&] { Required(drawing_.CameraFrame).AddTranslation(CombineType::Before, move.x, move.y, move.z); });
}

void Viewport::MoveCameraAdvance(float& DistanceX, float& DistanceY, float& DistanceZ)
{
    const Trap trap{Source};
    CameraUndo undo{drawing_.CameraFrame};
    TranslateAlong(0, DistanceX);
    TranslateAlong(1, DistanceY);
    TranslateAlong(2, DistanceZ);
    undo.Dismiss();
    trap([&] { UpdateCameraState(true); });
}

void Viewport::MoveCameraGlide(float& DistanceX, float& DistanceY, float& DistanceZ)
{
    const Trap trap{Source};
    Orientation saved;
    Vector start;
    trap([&] { saved = Required(drawing_.CameraFrame).GetOrientation(drawing_.SceneFrame); });
    CameraUndo undo{drawing_.CameraFrame};
    trap(
        [&]
        {
            const Orientation level = Levelled(saved);
            drawing_.CameraFrame->SetOrientation(drawing_.SceneFrame, level.direction, level.up);
        });
    trap([&] { start = drawing_.CameraFrame->GetPosition(drawing_.SceneFrame); });
    TranslateAlong(0, DistanceX);
    TranslateAlong(1, DistanceY);
    TranslateAlong(2, DistanceZ);
    trap([&] { drawing_.CameraFrame->SetOrientation(drawing_.SceneFrame, saved.direction, saved.up); });
    if (properties_.CollisionDetection)
        UndoGlideIntoObstacle(start);
    undo.Dismiss();
    trap([&] { UpdateCameraState(true); });
}

// Levelled, the camera had room; as it really looks it may have none.
void Viewport::UndoGlideIntoObstacle(Vector start)
{
    const Trap trap{Source};
    std::shared_ptr<Frame> frame;
    std::shared_ptr<MeshBuilder> mesh;
    if (!IsTooNear(start, frame, mesh))
        return;
    trap([&] { Required(drawing_.CameraFrame).SetPosition(drawing_.SceneFrame, start.x, start.y, start.z); });
    trap([&] { Collision.Raise(frame, mesh); });
}

void Viewport::RotateCameraAdvance(Vector rotation, Vector origin)
{
    const Trap trap{Source};
    Orientation savedOrientation;
    Vector saved;
    trap([&] { saved = Required(drawing_.CameraFrame).GetPosition(drawing_.SceneFrame); });
    trap([&] { savedOrientation = drawing_.CameraFrame->GetOrientation(drawing_.SceneFrame); });
    CameraUndo undo{drawing_.CameraFrame};
    const auto place = [&](Vector to)
    { trap([&] { drawing_.CameraFrame->SetPosition(drawing_.SceneFrame, to.x, to.y, to.z); }); };
    const auto turn = [&](Vector axis, float angle)
    {
        if (angle != 0)
            trap([&] { drawing_.CameraFrame->AddRotation(CombineType::Before, axis, angle); });
    };
    place(origin);
    turn({1, 0, 0}, rotation.x);
    turn({0, 1, 0}, rotation.y);
    turn({0, 0, 1}, rotation.z);
    place(saved);
    if (properties_.CollisionDetection && ProbeRotationCollision(saved))
        trap(
            [&]
            {
                Required(drawing_.CameraFrame)
                    .SetOrientation(drawing_.SceneFrame, savedOrientation.direction, savedOrientation.up);
            });
    undo.Dismiss();
    trap([&] { UpdateCameraState(true); });
}

void Viewport::RotateCameraGlide(Vector rotation, Vector origin)
{
    const Trap trap{Source};
    Orientation saved;
    Vector start;
    trap([&] { saved = Required(drawing_.CameraFrame).GetOrientation(drawing_.SceneFrame); });
    trap([&] { start = drawing_.CameraFrame->GetPosition(drawing_.SceneFrame); });
    CameraUndo undo{drawing_.CameraFrame};
    const auto place = [&](Vector to)
    { trap([&] { Required(drawing_.CameraFrame).SetPosition(drawing_.SceneFrame, to.x, to.y, to.z); }); };
    const auto turn = [&](Vector axis, float angle)
    { trap([&] { drawing_.CameraFrame->AddRotation(CombineType::After, axis, angle); }); };
    place(start - origin);
    if (rotation.x != 0)
    {
        Vector side;
        trap([&] { side = Required(drawing_.RetainedMode).VectorRotate(saved.direction, saved.up, CameraPi / 2); });
        turn(side, rotation.x);
    }
    if (rotation.y != 0)
        turn({0, 1, 0}, rotation.y);
    if (rotation.z != 0)
        turn(saved.direction, rotation.z);
    Vector turned;
    trap([&] { turned = drawing_.CameraFrame->GetPosition(drawing_.SceneFrame); });
    place(turned + origin);
    if (properties_.CollisionDetection && ProbeRotationCollision(start))
    {
        trap([&] { Required(drawing_.CameraFrame).SetOrientation(drawing_.SceneFrame, saved.direction, saved.up); });
        place(start);
    }
    undo.Dismiss();
    trap([&] { UpdateCameraState(true); });
}

} // namespace lumora
