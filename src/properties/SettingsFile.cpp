// A file is written beside its place, forced to the disk and moved over: half of one never lies there.
#include "properties/SettingsFile.h"

#include "base/RuntimeError.h"
#include "properties/SettingsText.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace lumora
{

namespace
{

constexpr const char* Source = "settings";

[[noreturn]] void RaiseAccess(const std::string& path, const char* what, int reason)
{
    throw RuntimeError{error::PathFileAccess, Source, path + " cannot be " + what + ": " + std::strerror(reason)};
}

class Descriptor
{
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() { Close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Number() const { return number_; }
    bool IsOpen() const { return number_ >= 0; }
    bool Close()
    {
        const bool closed = number_ < 0 || ::close(number_) == 0;
        number_ = -1;
        return closed;
    }

private:
    int number_;
};

// A file that goes with the object unless it was moved to its place.
class TemporaryFile
{
public:
    explicit TemporaryFile(std::string name) : name_(std::move(name)) {}
    ~TemporaryFile()
    {
        if (!name_.empty())
            ::unlink(name_.c_str());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    bool MoveTo(const std::string& path)
    {
        if (std::rename(name_.c_str(), path.c_str()) != 0)
            return false;
        name_.clear();
        return true;
    }

private:
    std::string name_;
};

bool WriteAll(int file, std::string_view text)
{
    while (!text.empty())
    {
        const ssize_t written = ::write(file, text.data(), text.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return false;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

std::string FolderOf(const std::string& path)
{
    const std::string folder = std::filesystem::path{path}.parent_path().string();
    return folder.empty() ? "." : folder;
}

// Where the bytes lie: behind links, so that replacing the file does not replace the link.
std::string ResolvedPath(const std::string& path)
{
    std::error_code missing;
    const auto resolved = std::filesystem::canonical(path, missing);
    return missing ? path : resolved.string();
}

std::optional<struct stat> StatusOf(const std::string& path)
{
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0)
        return std::nullopt;
    return status;
}

// So that the new name survives a loss of power; some file systems refuse, and the file is whole either way.
void SynchroniseFolder(const std::string& folder)
{
    const Descriptor opened{::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    if (opened.IsOpen())
        ::fsync(opened.Number());
}

} // namespace

bool SettingsFileExists(const std::string& path)
{
    if (StatusOf(path))
        return true;
    if (errno != ENOENT || !StatusOf(FolderOf(path)))
        RaiseAccess(path, "written", errno);
    return false;
}

std::string ReadSettingsFile(const std::string& path)
{
    // Without waiting: a pipe under this name has no writer.
    const Descriptor file{::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)};
    if (!file.IsOpen() && errno == ENOENT)
        throw RuntimeError{error::FileNotFound, Source, "There is no file " + path};
    struct stat status = {};
    if (!file.IsOpen() || ::fstat(file.Number(), &status) != 0)
        RaiseAccess(path, "read", errno);
    if (!S_ISREG(status.st_mode))
        throw RuntimeError{error::PathFileAccess, Source, path + " is not a plain file"};
    std::string text(LongestSettingsText + 1, '\0');
    std::size_t size = 0;
    while (size < text.size())
    {
        const ssize_t read = ::read(file.Number(), text.data() + size, text.size() - size);
        if (read < 0 && errno == EINTR)
            continue;
        if (read < 0)
            RaiseAccess(path, "read", errno);
        if (read == 0)
            break;
        size += static_cast<std::size_t>(read);
    }
    text.resize(size);
    return text;
}

void WriteSettingsFile(const std::string& path, const std::string& text)
{
    const std::string target = ResolvedPath(path);
    const auto before = StatusOf(target);
    if (before && ::access(target.c_str(), W_OK) != 0)
        RaiseAccess(path, "written", errno);
    const std::string name = target + ".new-" + std::to_string(::getpid());
    constexpr mode_t NewFile = 0666; // less what the person's mask takes away
    Descriptor file{::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, NewFile)};
    if (!file.IsOpen())
        RaiseAccess(path, "written", errno);
    TemporaryFile temporary{name};
    constexpr mode_t Permissions = 07777;
    const bool done = (!before || ::fchmod(file.Number(), before->st_mode & Permissions) == 0) &&
                      WriteAll(file.Number(), text) && ::fsync(file.Number()) == 0 && file.Close() &&
                      temporary.MoveTo(target);
    if (!done)
        RaiseAccess(path, "written", errno);
    SynchroniseFolder(FolderOf(target));
}

} // namespace lumora
