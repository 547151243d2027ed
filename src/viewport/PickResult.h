// What a pick found, and which of several hits it takes.
#pragma once

#include "platform/container/Screen.h"
#include "platform/scenegraph/frames/Frame.h"
#include "platform/scenegraph/mesh/MeshBuilder.h"
#include "platform/scenegraph/picking/PickedArray.h"

#include <memory>

namespace lumora
{

struct PickResult
{
    std::shared_ptr<Frame> PickedFrame; ///< the frame that shows the mesh
    std::shared_ptr<MeshBuilder> PickedMeshbuilder;
    std::int32_t PickedFaceID = 0;
    Vector PickedWorld;
};

/// Which objects count.
struct PickFilter
{
    bool Wireframe = false;   ///< meshes that are not drawn solid too
    bool ZeroAppData = false; ///< objects whose application data is 0 or a multiple of 100 too
};

struct PickChoice
{
    bool accepted = false;
    Vector position; ///< of the last hit that counted and had a face, accepted or not; (0, 0, 0) without one
};

/// Takes the first hit that counts, in the order of `hits`. What counts is written to `picked` as it is met; when
/// nothing was accepted, frame and mesh are nothing at the end. A hit with a negative face index is no hit: a message
/// box says so.
PickChoice ChooseHit(const PickedArray& hits, const PickFilter& filter, PickResult& picked, Screen& screen);

} // namespace lumora
