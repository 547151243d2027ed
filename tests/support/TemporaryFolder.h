// A folder for the files of one test.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace lumora::tests
{

/// A folder of its own that goes with the object.
class TemporaryFolder
{
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string operator/(const std::string& name) const { return (path_ / name).string(); }
    void Write(const std::string& name, const std::string& text) const;
    std::string Read(const std::string& name) const;

    /// Names of all that lies in it, sorted.
    std::vector<std::string> Names() const;

private:
    std::filesystem::path path_;
};

} // namespace lumora::tests
