// Decoding through the picture libraries. A model may name any path: only plain files of bounded size are opened.
#include "import/worker/Pictures.h"

#include "import/ModelStream.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <memory>
#include <optional>
#include <span>
#ifdef LUMORA_PICTURES
#include "platform/pictures/JpegDecoder.h"

#include <array>
#include <bit>
#include <stb/stb_image.h>
#endif

namespace lumora
{

namespace fs = std::filesystem;
using namespace modelstream;

namespace
{

constexpr std::uintmax_t MostFileBytes = std::uintmax_t{256} << 20;

std::string Lowered(std::string text)
{
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool IsPlainFile(const fs::path& path)
{
    std::error_code failure;
    return fs::is_regular_file(path, failure);
}

/// The entry of `folder` with this name in any letter case, for names written where case does not count.
fs::path FindInAnyCase(const fs::path& folder, const std::string& name)
{
    std::error_code failure;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, failure))
        if (Lowered(entry.path().filename().string()) == Lowered(name) && IsPlainFile(entry.path()))
            return entry.path();
    return {};
}

std::vector<unsigned char> ReadWhole(const fs::path& path)
{
    std::error_code failure;
    const std::uintmax_t size = fs::file_size(path, failure);
    if (failure || size > MostFileBytes)
        return {};
    std::vector<unsigned char> bytes(size);
    std::ifstream file(path, std::ios::binary);
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
    bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
    return bytes;
}

bool HasGoodSize(std::uint64_t width, std::uint64_t height)
{
    return width >= 1 && width <= MaximumPictureSide && height >= 1 && height <= MaximumPictureSide;
}

std::uint32_t Packed(unsigned red, unsigned green, unsigned blue, unsigned alpha)
{
    return alpha << 24 | red << 16 | green << 8 | blue;
}

#ifdef LUMORA_PICTURES

bool IsWithinBounds(int width, int height, std::string& why)
{
    why = "has more than " + std::to_string(MaximumPictureSide) + " pixels a side";
    return HasGoodSize(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height));
}

DecodedPicture EmptyPicture(int width, int height)
{
    DecodedPicture picture{{}, static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), {}};
    picture.pixels.resize(std::size_t{picture.width} * picture.height);
    return picture;
}

std::optional<DecodedPicture> DecodeJpegBytes(std::span<const unsigned char> bytes, std::string& why)
{
    const auto [size, headerProblem] = picturecodec::ReadJpegHeader(bytes);
    why = "cannot be decoded (" + headerProblem + ")";
    if (!headerProblem.empty() || !IsWithinBounds(size.width, size.height, why))
        return {};
    DecodedPicture picture = EmptyPicture(size.width, size.height);
    const std::span<std::uint32_t> pixels = picture.pixels;
    // Files of several scans keep 2 bytes for each of up to four channels of every pixel, in whole blocks.
    const std::size_t memory = (std::size_t{16} << 20) + 12 * pixels.size();
    const std::string problem =
        picturecodec::DecodeJpeg(bytes, {reinterpret_cast<std::uint8_t*>(pixels.data()), pixels.size_bytes()}, memory);
    why = "cannot be decoded (" + problem + ")";
    if (!problem.empty())
        return {};
    for (std::uint32_t& pixel : picture.pixels)
    {
        const auto p = std::bit_cast<std::array<std::uint8_t, 4>>(pixel);
        pixel = Packed(p[0], p[1], p[2], p[3]);
    }
    return picture;
}

