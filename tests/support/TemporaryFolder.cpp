// A folder for the files of one test.
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>

namespace lumora::tests
{

TemporaryFolder::TemporaryFolder()
{
    std::string name = std::filesystem::temp_directory_path() / "lumora-test-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr)
        throw std::filesystem::filesystem_error{"no folder for a test", name, {errno, std::generic_category()}};
    path_ = name;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void TemporaryFolder::Write(const std::string& name, const std::string& text) const
{
    std::ofstream{path_ / name, std::ios::binary} << text;
}

std::string TemporaryFolder::Read(const std::string& name) const
{
    std::ifstream file{path_ / name, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

std::vector<std::string> TemporaryFolder::Names() const
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator{path_})
        names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
}

} // namespace lumora::tests
