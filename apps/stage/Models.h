// Something to look at: a scene, and what of it a picture should hold.
#pragma once

#include "platform/scenegraph/frames/Frame.h"

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace lumora::stage
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
    Walkable,   ///< as SideBySide, but in a size that navigation speeds suit; a single model stands at the origin
    SideBySide, ///< along x on common ground, scaled to the same size; a single model stays as it is
};

struct LoadOptions
{
    Arrangement arrangement = Arrangement::SideBySide;
    std::chrono::milliseconds timeLimit = std::chrono::minutes{10}; ///< for reading each file

    std::function<void(const std::string& path)> begin; ///< called before each file

    /// Called about every 20 milliseconds with the part of the file that is done, 0..1, or a negative number when that
    /// is unknown. False cancels.
    std::function<bool(double fraction)> progress;

    std::string workerPath; ///< the program that reads model files; empty: the usual one
};

/// Reads models into one scene. Errors: those of ImportModel.
///
/// Touches nothing but what it makes, so that a thread of its own may do it and hand the stage over when it is done.
Stage LoadModels(const std::vector<std::string>& paths, const LoadOptions& options);

} // namespace lumora::stage
