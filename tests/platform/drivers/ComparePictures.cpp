// How far two pictures are apart, and the evidence for a person to look at.
#include "platform/drivers/ComparePictures.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace lumora::test
{

namespace
{

int DifferenceOf(std::uint32_t a, std::uint32_t b)
{
    const Channels first = ChannelsOf(a);
    const Channels second = ChannelsOf(b);
    return std::max(
        {std::abs(first.red - second.red), std::abs(first.green - second.green), std::abs(first.blue - second.blue)});
}

template<typename ColorAt>
bool WritePpm(const std::filesystem::path& path, int width, int height, ColorAt colorAt)
{
    std::ofstream file{path, std::ios::binary};
    file << "P6\n" << width << ' ' << height << "\n255\n";
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
        {
            const std::uint32_t color = colorAt(x, y);
            file.put(static_cast<char>(color >> 16)).put(static_cast<char>(color >> 8)).put(static_cast<char>(color));
        }
    return file.good();
}

std::uint32_t Brightened(std::uint32_t a, std::uint32_t b)
{
    const Channels first = ChannelsOf(a);
    const Channels second = ChannelsOf(b);
    const auto channel = [](int one, int other)
    { return static_cast<std::uint32_t>(std::min(255, 16 * std::abs(one - other))); };
    return channel(first.red, second.red) << 16 | channel(first.green, second.green) << 8 |
           channel(first.blue, second.blue);
}

} // namespace

bool PictureDifference::IsWithin(const Tolerance& tolerance) const
{
    return beyondStep <= tolerance.partBeyond * pixels && faulty <= tolerance.partFaulty * pixels;
}

PictureDifference Compare(const Canvas& actual, const Canvas& expected, const Tolerance& tolerance)
{
    PictureDifference result;
    for (int y = 0; y < expected.Height(); ++y)
        for (int x = 0; x < expected.Width(); ++x)
        {
            const int difference = DifferenceOf(actual.At(x, y), expected.At(x, y));
            ++result.pixels;
            result.beyondStep += difference > tolerance.step ? 1 : 0;
            result.faulty += difference > tolerance.fault ? 1 : 0;
            result.largest = std::max(result.largest, difference);
        }
    return result;
}

std::string WriteEvidence(const std::string& name, const Canvas& actual, const Canvas& expected)
{
    const std::filesystem::path folder = std::filesystem::current_path() / "driver-pictures";
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    const bool isWritten = WritePicture((folder / (name + "-actual.ppm")).string(), actual) &&
                           WritePicture((folder / (name + "-expected.ppm")).string(), expected) &&
                           WritePpm(folder / (name + "-difference.ppm"), expected.Width(), expected.Height(),
                                    [&](int x, int y) { return Brightened(actual.At(x, y), expected.At(x, y)); });
    return (isWritten ? "pictures are in " : "pictures could not be written to ") + folder.string();
}

bool WritePicture(const std::string& path, const Canvas& canvas)
{
    return WritePpm(path, canvas.Width(), canvas.Height(), [&](int x, int y) { return canvas.At(x, y); });
}

} // namespace lumora::test
