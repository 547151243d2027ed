// A whole file, mapped for reading.
#pragma once

#include <fcntl.h>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lumora
{

class FileBytes
{
public:
    /// Empty when the file cannot be had.
    explicit FileBytes(const char* path)
    {
        const int descriptor = open(path, O_RDONLY | O_CLOEXEC);
        struct stat status
        {
        };
        if (descriptor >= 0 && fstat(descriptor, &status) == 0 && status.st_size > 0)
            size_ = static_cast<std::size_t>(status.st_size);
        if (size_ != 0)
            address_ = mmap(nullptr, size_, PROT_READ, MAP_PRIVATE, descriptor, 0);
        if (descriptor >= 0)
            close(descriptor);
    }
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;
    ~FileBytes()
    {
        if (address_ != MAP_FAILED)
            munmap(address_, size_);
    }

    std::string_view Text() const
    {
        return address_ != MAP_FAILED ? std::string_view{static_cast<const char*>(address_), size_}
                                      : std::string_view{};
    }

private:
    void* address_ = MAP_FAILED;
    std::size_t size_ = 0;
};

} // namespace lumora
