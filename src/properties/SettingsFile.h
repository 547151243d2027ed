// Settings files on the disk: read whole, written whole.
#pragma once

#include <string>

namespace lumora
{

/// Answers whether something lies at `path`. Error 75 when nothing does and nothing can be created there.
bool SettingsFileExists(const std::string& path);

/// The bytes of a plain file, one more than LongestSettingsText at most. Error 53 when there is none, 75 when it cannot
/// be read.
std::string ReadSettingsFile(const std::string& path);

/// Replaces the file by a new one that is on the disk before it takes the name; keeps its permissions. Error 75, after
/// which nothing has changed.
void WriteSettingsFile(const std::string& path, const std::string& text);

} // namespace lumora
