// A registry in one text file: where libraries say which classes they have, and where programs look things up.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>

namespace lumora
{

/// Keys are paths such as "CLSID\\{...}\\InprocServer"; each has values by name, the empty name being its default. Keys
/// and names are compared without regard to the case of A to Z. All texts are UTF-8.
class Registry
{
public:
    /// The longest value that GetKeyValue answers, its terminator included.
    static constexpr std::size_t MaximumValue = 1024;

    /// The largest file that is read.
    static constexpr std::uintmax_t MaximumFile = 16U << 20;

    /// $XDG_DATA_HOME/lumora/registry, else ~/.local/share/lumora/registry. PathFileAccess when neither is known.
    static std::filesystem::path DefaultPath();

    /// The registry in `file`; empty where there is no such file. PathFileAccess when it cannot be read; InvalidCall,
    /// with the line, when it is not a whole registry.
    static Registry Read(const std::filesystem::path& file);

    /// As ReplaceFile.
    void Write(const std::filesystem::path& file) const;

    /// The value, or nothing.
    const std::string* Find(std::string_view key, std::string_view name) const;
    void Set(std::string_view key, std::string_view name, std::string_view value);

    /// Removes the key and all below it.
    void RemoveKey(std::string_view key);
    bool IsEmpty() const { return keys_.empty(); }

private:
    struct NameLess
    {
        using is_transparent = void;
        bool operator()(std::string_view left, std::string_view right) const;
    };
    using Values = std::map<std::string, std::string, NameLess>;

    std::map<std::string, Values, NameLess> keys_;
};

/// Puts `content` in the place of the file in one step, and creates its folder at need. PathFileAccess when that cannot
/// be done; the file is then as it was.
void ReplaceFile(const std::filesystem::path& file, std::string_view content);

/// Looks a value up. False, and an empty `value`, when the key or the value is missing, the file is missing or damaged,
/// or the value is longer than Registry::MaximumValue.
bool GetKeyValue(const std::filesystem::path& file, std::string_view key, std::string_view name, std::string& value);

} // namespace lumora
