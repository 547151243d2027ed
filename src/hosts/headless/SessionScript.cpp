// Sessions from text: words, a table of verbs, and sentences for what is none.
#include "hosts/headless/SessionScript.h"

#include "base/RuntimeError.h"
#include "hosts/headless/HeadlessHost.h"
#include "properties/Spelling.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace lumora::headless
{

namespace
{

using Words = std::vector<std::string_view>;

/// Why a line was not understood; the caller knows where it stands.
struct Complaint
{
    std::string sentence;
};

struct Verb
{
    std::string_view name;
    std::string_view usage;
    std::string_view help;
    SessionAction (*parse)(const Words& words); ///< the verb included
};

struct Choice
{
    std::string_view name;
    std::int32_t value;
};

std::string Quoted(std::string_view text)
{
    constexpr std::size_t Longest = 60;
    std::string quoted{"\""};
    quoted += text.substr(0, Longest);
    return quoted + (text.size() > Longest ? "...\"" : "\"");
}

[[noreturn]] void Complain(const std::string& sentence)
{
    throw Complaint{sentence};
}

// The words alone do not fit the verb: the usage says what does.
[[noreturn]] void ComplainAboutCount()
{
    throw Complaint{};
}

void RequireCount(const Words& words, std::size_t least, std::size_t most)
{
    if (words.size() < least + 1 || words.size() > most + 1)
        ComplainAboutCount();
}

template<typename Number>
Number NumberIn(std::string_view word, Number least, Number most)
{
    Number number{};
    const auto [stop, problem] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (problem == std::errc{} && stop == word.data() + word.size() && number >= least && number <= most)
        return number;
    std::ostringstream sentence;
    sentence << Quoted(word) << " is no number from " << least << " to " << most;
    Complain(sentence.str());
}

int PixelsIn(std::string_view word)
{
    constexpr int Farthest = 32767;
    return NumberIn(word, -Farthest, Farthest);
}

std::uint32_t MillisecondsIn(std::string_view word)
{
    return NumberIn(word, std::uint32_t{1}, SessionScript::LongestTime);
}

float ComponentIn(std::string_view word)
{
    constexpr float Farthest = 1e9F;
    return NumberIn(word, -Farthest, Farthest);
}

std::int32_t ChoiceIn(std::string_view word, const std::vector<Choice>& choices)
{
    std::vector<std::string_view> names;
    for (const Choice& choice : choices)
        names.push_back(choice.name);
    const std::size_t nearest = NearestSpelling(word, names);
    if (EqualIgnoringCase(names[nearest], word))
        return choices[nearest].value;
    Complain(Quoted(word) + " is not known here, did you mean " + Quoted(names[nearest]) + "?");
}

// The values of an enumeration by what their names have between these ends.
std::vector<Choice> ChoicesOf(std::string_view enumeration, std::string_view start, std::string_view end)
{
    std::vector<Choice> choices;
    for (const EnumerationValue& value : FindEnumeration(enumeration)->values)
        choices.push_back(
            {value.name.substr(start.size(), value.name.size() - start.size() - end.size()), value.value});
    return choices;
}

std::int16_t ButtonIn(std::string_view word)
{
    static const std::vector<Choice> Buttons{
        {"left", mousebutton::Left}, {"right", mousebutton::Right}, {"middle", mousebutton::Middle}};
    return static_cast<std::int16_t>(ChoiceIn(word, Buttons));
}

std::int16_t ModifierIn(std::string_view word)
{
    static const std::vector<Choice> Modifiers{{"shift", key::Shift}, {"ctrl", key::Control}, {"alt", key::Alt}};
    return static_cast<std::int16_t>(ChoiceIn(word, Modifiers));
}

std::int16_t KeyIn(std::string_view word)
{
    static const std::vector<Choice> Keys = ChoicesOf("tdlNavKey", "tdlNavKey", "");
    const std::int32_t code = ChoiceIn(word, Keys);
    if (code == tdlNavKeyDisable)
        Complain("No key is called " + Quoted(word));
    return static_cast<std::int16_t>(code);
}

SessionAction ParseSize(const Words& words)
{
    RequireCount(words, 2, 2);
    const auto side = [](std::string_view word) { return NumberIn(word, 1, SessionScript::MaximumSide); };
    return ResizeAction{side(words[1]), side(words[2])};
}

SessionAction ParseMove(const Words& words)
{
    RequireCount(words, 2, 3);
    return MoveByAction{PixelsIn(words[1]), PixelsIn(words[2]), words.size() > 3 ? MillisecondsIn(words[3]) : 0};
}

SessionAction ParseMoveTo(const Words& words)
{
    RequireCount(words, 2, 2);
    return MoveToAction{{PixelsIn(words[1]), PixelsIn(words[2])}};
}

SessionAction ParseButton(const Words& words)
{
    RequireCount(words, 1, 3);
    ButtonAction action{ButtonIn(words[1]), words[0] == "press", std::nullopt};
    if (words.size() == 3)
        ComplainAboutCount();
    if (words.size() == 4)
        action.at = ClientPoint{PixelsIn(words[2]), PixelsIn(words[3])};
    return action;
}

SessionAction ParseClick(const Words& words)
{
    RequireCount(words, 0, 0);
    return ClickAction{words[0] == "doubleclick"};
}

SessionAction ParseModifier(const Words& words)
{
    RequireCount(words, 1, 1);
    return KeyAction{ModifierIn(words[1]), words[0] == "hold" ? KeyMotion::Down : KeyMotion::Up};
}

SessionAction ParseKey(const Words& words)
{
    RequireCount(words, 2, 2);
    static const std::vector<Choice> Motions{{"down", static_cast<int>(KeyMotion::Down)},
                                             {"up", static_cast<int>(KeyMotion::Up)},
                                             {"press", static_cast<int>(KeyMotion::Press)}};
    const auto motion = static_cast<KeyMotion>(ChoiceIn(words[1], Motions));
    return KeyAction{KeyIn(words[2]), motion};
}

SessionAction ParseAdvance(const Words& words)
{
    RequireCount(words, 1, 1);
    return AdvanceAction{MillisecondsIn(words[1])};
}

SessionAction ParseAnimate(const Words& words)
{
    RequireCount(words, 1, 1);
    return AnimateAction{MillisecondsIn(words[1])};
}

SessionAction ParseFrame(const Words& words)
{
    RequireCount(words, 0, 0);
    return FrameAction{};
}

// Sessions come from strangers too: a name cannot lead out of the folder that the player writes to.
SessionAction ParseShot(const Words& words)
{
    RequireCount(words, 0, 1);
    if (words.size() == 1)
        return ShotAction{};
    const std::filesystem::path name{words[1]};
    if (name.has_parent_path() || name.stem().empty() || !EqualIgnoringCase(name.extension().string(), ".png"))
        Complain(Quoted(words[1]) + " is not the name of a PNG file without folders, such as orbit.png");
    return ShotAction{name.string()};
}

SessionAction ParseSet(const Words& words)
{
    RequireCount(words, 1, 1);
    const std::size_t equals = words[1].find('=');
    if (equals == std::string_view::npos || equals == 0)
        ComplainAboutCount();
    const std::string_view name = words[1].substr(0, equals);
    const PropertyRow* const row = FindProperty(name);
    if (row == nullptr)
        Complain("There is no property " + Quoted(name) + ", did you mean " + Quoted(NearestProperty(name).name) + "?");
    if (row->write == nullptr)
        Complain("The property " + std::string{name} + " is read-only");
    try
    {
        return SetAction{row, ParsePropertyValue(*row, words[1].substr(equals + 1))};
    }
    catch (const RuntimeError& failure)
    {
        Complain(failure.Description());
    }
}

SessionAction ParseCamera(const Words& words)
{
    RequireCount(words, 9, 9);
    const auto vectorAt = [&](std::size_t at) {
        return Vector{ComponentIn(words[at]), ComponentIn(words[at + 1]), ComponentIn(words[at + 2])};
    };
    return CameraAction{vectorAt(1), vectorAt(4), vectorAt(7)};
}

SessionAction ParseView(const Words& words)
{
    RequireCount(words, 1, 1);
    static const std::vector<Choice> Views = ChoicesOf("tdlOrientation", "tdl", "View");
    return ViewAction{static_cast<tdlOrientation>(ChoiceIn(words[1], Views))};
}

SessionAction ParseObstacle(const Words& words)
{
    RequireCount(words, 2, 2);
    static const std::vector<Choice> Kinds{{"box", static_cast<std::int32_t>(Obstacle::Box)},
                                           {"faces", static_cast<std::int32_t>(Obstacle::Faces)},
                                           {"none", static_cast<std::int32_t>(Obstacle::None)}};
    return ObstacleAction{std::string{words[1]}, static_cast<Obstacle>(ChoiceIn(words[2], Kinds))};
}

constexpr Verb Verbs[] = {
    {"size", "size WIDTH HEIGHT", "the window's size in pixels; in the first line, from the start", ParseSize},
    {"moveto", "moveto X Y", "the mouse to a place in the window, pixels from its top-left", ParseMoveTo},
    {"move", "move DX DY [MS]", "the mouse by so many pixels, at once or in that time", ParseMove},
    {"press", "press left|right|middle [X Y]", "a mouse button, here or there", ParseButton},
    {"release", "release left|right|middle [X Y]", "the button again", ParseButton},
    {"click", "click", "the Click event alone", ParseClick},
    {"doubleclick", "doubleclick", "the DblClick event alone", ParseClick},
    {"hold", "hold shift|ctrl|alt", "a modifier key down", ParseModifier},
    {"drop", "drop shift|ctrl|alt", "the modifier key up", ParseModifier},
    {"key", "key down|up|press KEY", "a key: A, 7, Left, PageUp, Numpad5, ...; it repeats while it is down", ParseKey},
    {"advance", "advance MS", "time passes; nothing is drawn", ParseAdvance},
    {"animate", "animate MS", "time passes; a picture every 40 milliseconds", ParseAnimate},
    {"frame", "frame", "draw a picture", ParseFrame},
    {"shot", "shot [NAME.png]", "draw a picture and write it to a file", ParseShot},
    {"set", "set Name=value", "give a property of the control a value", ParseSet},
    {"camera", "camera PX PY PZ DX DY DZ UX UY UZ", "place the camera: position, direction, up", ParseCamera},
    {"view", "view front|rear|top|bottom|...", "look at the scene's origin from there, or from right or left",
     ParseView},
    {"obstacle", "obstacle MESH box|faces|none", "what of the meshes of that name stops the camera", ParseObstacle},
};

const Verb& VerbNamed(std::string_view word)
{
    std::vector<std::string_view> names;
    for (const Verb& verb : Verbs)
        names.push_back(verb.name);
    const std::size_t nearest = NearestSpelling(word, names);
    if (names[nearest] != word)
        Complain("There is no action " + Quoted(word) + ", did you mean " + Quoted(names[nearest]) + "?");
    return Verbs[nearest];
}

Words WordsOf(std::string_view line)
{
    constexpr std::string_view Blanks = " \t\r";
    line = line.substr(0, line.find('#'));
    Words words;
    for (std::size_t start = line.find_first_not_of(Blanks); start != std::string_view::npos;
         start = line.find_first_not_of(Blanks))
    {
        line.remove_prefix(start);
        const std::size_t end = std::min(line.find_first_of(Blanks), line.size());
        words.push_back(line.substr(0, end));
        line.remove_prefix(end);
    }
    return words;
}

SessionAction ActionOf(const Words& words)
{
    const Verb& verb = VerbNamed(words[0]);
    try
    {
        return verb.parse(words);
    }
    catch (const Complaint& complaint)
    {
        const std::string usage{verb.usage};
        Complain(complaint.sentence.empty() ? "This line should read: " + usage
                                            : complaint.sentence + " (" + usage + ")");
    }
}

/// What a session may cost, line by line.
class Budget
{
public:
    void Spend(const SessionAction& action)
    {
        std::uint32_t milliseconds = 0;
        std::int64_t pictures = 0;
        if (const auto* const move = std::get_if<MoveByAction>(&action))
            milliseconds = move->milliseconds;
        if (const auto* const advance = std::get_if<AdvanceAction>(&action))
            milliseconds = advance->milliseconds;
        if (const auto* const animate = std::get_if<AnimateAction>(&action))
            milliseconds = animate->milliseconds;
        if (std::holds_alternative<FrameAction>(action) || std::holds_alternative<ShotAction>(action))
            pictures = 1;
        else if (!std::holds_alternative<AdvanceAction>(action))
            pictures = milliseconds / SessionScript::StepTime;
        milliseconds_ += milliseconds;
        pictures_ += pictures;
        if (milliseconds_ > SessionScript::LongestTime)
            Complain("A session lasts an hour at most (3600000 milliseconds): shorten it before this line");
        if (pictures_ > SessionScript::MaximumPictures)
            Complain("A session draws 100000 pictures at most: shorten it before this line");
    }

private:
    std::int64_t milliseconds_ = 0;
    std::int64_t pictures_ = 0;
};

void RequireReadable(std::string_view line)
{
    const auto isReadable = [](char c) { return static_cast<unsigned char>(c) >= ' ' || c == '\t' || c == '\r'; };
    if (!std::ranges::all_of(line, isReadable))
        Complain("This line holds bytes that are no text: is this a session file?");
}

} // namespace

SessionScript ParseSession(std::string_view text, std::string name)
{
    SessionScript script{std::move(name), {}};
    Budget budget;
    for (int number = 1; !text.empty(); ++number)
    {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        try
        {
            RequireReadable(line);
            const Words words = WordsOf(line);
            if (words.empty())
                continue;
            script.steps.push_back({number, ActionOf(words)});
            budget.Spend(script.steps.back().action);
        }
        catch (const Complaint& complaint)
        {
            throw RuntimeError{error::InvalidCall, "session",
                               script.name + ":" + std::to_string(number) + ": " + complaint.sentence};
        }
    }
    return script;
}

SessionScript ReadSession(const std::string& path)
{
    std::error_code problem;
    const auto status = std::filesystem::status(path, problem);
    if (!std::filesystem::exists(status))
        throw RuntimeError{error::FileNotFound, "session", "There is no file " + path};
    if (!std::filesystem::is_regular_file(status))
        throw RuntimeError{error::PathFileAccess, "session", path + " is not a plain file"};
    std::ifstream file{path, std::ios::binary};
    std::string text(SessionScript::LongestText + 1, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(file.gcount()));
    if (!file.is_open() || file.bad())
        throw RuntimeError{error::PathFileAccess, "session", path + " cannot be read"};
    if (text.size() > SessionScript::LongestText)
        throw RuntimeError{error::InvalidCall, "session", path + " is longer than a session may be (1 MiB)"};
    return ParseSession(text, path);
}

std::optional<ResizeAction> SessionScript::InitialSize() const
{
    if (steps.empty())
        return std::nullopt;
    const auto* const size = std::get_if<ResizeAction>(&steps.front().action);
    return size != nullptr ? std::optional{*size} : std::nullopt;
}

ResizeAction SessionScript::LargestSize() const
{
    ResizeAction largest{0, 0};
    for (const SessionStep& step : steps)
        if (const auto* const size = std::get_if<ResizeAction>(&step.action))
            largest = {std::max(largest.width, size->width), std::max(largest.height, size->height)};
    return largest;
}

int SessionScript::UnnamedShots() const
{
    return static_cast<int>(std::ranges::count_if(steps,
                                                  [](const SessionStep& step)
                                                  {
                                                      const auto* const shot = std::get_if<ShotAction>(&step.action);
                                                      return shot != nullptr && shot->name.empty();
                                                  }));
}

std::string SessionLanguage()
{
    constexpr std::size_t Column = 39;
    std::string lines;
    for (const Verb& verb : Verbs)
    {
        std::string line = "  " + std::string{verb.usage};
        line.resize(std::max(line.size() + 1, Column), ' ');
        lines += line.append(verb.help) + "\n";
    }
    return lines;
}

} // namespace lumora::headless
