// Picture files: what is foreign is measured before it is decoded.
#include "base/Faults.h"
#include "base/RuntimeError.h"
#include "platform/pictures/Bitmap.h"
#include "platform/pictures/Picture.h"
#include "platform/pictures/PictureCodec.h"

#include <filesystem>
#include <fstream>
#include <new>
#include <vector>

namespace lumora
{

#ifndef LUMORA_PICTURES

namespace
{

[[noreturn]] void RaiseNotBuilt()
{
    throw RuntimeError{error::InvalidPicture, "Picture", "This library was built without picture files"};
}

} // namespace

std::shared_ptr<Picture> LoadPicture(const std::string&)
{
    faults::Point("Picture.Load");
    RaiseNotBuilt();
}

std::shared_ptr<Picture> DecodePicture(std::span<const std::uint8_t>, const std::string&)
{
    RaiseNotBuilt();
}

void SavePicture(const std::string&, const PixelView&)
{
    faults::Point("Picture.Save");
    RaiseNotBuilt();
}

#else

namespace
{

constexpr std::uintmax_t MaximumFileSize = std::uintmax_t{256} << 20;

/// 8192 by 8192: the picture itself is then 256 MiB.
constexpr std::int64_t MaximumPixels = std::int64_t{1} << 26;

/// No format packs more pixels into a byte: deflated 1-bit pixels come to 8256.
constexpr std::int64_t MaximumPixelsPerByte = 16384;

[[noreturn]] void RaiseInvalid(const std::string& path, const std::string& problem)
{
    throw RuntimeError{error::InvalidPicture, "Picture", "Invalid picture " + path + ": " + problem};
}

std::vector<std::uint8_t> ReadWholeFile(const std::string& path)
{
    std::error_code problem;
    const bool regular = std::filesystem::is_regular_file(path, problem);
    std::ifstream file(path, std::ios::binary);
    if (!regular || !file)
        throw RuntimeError{error::FileNotFound, "Picture", "The picture file cannot be read: " + path};
    const std::uintmax_t size = std::filesystem::file_size(path, problem);
    if (problem || size > MaximumFileSize)
        RaiseInvalid(path, "the file is larger than 256 MB");
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size));
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
    if (!file)
        throw RuntimeError{error::FileNotFound, "Picture", "The picture file cannot be read: " + path};
    return bytes;
}

picturecodec::Size CheckedSize(const std::string& path, std::span<const std::uint8_t> file)
{
    const picturecodec::Header header = picturecodec::ReadHeader(file);
    if (!header.problem.empty())
        RaiseInvalid(path, header.problem);
    const auto [width, height] = header.size;
    if (width < 1 || height < 1 || width > Bitmap::MaximumSide || height > Bitmap::MaximumSide ||
        std::int64_t{width} * height > MaximumPixels)
        RaiseInvalid(path, std::to_string(width) + " by " + std::to_string(height) + " pixels cannot be loaded");
    if (std::int64_t{width} * height > MaximumPixelsPerByte * static_cast<std::int64_t>(file.size()))
        RaiseInvalid(path, "the file ends before its picture does");
    return header.size;
}

/// What decoding may take: the packed data once more, and for 16-bit pictures the unpacked data, the picture, and the
/// picture in 8 bits.
std::size_t DecodingMemory(picturecodec::Size size, std::size_t fileSize)
{
    const auto pixels = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
    return (std::size_t{16} << 20) + 4 * fileSize + 24 * pixels;
}

std::shared_ptr<Bitmap> ToBitmap(const picturecodec::Decoded& decoded)
{
    auto bitmap = std::make_shared<Bitmap>(decoded.size.width, decoded.size.height);
    const PixelView pixels = bitmap->Pixels();
    const std::uint8_t* byte = decoded.bytes.get();
    for (int y = 0; y < pixels.height; ++y)
        for (int x = 0; x < pixels.width; ++x, byte += 4)
            pixels.Row(y)[x] = std::uint32_t{byte[3]} << 24 | std::uint32_t{byte[0]} << 16 |
                               std::uint32_t{byte[1]} << 8 | std::uint32_t{byte[2]};
    return bitmap;
}

std::shared_ptr<Picture> DecodeChecked(std::span<const std::uint8_t> file, const std::string& path)
{
    if (file.size() > MaximumFileSize)
        RaiseInvalid(path, "the file is larger than 256 MB");
    const picturecodec::Size size = CheckedSize(path, file);
    const picturecodec::Decoded decoded = picturecodec::Decode(file, DecodingMemory(size, file.size()));
    if (!decoded.bytes)
        RaiseInvalid(path, decoded.problem);
    if (decoded.size.width != size.width || decoded.size.height != size.height)
        RaiseInvalid(path, "its parts disagree about its size");
    return std::make_shared<Picture>(ToBitmap(decoded));
}

std::vector<std::uint8_t> ToBytes(const PixelView& pixels)
{
    std::vector<std::uint8_t> bytes(std::size_t{3} * static_cast<std::size_t>(pixels.width) *
                                    static_cast<std::size_t>(pixels.height));
    auto byte = bytes.begin();
    for (int y = 0; y < pixels.height; ++y)
        for (int x = 0; x < pixels.width; ++x)
        {
            const std::uint32_t pixel = pixels.Row(y)[x];
            *byte++ = static_cast<std::uint8_t>(pixel >> 16);
            *byte++ = static_cast<std::uint8_t>(pixel >> 8);
            *byte++ = static_cast<std::uint8_t>(pixel);
        }
    return bytes;
}

void EncodeFile(const std::string& path, const PixelView& pixels)
{
    const picturecodec::Encoded encoded = picturecodec::EncodePng(ToBytes(pixels), {pixels.width, pixels.height});
    if (!encoded.bytes)
        throw std::bad_alloc{};
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(encoded.bytes.get()), static_cast<std::streamsize>(encoded.count));
    file.close();
    if (!file)
        throw RuntimeError{error::PathFileAccess, "Picture", "The picture file cannot be written: " + path};
}

template<typename Work>
auto WithinMemory(Work&& work)
{
    try
    {
        return work();
    }
    catch (const std::bad_alloc&)
    {
        throw RuntimeError{error::OutOfMemory, "Picture", "There is not enough memory for this picture"};
    }
}

} // namespace

std::shared_ptr<Picture> LoadPicture(const std::string& path)
{
    faults::Point("Picture.Load");
    return WithinMemory([&] { return DecodeChecked(ReadWholeFile(path), path); });
}

std::shared_ptr<Picture> DecodePicture(std::span<const std::uint8_t> file, const std::string& name)
{
    return WithinMemory([&] { return DecodeChecked(file, name); });
}

void SavePicture(const std::string& path, const PixelView& pixels)
{
    faults::Point("Picture.Save");
    if (pixels.width < 1 || pixels.height < 1 || std::int64_t{pixels.width} * pixels.height > MaximumPixels)
        throw RuntimeError{error::InvalidCall, "Picture",
                           "A picture of " + std::to_string(pixels.width) + " by " + std::to_string(pixels.height) +
                               " pixels cannot be saved"};
    WithinMemory([&] { EncodeFile(path, pixels); });
}

#endif

} // namespace lumora
