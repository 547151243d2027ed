// The on-screen navigation controls: a small scene of their own, seen from the camera.
#pragma once

#include "platform/scenegraph/Frame.h"
#include "platform/scenegraph/MeshBuilder.h"

#include <memory>

namespace lumora
{

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
