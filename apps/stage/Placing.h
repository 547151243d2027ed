// A stage in a control: light where it brings none, its colour behind it, a camera at a standpoint.
#pragma once

#include "stage/Framing.h"

#include <cstdint>

namespace lumora
{
class Viewport;
}

namespace lumora::stage
{

/// A frame of lights that goes where `parent` goes, made for a camera: forms show, and nothing is black however it
/// turns.
std::shared_ptr<Frame> AddCameraLights(const std::shared_ptr<Frame>& parent);

/// Red, green, blue in 0..1 as BackColor takes them.
std::int32_t ToBackColor(Vector color);

/// `projection` is a D3DRMPROJECTIONTYPE.
bool IsOrthographic(std::int32_t projection);

/// The camera as it is, in scene coordinates.
Standpoint StandpointOf(Viewport& viewport);
void StandAt(Viewport& viewport, const Standpoint& standpoint);

/// What the camera's own direction is while it looks along `direction`, and the other way round: a right-handed camera
/// looks backward.
Vector AsSeen(const Viewport& viewport, Vector direction);

} // namespace lumora::stage
