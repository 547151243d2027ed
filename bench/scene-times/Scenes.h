// Scenes of many frames with a small box each, side by side in a plane that fills the view.
#pragma once

#include "platform/scenegraph/frames/Frame.h"
#include "platform/scenegraph/mesh/MeshBuilder.h"

#include <memory>
#include <string>
#include <vector>

namespace lumora::bench
{

enum class Shape
{
    Flat,  ///< all frames below the root
    Tree,  ///< ten frames below each frame
    Chain, ///< each frame below the one before
};

struct SceneKind
{
    Shape shape = Shape::Flat;
    int visuals = 1;
    int meshes = 1;   ///< different ones, shared by the frames in no order
    int textures = 0; ///< different ones, on the meshes in no order
    bool isGlass = false;
};

struct BoxScene
{
    std::shared_ptr<Frame> root;
    std::vector<std::shared_ptr<Frame>> frames; ///< one for each visual
};

BoxScene MakeScene(const SceneKind& kind);

} // namespace lumora::bench
