// What a person does at a control, written down: a small text file with an action a line.
#pragma once

#include "base/Vector.h"
#include "platform/scenegraph/mesh/MeshBuilder.h"
#include "properties/Enumerations.h"
#include "properties/PropertyTable.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace lumora::headless
{

// What a line may say. docs/sessions.md describes the language.

struct ClientPoint
{
    int x; ///< pixels from the client area's top-left; may lie outside
    int y;
};

struct ResizeAction
{
    int width; ///< of the client area, pixels
    int height;
};

/// Without a time it is one movement; with one it takes that long, in equal steps.
struct MoveByAction
{
    int x; ///< pixels
    int y;
    std::uint32_t milliseconds;
};

struct MoveToAction
{
    ClientPoint to;
};

struct ButtonAction
{
    std::int16_t button;
    bool down;
    std::optional<ClientPoint> at; ///< nothing: wherever the cursor is
};

struct ClickAction
{
    bool twice;
};

enum class KeyMotion
{
    Down,
    Up,
    Press, ///< down and up again
};

struct KeyAction
{
    std::int16_t code;
    KeyMotion motion;
};

struct AdvanceAction
{
    std::uint32_t milliseconds;
};

/// Time passes, and the host draws as it goes.
struct AnimateAction
{
    std::uint32_t milliseconds;
};

struct FrameAction
{
};

struct ShotAction
{
    std::string name; ///< of a PNG file, without folders; empty: the player numbers it
};

struct SetAction
{
    const PropertyRow* row;
    Variant value;
};

struct CameraAction
{
    Vector position;
    Vector direction;
    Vector up;
};

struct ViewAction
{
    tdlOrientation view;
};

/// What of the scene's meshes of a name stands in the camera's way.
struct ObstacleAction
{
    std::string mesh;
    Obstacle obstacle;
};

using SessionAction =
    std::variant<ResizeAction, MoveByAction, MoveToAction, ButtonAction, ClickAction, KeyAction, AdvanceAction,
                 AnimateAction, FrameAction, ShotAction, SetAction, CameraAction, ViewAction, ObstacleAction>;

struct SessionStep
{
    int line;
    SessionAction action;
};

struct SessionScript
{
    static constexpr std::size_t LongestText = 1 << 20;
    static constexpr int MaximumPictures = 100000;        ///< drawn by frame, shot, animate and timed moves
    static constexpr std::uint32_t LongestTime = 3600000; ///< milliseconds, of all lines together
    static constexpr int MaximumSide = 8192;              ///< of the client area, pixels
    static constexpr std::uint32_t StepTime = 40;         ///< milliseconds between pictures and between movements

    std::string name; ///< for messages
    std::vector<SessionStep> steps;

    /// The window's size from the start: what a size line before everything else says.
    std::optional<ResizeAction> InitialSize() const;

    /// The sides that hold every size the session asks for; 0 without any.
    ResizeAction LargestSize() const;

    /// How many shot lines name no file.
    int UnnamedShots() const;
};

/// Reads a session; `name` is what messages call it. Errors: number error::InvalidCall with a sentence that starts with
/// NAME:LINE and says what would do.
SessionScript ParseSession(std::string_view text, std::string name);

/// The same for a file. Errors: those of ParseSession, FileNotFound, PathFileAccess for what cannot be read.
SessionScript ReadSession(const std::string& path);

/// One line on each thing that a session can say, for help texts.
std::string SessionLanguage();

} // namespace lumora::headless
