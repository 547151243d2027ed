// Something to look at: a scene, and what of it a picture should hold.
#pragma once

#include "platform/scenegraph/Frame.h"

#include <string>
#include <vector>

namespace lumora::render
{

struct Stage
{
    std::shared_ptr<Frame> scene;      ///< a root frame
    Box focus;                         ///< what a picture is framed on, scene coordinates
    Box extent;                        ///< everything there is
    bool hasLights = false;            ///< the scene brings its own
    Vector background;                 ///< red, green, blue in 0..1
    std::vector<std::string> warnings; ///< sentences on what was left out
};

enum class Arrangement
{
    AsTheyAre,  ///< coordinates untouched
    Walkable,   ///< as SideBySide, but a single model is scaled to a size that on-screen controls suit
    SideBySide, ///< along x on common ground, scaled to the same size; a single model stays as it is
};

/// Reads models into one scene. Errors: those of ImportModel.
Stage LoadModels(const std::vector<std::string>& paths, Arrangement arrangement);

} // namespace lumora::render
