// Names of pictures, and their way to the disk.
#include "lumora-render/Output.h"

#include "base/RuntimeError.h"
#include "platform/pictures/Picture.h"
#include "properties/Spelling.h"

#include <charconv>
#include <filesystem>
#include <optional>
#include <unistd.h>

namespace lumora::render
{

namespace
{

namespace fs = std::filesystem;

constexpr const char* Source = "lumora-render";
constexpr int MaximumDigits = 9;

// The place of the frame's number within a name.
struct NumberPlace
{
    std::size_t start;
    std::size_t length;
    std::size_t digits; // at least so many, filled with zeros
};

// %d, or % 0 digits d. Other percent signs are part of the name.
std::optional<NumberPlace> FindNumber(const std::string& name, std::size_t from = 0)
{
    for (std::size_t start = name.find('%', from); start != std::string::npos; start = name.find('%', start + 1))
    {
        std::size_t end = start + 1;
        std::size_t digits = 0;
        if (end < name.size() && name[end] == '0')
        {
            const char* const last = name.data() + name.size();
            const auto [stop, problem] = std::from_chars(name.data() + end, last, digits);
            end = problem == std::errc{} ? static_cast<std::size_t>(stop - name.data()) : end + 1;
        }
        if (end < name.size() && name[end] == 'd')
            return NumberPlace{start, end + 1 - start, digits};
    }
    return std::nullopt;
}

// A link stays a link: what it points to is replaced.
fs::path Target(const std::string& path)
{
    std::error_code ignored;
    if (fs::is_symlink(path, ignored))
        if (const fs::path target = fs::canonical(path, ignored); !ignored)
            return target;
    return path;
}

// Hidden, in the same folder, and of this process alone.
fs::path PartBeside(const fs::path& target)
{
    std::string name{"."};
    name += target.filename().string();
    name += '.';
    name += std::to_string(::getpid());
    name += ".part.png";
    return target.parent_path() / name;
}

[[noreturn]] void RaiseUnwritable(const std::string& path, const std::string& reason)
{
    throw RuntimeError{error::PathFileAccess, Source, "Cannot write \"" + path + "\": " + reason + "."};
}

} // namespace

std::string ComplaintAboutOutputName(const std::string& name)
{
    if (!EqualIgnoringCase(fs::path{name}.extension().string(), ".png"))
        return "The picture's name must end in .png, not \"" + name + "\".";
    const auto number = FindNumber(name);
    if (number && number->digits > MaximumDigits)
        return "A frame's number has at most 9 digits, unlike the one in \"" + name + "\".";
    if (number && FindNumber(name, number->start + number->length))
        return "The picture's name has more than one place for a frame's number: \"" + name + "\".";
    return {};
}

bool HasFrameNumber(const std::string& name)
{
    return FindNumber(name).has_value();
}

std::string NameOfFrame(const std::string& name, int frame)
{
    const auto place = FindNumber(name);
    if (!place)
        return name;
    std::string number = std::to_string(frame);
    if (number.size() < place->digits)
        number.insert(0, place->digits - number.size(), '0');
    return name.substr(0, place->start) + number + name.substr(place->start + place->length);
}

ShotNames::ShotNames(std::string output, int unnamed) : output_(std::move(output))
{
    if (unnamed > 1 && !output_.empty() && !HasFrameNumber(output_))
        output_.insert(output_.size() - fs::path{output_}.extension().string().size(), "-%d");
}

std::string ShotNames::Next(const std::string& shot)
{
    if (!shot.empty())
        return (fs::path{output_}.parent_path() / shot).string();
    if (output_.empty())
        throw RuntimeError{error::InvalidCall, Source, "This picture has no name, and there is no --output to number."};
    return NameOfFrame(output_, next_++);
}

void CheckOutputPlace(const std::string& path)
{
    const fs::path target = Target(path);
    std::error_code problem;
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path{"."};
    if (!fs::is_directory(folder, problem))
        RaiseUnwritable(path, "the folder \"" + folder.string() + "\" does not exist");
    const fs::file_status status = fs::status(target, problem);
    if (fs::exists(status) && !fs::is_regular_file(status))
        RaiseUnwritable(path, "it is not a plain file");
    if (::access(folder.c_str(), W_OK) != 0)
        RaiseUnwritable(path, "the folder \"" + folder.string() + "\" does not let new files in");
}

void WritePicture(const std::string& path, const PixelView& pixels)
{
    CheckOutputPlace(path);
    const fs::path target = Target(path);
    const fs::path temporary = PartBeside(target);
    std::error_code problem;
    try
    {
        SavePicture(temporary.string(), pixels);
        fs::rename(temporary, target, problem);
    }
    catch (const RuntimeError& failure)
    {
        fs::remove(temporary, problem);
        if (failure.Number() != error::PathFileAccess)
            throw;
        RaiseUnwritable(path, "the picture could not be stored in its folder, which may be full");
    }
    if (!problem)
        return;
    const std::string reason = problem.message();
    fs::remove(temporary, problem);
    RaiseUnwritable(path, reason);
}

} // namespace lumora::render
