// Scenes in which two drivers must draw the same picture, and how far they may differ.
#pragma once

#include "platform/drivers/Driver.h"
#include "platform/drivers/TestCanvas.h"

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace lumora::test
{

/// How far a picture may be from the one that it should be. A pixel's difference is its worst channel's, in steps of
/// 1/255.
struct Tolerance
{
    int step = 2;               ///< rounding and single precision
    double partBeyond = 0.002;  ///< of the pixels that may differ by more than `step`
    int fault = 24;             ///< another surface was seen at this pixel
    double partFaulty = 0.0005; ///< of the pixels that may differ by more than `fault`
};

struct ScenePass
{
    PassState state; ///< without lights
    std::vector<LightState> lights;
    std::vector<DrawItem> items;
};

struct DriverScene
{
    std::string name;
    std::function<std::vector<ScenePass>()> passes;
    Tolerance tolerance;

    friend std::ostream& operator<<(std::ostream& out, const DriverScene& self) { return out << self.name; }
};

inline constexpr int SceneWidth = 320;
inline constexpr int SceneHeight = 240;
inline constexpr std::uint32_t SceneBackground = 0x203040;

const std::vector<DriverScene>& DriverScenes();

/// Draws all passes of a scene, as a control does: clear once, finish once.
Canvas DrawScene(Driver& driver, const DriverScene& scene);

} // namespace lumora::test
