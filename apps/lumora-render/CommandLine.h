// What a person asks for on the command line.
#pragma once

#include "platform/scenegraph/frames/Frame.h"
#include "properties/PropertyTable.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

namespace lumora::render
{

struct CameraPlacement
{
    Vector position; ///< scene units
    Vector direction{0, 0, 1};
    Vector up{0, 1, 0};
};

/// A property and the value it shall have.
struct Setting
{
    const PropertyRow* row;
    Variant value;
};

/// A place in the picture, pixels from its top-left.
struct PicturePoint
{
    float x;
    float y;
};

struct Request
{
    static constexpr int MaximumSide = 16384;
    static constexpr int MaximumFrames = 100000;

    std::vector<std::string> models; ///< none: the built-in scene
    std::string output;              ///< may be empty where the run answers with lines of text
    int width = 1280;                ///< pixels
    int height = 720;
    bool sizeIsGiven = false;
    std::optional<std::int32_t> view;       ///< a tdlOrientation
    std::optional<std::int32_t> projection; ///< a D3DRMPROJECTIONTYPE
    std::optional<CameraPlacement> camera;
    std::optional<std::int32_t> device;    ///< a tdlDirect3DDevice
    std::optional<std::int32_t> antiAlias; ///< a tdlAntiAlias
    std::optional<std::int32_t> coolMode;
    bool expose = false;
    bool accumulate = false;
    std::string background;        ///< a picture file behind the scene; may be empty
    bool stretch = false;          ///< the background, over the whole picture
    std::string prerendered;       ///< a picture file in place of the scene; may be empty
    std::vector<Setting> settings; ///< in the order given
    std::string settingsFile;      ///< to read before everything else; may be empty
    std::string saveSettingsFile;  ///< to write after the last picture; may be empty
    int frames = 1;
    bool turntable = false;
    std::string play;                ///< a session file; may be empty
    bool events = false;             ///< print what the control raises
    std::vector<PicturePoint> picks; ///< to print what lies there in the last picture
    bool stats = false;

    /// The property was given a value by --set.
    bool Sets(std::string_view property) const;

    /// Any of the on-screen controls was asked for.
    bool ShowsNavControls() const;

    /// Somebody moves about in the scene, by hand or by a session.
    bool IsForWalking() const { return ShowsNavControls() || !play.empty(); }
};

/// A text to print to standard output instead of drawing: help or version.
struct Information
{
    std::string text;
};

/// The command line cannot be understood; what() is one sentence.
class UsageError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Errors: UsageError.
std::variant<Request, Information> ParseCommandLine(int argc, const char* const* argv);

} // namespace lumora::render
