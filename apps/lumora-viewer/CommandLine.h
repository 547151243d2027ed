// What the viewer is asked for when it is started.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace lumora::viewer
{

struct CommandLine
{
    std::vector<std::string> models;
    std::optional<int> exitStatus; ///< set when everything was said already: help, version, or what is wrong
};

/// Prints help and version to standard output, what it does not understand to standard error.
CommandLine ParseCommandLine(int argc, const char* const* argv);

} // namespace lumora::viewer
