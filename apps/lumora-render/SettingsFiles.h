// Settings files on the command line: which values they give a run, and what a run leaves in them.
#pragma once

#include "lumora-render/CommandLine.h"
#include "platform/container/MemoryPropertyBag.h"
#include "properties/JsonPropertyBag.h"

#include <optional>
#include <string>
#include <vector>

namespace lumora::render
{

/// What a settings file says.
struct StoredSettings
{
    std::vector<Setting> settings; ///< every property it has a usable value for, even if that is the default
    std::vector<std::string> warnings;
};

/// Nothing for an empty path. Errors: those of JsonPropertyBag::Open.
StoredSettings ReadSettings(const std::string& path);

/// The file's values with the options of the command line over them; --set is not among these.
MemoryPropertyBag ChosenSettings(const Request& request, const std::vector<Setting>& stored);

/// The file of --save-settings: looked at before the work, written after it.
class SettingsKeeper
{
public:
    /// Does nothing for an empty path. Errors: those of JsonPropertyBag::OpenOrCreate.
    explicit SettingsKeeper(const std::string& path);

    /// Writes what a control holds after file, options and --set, as far as it is no default; answers warnings. Errors:
    /// those of JsonPropertyBag::Store.
    std::vector<std::string> Keep(const Request& request, const std::vector<Setting>& stored);

private:
    std::optional<JsonPropertyBag> bag_;
};

} // namespace lumora::render
