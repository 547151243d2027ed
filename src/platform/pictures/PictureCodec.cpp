// Compiles the library for all formats but JPEG, with an allocator that keeps to a budget: a file of a few bytes may
// ask for gigabytes.
#include "platform/pictures/PictureCodec.h"

#include "platform/pictures/JpegDecoder.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace
{

// Every block starts with its size.
constexpr std::size_t Prefix = alignof(std::max_align_t);

std::size_t memoryLeft = 0;

void Release(void* block)
{
    if (block == nullptr)
        return;
    void* const start = static_cast<std::byte*>(block) - Prefix;
    std::size_t size = 0;
    std::memcpy(&size, start, sizeof size);
    memoryLeft += size;
    std::free(start); // NOLINT: the library expects malloc's contract
}

void* Allocate(std::size_t size)
{
    if (size > memoryLeft)
        return nullptr;
    void* const start = std::malloc(size + Prefix); // NOLINT: see above
    if (start == nullptr)
        return nullptr;
    memoryLeft -= size;
    std::memcpy(start, &size, sizeof size);
    return static_cast<std::byte*>(start) + Prefix;
}

void* Reallocate(void* block, std::size_t size)
{
    void* const larger = Allocate(size);
    if (larger == nullptr || block == nullptr)
        return larger;
    std::size_t oldSize = 0;
    std::memcpy(&oldSize, static_cast<std::byte*>(block) - Prefix, sizeof oldSize);
    std::memcpy(larger, block, std::min(oldSize, size));
    Release(block);
    return larger;
}

} // namespace

#define STBI_MALLOC Allocate
#define STBI_REALLOC Reallocate
#define STBI_FREE Release
#define STBI_ONLY_PNG
#define STBI_ONLY_BMP
#define STBI_ONLY_GIF
#define STBI_ONLY_TGA
#define STBI_NO_STDIO
#define STBI_MAX_DIMENSIONS 16384
#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#include <stb/stb_image.h>

#define STBIW_MALLOC Allocate
#define STBIW_REALLOC Reallocate
#define STBIW_FREE Release
#define STBI_WRITE_NO_STDIO
#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb/stb_image_write.h>

namespace lumora::picturecodec
{

namespace
{

/// Feeds the decoder, and notices when it asks for more than there is: the library itself goes on with zeros.
struct Reader
{
    std::span<const std::uint8_t> left;
    bool ranOut = false;

    static int Read(void* user, char* data, int size)
    {
        auto& reader = *static_cast<Reader*>(user);
        const std::size_t count = std::min(static_cast<std::size_t>(size), reader.left.size());
        reader.ranOut = reader.ranOut || count == 0;
        std::memcpy(data, reader.left.data(), count);
        reader.left = reader.left.subspan(count);
        return static_cast<int>(count);
    }

    static void Skip(void* user, int count)
    {
        auto& reader = *static_cast<Reader*>(user);
        // A negative count goes back within what the decoder still buffers; decoders of these formats never do.
        const std::size_t wanted = static_cast<std::size_t>(std::max(count, 0));
        reader.ranOut = reader.ranOut || wanted > reader.left.size();
        reader.left = reader.left.subspan(std::min(wanted, reader.left.size()));
    }

    static int AtEnd(void* user) { return static_cast<Reader*>(user)->left.empty() ? 1 : 0; }
};

/// Lends a budget to the library for one call.
class Budget
{
public:
    explicit Budget(std::size_t bytes) { memoryLeft = bytes; }
    ~Budget() { memoryLeft = 0; }
    Budget(const Budget&) = delete;
    Budget& operator=(const Budget&) = delete;
};

constexpr std::size_t HeaderMemory = std::size_t{1} << 20;

Decoded DecodeJpegWithinBudget(std::span<const std::uint8_t> file)
{
    Decoded decoded;
    const Header header = ReadJpegHeader(file);
    decoded.size = header.size;
    decoded.problem = header.problem;
    if (!decoded.problem.empty())
        return decoded;
    const std::size_t count =
        std::size_t{4} * static_cast<std::size_t>(header.size.width) * static_cast<std::size_t>(header.size.height);
    decoded.bytes.reset(static_cast<std::uint8_t*>(Allocate(count)));
    decoded.problem = decoded.bytes ? DecodeJpeg(file, {decoded.bytes.get(), count}, memoryLeft)
                                    : "there is not enough memory for it";
    if (!decoded.problem.empty())
        decoded.bytes.reset();
    return decoded;
}

} // namespace

void Release::operator()(std::uint8_t* bytes) const
{
    ::Release(bytes);
}

Header ReadHeader(std::span<const std::uint8_t> file)
{
    if (IsJpeg(file))
        return ReadJpegHeader(file);
    const Budget budget{HeaderMemory};
    Header header;
    auto& [width, height] = header.size;
    int channels = 0;
    if (stbi_info_from_memory(file.data(), static_cast<int>(file.size()), &width, &height, &channels) == 0)
        header.problem = "this is not a PNG, JPEG, BMP, GIF or TGA file";
    return header;
}

Decoded Decode(std::span<const std::uint8_t> file, std::size_t memory)
{
    const Budget budget{memory};
    if (IsJpeg(file))
        return DecodeJpegWithinBudget(file);
    const stbi_io_callbacks callbacks{Reader::Read, Reader::Skip, Reader::AtEnd};
    Reader reader{file};
    Decoded decoded;
    int channels = 0;
    decoded.bytes.reset(
        stbi_load_from_callbacks(&callbacks, &reader, &decoded.size.width, &decoded.size.height, &channels, 4));
    if (decoded.bytes && !reader.ranOut)
        return decoded;
    decoded.bytes.reset();
    decoded.problem = reader.ranOut ? "the file ends before its picture does" : stbi_failure_reason();
    return decoded;
}

Encoded EncodePng(std::span<const std::uint8_t> rgb, Size size)
{
    // The encoder's own tables and its two copies of the picture.
    const Budget budget{(std::size_t{64} << 20) + 8 * rgb.size()};
    int count = 0;
    Encoded encoded;
    encoded.bytes.reset(stbi_write_png_to_mem(rgb.data(), 3 * size.width, size.width, size.height, 3, &count));
    encoded.count = static_cast<std::size_t>(count);
    return encoded;
}

} // namespace lumora::picturecodec
