// What a host does with the velocities that keys and drags store in a control.
#pragma once

namespace lumora
{

class Viewport;

/// True while a movement, turn or zoom velocity is not 0. Errors: the halt error.
bool IsCameraMoving(Viewport& control);

/// Moves, turns and zooms the camera by the stored velocities for so many seconds, each by the method and about the
/// point it was stored with; what stands still raises no CameraMoved. Hosts call it in UpdatePositions.
/// Errors: those of AddCameraMovement, AddCameraRotation and AddCameraZoom.
void ApplyCameraVelocities(Viewport& control, float seconds);

} // namespace lumora