std::optional<DecodedPicture> DecodeOtherBytes(std::span<const unsigned char> bytes, std::string& why)
{
    const int length = static_cast<int>(std::min<std::size_t>(bytes.size(), MostFileBytes));
    int width = 0;
    int height = 0;
    int channels = 0;
    why = "is no picture that can be decoded";
    if (stbi_info_from_memory(bytes.data(), length, &width, &height, &channels) == 0)
        return {};
    if (!IsWithinBounds(width, height, why))
        return {};
    const std::unique_ptr<unsigned char, decltype(&stbi_image_free)> decoded(
        stbi_load_from_memory(bytes.data(), length, &width, &height, &channels, 4), stbi_image_free);
    why = "is no picture that can be decoded";
    if (!decoded)
        return {};
    DecodedPicture picture = EmptyPicture(width, height);
    for (std::size_t i = 0; i < picture.pixels.size(); ++i)
    {
        const unsigned char* p = decoded.get() + i * 4;
        picture.pixels[i] = Packed(p[0], p[1], p[2], p[3]);
    }
    return picture;
}

/// Nothing when the bytes are no picture within the bounds; `why` says what is wrong.
std::optional<DecodedPicture> DecodeBytes(std::span<const unsigned char> bytes, std::string& why)
{
    return picturecodec::IsJpeg(bytes) ? DecodeJpegBytes(bytes, why) : DecodeOtherBytes(bytes, why);
}

#else

std::optional<DecodedPicture> DecodeBytes(std::span<const unsigned char>, std::string& why)
{
    why = "cannot be decoded by this program, which was built without pictures";
    return {};
}

#endif

std::optional<DecodedPicture> DecodeEmbedded(const aiTexture& texture, std::string& why)
{
    if (texture.mHeight == 0)
        return DecodeBytes({reinterpret_cast<const unsigned char*>(texture.pcData), texture.mWidth}, why);
    why = "has a size out of range";
    if (!HasGoodSize(texture.mWidth, texture.mHeight))
        return {};
    DecodedPicture picture{{}, texture.mWidth, texture.mHeight, {}};
    picture.pixels.reserve(std::size_t{picture.width} * picture.height);
    for (const aiTexel& texel : std::span(texture.pcData, std::size_t{picture.width} * picture.height))
        picture.pixels.push_back(Packed(texel.r, texel.g, texel.b, texel.a));
    return picture;
}

} // namespace

std::uint32_t Pictures::Load(const std::string& name, bool keepAlpha)
{
    const auto [entry, isNew] = known_.try_emplace({name, keepAlpha}, NoIndex);
    if (isNew)
        entry->second = Decode(name, keepAlpha);
    return entry->second;
}

std::uint32_t Pictures::Decode(const std::string& name, bool keepAlpha)
{
    std::string why;
    std::optional<DecodedPicture> picture;
    if (const aiTexture* embedded = scene_.GetEmbeddedTexture(name.c_str()))
        picture = DecodeEmbedded(*embedded, why);
    else if (const fs::path path = Find(name); !path.empty())
        picture = DecodeBytes(ReadWhole(path), why);
    else
        why = "is not beside the model";
    if (!picture)
        return Refuse(name, why);
    pixelCount_ += picture->pixels.size();
    if (pixelCount_ > MaximumPixels)
        return Refuse(name, "is one picture too many for memory");
    if (!keepAlpha)
        for (std::uint32_t& pixel : picture->pixels)
            pixel |= 0xFF000000;
    picture->name = name;
    all_.push_back(std::move(*picture));
    return static_cast<std::uint32_t>(all_.size() - 1);
}

fs::path Pictures::Find(const std::string& name) const
{
    std::string plain = name;
    std::ranges::replace(plain, '\\', '/');
    if (plain.starts_with("file://"))
        plain.erase(0, 7);
    const fs::path path(plain);
    if (path.filename().empty())
        return {};
    for (const fs::path& candidate : {folder_ / path, folder_ / path.filename()})
    {
        if (IsPlainFile(candidate))
            return candidate;
        if (fs::path found = FindInAnyCase(candidate.parent_path(), path.filename().string()); !found.empty())
            return found;
    }
    return {};
}

std::uint32_t Pictures::Refuse(const std::string& name, const std::string& why)
{
    warnings_.push_back("The texture \"" + name + "\" " + why + "; the model is shown without it.");
    return NoIndex;
}

} // namespace lumora
