// The options, and the sentences for what is no option.
#include "lumora-render/CommandLine.h"

#include "base/RuntimeError.h"
#include "hosts/headless/SessionScript.h"
#include "lumora-render/Output.h"
#include "properties/Enumerations.h"
#include "properties/Spelling.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace lumora::render
{

namespace
{

// Options as they were written, before they are understood.
struct Written
{
    std::string size;
    std::string view;
    std::string projection;
    std::string camera;
    std::string device;
    std::vector<std::string> settings;
    std::vector<std::string> picks;
    std::string navControls;
};

constexpr std::array Views{
    EnumerationValue{"front", tdlFrontView}, EnumerationValue{"rear", tdlRearView},
    EnumerationValue{"top", tdlTopView},     EnumerationValue{"bottom", tdlBottomView},
    EnumerationValue{"right", tdlRightView}, EnumerationValue{"left", tdlLeftView},
};
constexpr std::array Projections{
    EnumerationValue{"perspective", D3DRMPROJECT_PERSPECTIVE},
    EnumerationValue{"orthographic", D3DRMPROJECT_ORTHOGRAPHIC},
};
constexpr std::array Devices{
    EnumerationValue{"hal", tdlDirect3DHALDevice},
    EnumerationValue{"rgb", tdlDirect3DRGBDevice},
    EnumerationValue{"ramp", tdlDirect3DRampDevice},
    EnumerationValue{"ref", tdlDirect3DRefDevice},
};

constexpr const char* Footer = R"(
--play replays what a person does at the control, an action a line (# starts a comment):
%LANGUAGE%The host of a session applies the velocities that keys and fly mode set. Pictures of shot lines without a name are
numbered from --output (out-0.png, out-1.png, or a %d in OUT); named ones lie beside it. docs/sessions.md tells more.
--events prints a line of JSON for each event the control raises; --pick one on what lies at a place of the last picture.

Without MODEL a built-in scene is drawn. Several models stand side by side, scaled to the same size. A single model with
--nav-controls or --play is scaled to 10 units: movements of the mouse are scene units.
Without --camera the model is framed: a three-quarter view, or the axis view of --view. With --camera the camera
stands where it is told, relative to the untouched coordinates of the models (y up, z forward, left-handed).
--set reaches every writable property of the control and wins over framing, for example --set FieldOfView=0.3,
--set FillMode=D3DRMFILL_WIREFRAME or --set BackColor=0.
A settings file is a JSON object such as {"FillMode": "D3DRMFILL_WIREFRAME", "FieldOfView": 0.3}. What it says wins over
framing; every option wins over it. --save-settings keeps what the file and the options chose and is no default, not what
framing worked out; entries of an existing file that are no properties stay in it.
A %d or %03d in OUT is the number of the frame, from 0: every frame is written; otherwise the last.
Exit status: 0 done, 1 failed (a sentence on standard error says why), 2 the command line was not understood.)";

std::optional<std::int32_t> Choose(const char* option, const std::string& text, std::span<const EnumerationValue> table)
{
    if (text.empty())
        return std::nullopt;
    std::vector<std::string_view> names;
    for (const EnumerationValue& entry : table)
        names.push_back(entry.name);
    const std::size_t nearest = NearestSpelling(text, names);
    if (!EqualIgnoringCase(names[nearest], text))
        throw UsageError{std::string{option} + " does not know \"" + text + "\", did you mean \"" +
                         std::string{names[nearest]} + "\"?"};
    return table[nearest].value;
}

template<typename Number>
bool ReadNumber(std::string_view text, Number& number)
{
    const char* const end = text.data() + text.size();
    const auto [stop, problem] = std::from_chars(text.data(), end, number);
    return problem == std::errc{} && stop == end;
}

void ParseSize(const std::string& text, Request& request)
{
    if (text.empty())
        return;
    const std::size_t cross = text.find_first_of("xX");
    const auto inRange = [](int side) { return side >= 1 && side <= Request::MaximumSide; };
    if (cross == std::string::npos || !ReadNumber(std::string_view{text}.substr(0, cross), request.width) ||
        !ReadNumber(std::string_view{text}.substr(cross + 1), request.height) || !inRange(request.width) ||
        !inRange(request.height))
        throw UsageError{"--size needs a width and a height of 1 to 16384 pixels such as 1280x720, not \"" + text +
                         "\"."};
}

// As many finite numbers as there is room for, separated by commas.
bool ReadNumbers(std::string_view text, std::span<float> numbers)
{
    std::size_t count = 0;
    bool readable = true;
    for (bool more = true; more && readable; ++count)
    {
        const std::size_t comma = text.find(',');
        more = comma != std::string_view::npos;
        readable = count < numbers.size() && ReadNumber(text.substr(0, comma), numbers[count]) &&
                   std::isfinite(numbers[count]);
        text = more ? text.substr(comma + 1) : std::string_view{};
    }
    return readable && count == numbers.size();
}

PicturePoint ParsePick(const std::string& text)
{
    std::array<float, 2> numbers{};
    if (!ReadNumbers(text, numbers) || std::abs(numbers[0]) > Request::MaximumSide ||
        std::abs(numbers[1]) > Request::MaximumSide)
        throw UsageError{"--pick needs a place in the picture such as 640,360, not \"" + text + "\"."};
    return {numbers[0], numbers[1]};
}

CameraPlacement ParseCamera(const std::string& text)
{
    std::array<float, 9> numbers{};
    if (!ReadNumbers(text, numbers))
        throw UsageError{"--camera needs nine numbers separated by commas (position, direction and up), not \"" + text +
                         "\"."};
    const auto vectorAt = [&](std::size_t at) { return Vector{numbers[at], numbers[at + 1], numbers[at + 2]}; };
    return {vectorAt(0), vectorAt(3), vectorAt(6)};
}

Setting ParseSetting(const std::string& text)
{
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0)
        throw UsageError{"--set needs Name=value, not \"" + text + "\"."};
    const std::string name = text.substr(0, equals);
    const PropertyRow* const row = FindProperty(name);
    if (row == nullptr)
        throw UsageError{"There is no property \"" + name + "\", did you mean \"" +
                         std::string{NearestProperty(name).name} + "\"?"};
    if (row->write == nullptr)
        throw UsageError{"The property " + name + " is read-only."};
    try
    {
        return {row, ParsePropertyValue(*row, std::string_view{text}.substr(equals + 1))};
    }
    catch (const RuntimeError& failure)
    {
        std::string sentence = failure.Description();
        if (sentence.find(name) == std::string::npos)
            sentence = "The property " + name + " does not take " + text.substr(equals + 1) + ": " + sentence;
        throw UsageError{sentence};
    }
}

// Each is a property that --set could set too.
void ParseNavControls(const std::string& text, Request& request)
{
    static constexpr std::array NavControls{EnumerationValue{"primary", 0}, EnumerationValue{"glide", 1},
                                            EnumerationValue{"advance", 2}};
    static constexpr std::array Properties{"NavControlPrimary", "NavControlGlide", "NavControlAdvance"};
    for (std::size_t start = 0; start < text.size();)
    {
        const std::size_t end = std::min(text.find(',', start), text.size());
        if (const auto chosen = Choose("--nav-controls", text.substr(start, end - start), NavControls))
            request.settings.push_back({FindProperty(Properties[static_cast<std::size_t>(*chosen)]), true});
        start = end + 1;
    }
}

std::string HelpFooter()
{
    constexpr std::string_view Place = "%LANGUAGE%";
    std::string text{Footer};
    return text.replace(text.find(Place), Place.size(), headless::SessionLanguage());
}

void DeclareOptions(CLI::App& app, Request& request, Written& written)
{
    app.add_option("MODEL", request.models, "Model files: OBJ, STL, PLY, glTF, 3DS and others");
    app.add_option("-o,--output", request.output, "The picture to write, a PNG file")->type_name("OUT.png");
    app.add_option("--size", written.size, "Size of the picture in pixels (1280x720)")->type_name("WxH");
    app.add_option("--view", written.view, "front, rear, top, bottom, right or left")->type_name("VIEW");
    app.add_option("--projection", written.projection, "perspective or orthographic")->type_name("PROJECTION");
    app.add_option("--camera", written.camera, "Position, direction and up of the camera")
        ->type_name("px,py,pz,dx,dy,dz,ux,uy,uz");
    app.add_option("--device", written.device, "hal, rgb, ramp or ref (hal, or rgb without such hardware)")
        ->type_name("DEVICE");
    app.add_option("--antialias", request.antiAlias,
                   "Samples each way per pixel: 1, 2 or 4; others than 1 imply --expose")
        ->type_name("N");
    app.add_option("--cool-mode", request.coolMode, "1: flat with edges over it; other: edges under a flat picture")
        ->type_name("N");
    app.add_flag("--expose", request.expose, "Draw into a surface that hosts can reach");
    app.add_option("--background", request.background,
                   "A picture behind the scene, from the top left; implies --expose")
        ->type_name("FILE");
    app.add_flag("--stretch", request.stretch, "Stretch the background over the whole picture");
    app.add_flag("--accumulate", request.accumulate, "Draw each frame over the one before; implies --expose");
    app.add_option("--prerendered", request.prerendered, "Show a picture in place of the scene; implies --expose")
        ->type_name("FILE");
    app.add_option("--set", written.settings, "Give a property of the control a value; may be repeated")
        ->type_name("Name=value")
        ->allow_extra_args(false);
    app.add_option("--nav-controls", written.navControls,
                   "The on-screen controls to show: primary, glide, advance or several with commas")
        ->type_name("LIST");
    app.add_option("--settings", request.settingsFile, "Read properties of the control from a settings file")
        ->type_name("FILE");
    app.add_option("--save-settings", request.saveSettingsFile, "Write a settings file after the last picture")
        ->type_name("FILE");
    app.add_option("--frames", request.frames, "Number of frames to draw (1)")->type_name("N");
    app.add_flag("--turntable", request.turntable, "The camera circles the model once over the frames");
    app.add_option("--play", request.play, "Replay a session file: what a person does at the control")
        ->type_name("FILE");
    app.add_flag("--events", request.events, "Print the control's events to standard output, a line of JSON each");
    app.add_option("--pick", written.picks, "Print what is seen at a place of the last picture; may be repeated")
        ->type_name("X,Y")
        ->allow_extra_args(false);
    app.add_flag("--stats", request.stats, "Print a line of JSON about the run to standard output");
    app.set_version_flag("--version", std::string{"lumora-render "} + LUMORA_VERSION, "Print the version and exit");
    app.footer(HelpFooter());
}

void CheckOutput(const Request& request)
{
    if (request.output.empty() && request.picks.empty() && !request.events)
        throw UsageError{"--output is required, unless --pick or --events ask for lines of text."};
    const std::string complaint = request.output.empty() ? "" : ComplaintAboutOutputName(request.output);
    if (!complaint.empty())
        throw UsageError{complaint};
}

void Understand(const Written& written, Request& request)
{
    ParseSize(written.size, request);
    request.sizeIsGiven = !written.size.empty();
    request.view = Choose("--view", written.view, Views);
    request.projection = Choose("--projection", written.projection, Projections);
    request.device = Choose("--device", written.device, Devices);
    if (!written.camera.empty())
        request.camera = ParseCamera(written.camera);
    ParseNavControls(written.navControls, request);
    for (const std::string& text : written.settings)
        request.settings.push_back(ParseSetting(text));
    const std::int32_t antiAlias = request.antiAlias.value_or(tdlNone);
    if (antiAlias != tdlNone && antiAlias != tdl2X && antiAlias != tdl4X)
        throw UsageError{"--antialias is 1, 2 or 4, not " + std::to_string(antiAlias) + "."};
    if (request.stretch && request.background.empty())
        throw UsageError{"--stretch needs a --background to stretch."};
    request.expose = request.expose || antiAlias != tdlNone || request.accumulate || !request.background.empty() ||
                     !request.prerendered.empty();
    if (request.frames < 1 || request.frames > Request::MaximumFrames)
        throw UsageError{"--frames is a number from 1 to 100000, not " + std::to_string(request.frames) + "."};
    if (request.camera && request.view)
        throw UsageError{"--camera and --view exclude each other."};
    for (const std::string& text : written.picks)
        request.picks.push_back(ParsePick(text));
    if (!request.play.empty() && (request.turntable || request.frames != 1 || request.stats))
        throw UsageError{"--play draws what the session says: --frames, --turntable and --stats do not go with it."};
    CheckOutput(request);
}

// Messages of the option library, some of which go on for several lines.
std::string FirstLine(const std::string& text)
{
    std::string line = text.substr(0, text.find('\n'));
    if (!line.empty() && line.back() != '.' && line.back() != '?')
        line += '.';
    return line;
}

} // namespace

bool Request::ShowsNavControls() const
{
    return Sets("NavControlPrimary") || Sets("NavControlGlide") || Sets("NavControlAdvance");
}

bool Request::Sets(std::string_view property) const
{
    return std::ranges::any_of(settings, [&](const Setting& setting) { return setting.row->name == property; });
}

std::variant<Request, Information> ParseCommandLine(int argc, const char* const* argv)
{
    Request request;
    Written written;
    CLI::App app{"Draws models with the viewport control and writes what a person would see.", "lumora-render"};
    DeclareOptions(app, request, written);
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::CallForHelp&)
    {
        return Information{app.help() + "\n"};
    }
    catch (const CLI::CallForVersion& version)
    {
        return Information{std::string{version.what()} + "\n"};
    }
    catch (const CLI::ParseError& failure)
    {
        throw UsageError{FirstLine(failure.what())};
    }
    Understand(written, request);
    return request;
}

} // namespace lumora::render
