// The on-screen navigation controls: a small scene of their own, seen from the camera.
#pragma once

#include "platform/scenegraph/frames/Frame.h"
#include "platform/scenegraph/mesh/MeshBuilder.h"

#include <memory>

namespace lumora
{

/// What the on-screen controls are told apart by: the application data of their meshes.
namespace navcontrol
{
inline constexpr std::int32_t None = 0;
inline constexpr std::int32_t XArrow = 1;
inline constexpr std::int32_t YArrow = 2;
inline constexpr std::int32_t ZArrow = 3;
inline constexpr std::int32_t HorizontalPlate = 4;
inline constexpr std::int32_t OrthographicPlate = 5;
inline constexpr std::int32_t VerticalTriangle = 6;
inline constexpr std::int32_t GlideStrip = 7;
inline constexpr std::int32_t AdvanceStrip = 8;
inline constexpr std::int32_t Knob = 9;
inline constexpr std::int32_t ZoomStrip = 10; ///< the Advance strip of the other projections
} // namespace navcontrol

struct NavControls
{
    std::shared_ptr<Frame> NavControlsScene; ///< the root that is drawn
    std::shared_ptr<Frame> NavControlFrame; ///< its child, kept in the corner of the picture, that carries the controls

    // Built once and copied for every control that uses them.
    std::shared_ptr<MeshBuilder> NavShaftMesh;
    std::shared_ptr<MeshBuilder> NavTipMesh;
    std::shared_ptr<MeshBuilder> NavKnobMesh;
};

} // namespace lumora
