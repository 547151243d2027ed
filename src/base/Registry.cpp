// The file: a first line that says what it is, "[key]" lines, and lines "name"="value" below them. In keys, names and
// values a backslash, a quotation mark and a line's end are written \\, \" and \n. The last line is "end": a file that
// was cut off is told from a whole one.
#include "base/Registry.h"

#include "base/RuntimeError.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <unistd.h>

namespace lumora
{

namespace
{

constexpr std::string_view Header = "lumora-registry 1";
constexpr std::string_view Footer = "end";

char Lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string Quoted(std::string_view text)
{
    std::string quoted = "\"";
    for (const char c : text)
    {
        if (c == '"' || c == '\\')
            quoted += '\\';
        if (c == '\n')
            quoted += "\\n";
        else
            quoted += c;
    }
    return quoted + '"';
}

// Takes a quoted text off the front of `line`.
std::optional<std::string> TakeQuoted(std::string_view& line)
{
    if (line.empty() || line.front() != '"')
        return std::nullopt;
    std::string text;
    for (std::size_t i = 1; i < line.size(); ++i)
    {
        if (line[i] == '"')
        {
            line.remove_prefix(i + 1);
            return text;
        }
        const bool escaped = line[i] == '\\';
        if (escaped && ++i == line.size())
            return std::nullopt;
        text += escaped && line[i] == 'n' ? '\n' : line[i];
    }
    return std::nullopt;
}

[[noreturn]] void RaiseDamaged(const std::filesystem::path& file, int line)
{
    throw RuntimeError{error::InvalidCall, "Registry",
                       file.string() + " is damaged at line " + std::to_string(line) +
                           "; repair or remove it, it is left as it is"};
}

[[noreturn]] void RaiseAccess(const std::filesystem::path& file, const std::string& what)
{
    throw RuntimeError{error::PathFileAccess, "Registry", file.string() + " " + what};
}

// Reads one line into the registry; `key` is where values go. False when it has no meaning.
bool ReadLine(std::string_view line, Registry& registry, std::optional<std::string>& key)
{
    const bool isKey = line.starts_with('[');
    if (isKey)
        line.remove_prefix(1);
    const auto first = TakeQuoted(line);
    if (!first)
        return false;
    if (isKey)
    {
        key = *first;
        return line == "]";
    }
    if (!key || !line.starts_with('='))
        return false;
    line.remove_prefix(1);
    const auto value = TakeQuoted(line);
    if (!value || !line.empty())
        return false;
    registry.Set(*key, *first, *value);
    return true;
}

} // namespace

bool Registry::NameLess::operator()(std::string_view left, std::string_view right) const
{
    return std::ranges::lexicographical_compare(left, right, {}, Lower, Lower);
}

std::filesystem::path Registry::DefaultPath()
{
    const auto inFolder = [](const char* folder, const char* below)
    { return std::filesystem::path{folder} / below / "lumora" / "registry"; };
    if (const char* data = std::getenv("XDG_DATA_HOME"); data != nullptr && *data == '/')
        return inFolder(data, "");
    if (const char* home = std::getenv("HOME"); home != nullptr && *home == '/')
        return inFolder(home, ".local/share");
    throw RuntimeError{error::PathFileAccess, "Registry",
                       "There is no folder for the registry: set XDG_DATA_HOME or HOME to one"};
}

Registry Registry::Read(const std::filesystem::path& file)
{
    std::error_code problem;
    if (!std::filesystem::exists(file, problem))
        return {};
    const auto size = std::filesystem::file_size(file, problem);
    std::ifstream stream{file, std::ios::binary};
    if (problem || !stream)
        RaiseAccess(file, "cannot be read");
    if (size > MaximumFile)
        RaiseAccess(file, "is too large for a registry");

    Registry registry;
    std::optional<std::string> key;
    std::string line;
    bool ended = false;
    int number = 0;
    while (std::getline(stream, line))
    {
        ++number;
        if (ended)
            RaiseDamaged(file, number);
        if (number == 1 ? line == Header : line.empty() || ReadLine(line, registry, key))
            continue;
        if (number == 1 || line != Footer)
            RaiseDamaged(file, number);
        ended = true;
    }
    if (!ended)
        RaiseDamaged(file, number + 1);
    return registry;
}

void Registry::Write(const std::filesystem::path& file) const
{
    std::string text{Header};
    text += '\n';
    for (const auto& [key, values] : keys_)
    {
        text += "\n[" + Quoted(key) + "]\n";
        for (const auto& [name, value] : values)
            text += Quoted(name) + '=' + Quoted(value) + '\n';
    }
    text += '\n';
    text += Footer;
    text += '\n';
    ReplaceFile(file, text);
}

void ReplaceFile(const std::filesystem::path& file, std::string_view content)
{
    std::error_code problem;
    std::filesystem::create_directories(file.parent_path(), problem);
    const std::filesystem::path fresh = file.string() + "." + std::to_string(::getpid()) + ".new";
    std::ofstream stream{fresh, std::ios::binary | std::ios::trunc};
    stream << content;
    stream.close();
    const bool written = !stream.fail();
    if (written)
        std::filesystem::rename(fresh, file, problem);
    if (written && !problem)
        return;
    std::error_code ignored;
    std::filesystem::remove(fresh, ignored);
    RaiseAccess(file, written ? "cannot be replaced: " + problem.message() : "cannot be written");
}

const std::string* Registry::Find(std::string_view key, std::string_view name) const
{
    const auto values = keys_.find(key);
    if (values == keys_.end())
        return nullptr;
    const auto value = values->second.find(name);
    return value == values->second.end() ? nullptr : &value->second;
}

void Registry::Set(std::string_view key, std::string_view name, std::string_view value)
{
    keys_[std::string{key}][std::string{name}] = value;
}

void Registry::RemoveKey(std::string_view key)
{
    const auto isBelow = [=](std::string_view candidate)
    {
        const bool longEnough =
            candidate.size() == key.size() || (candidate.size() > key.size() && candidate[key.size()] == '\\');
        return longEnough && std::ranges::equal(candidate.substr(0, key.size()), key, {}, Lower, Lower);
    };
    std::erase_if(keys_, [&](const auto& entry) { return isBelow(entry.first); });
}

bool GetKeyValue(const std::filesystem::path& file, std::string_view key, std::string_view name, std::string& value)
{
    value.clear();
    try
    {
        const Registry registry = Registry::Read(file);
        const std::string* found = registry.Find(key, name);
        if (found == nullptr || found->size() >= Registry::MaximumValue)
            return false;
        value = *found;
        return true;
    }
    catch (const RuntimeError&)
    {
        return false;
    }
}

} // namespace lumora
