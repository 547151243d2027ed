// Comparing pictures, and keeping the ones that a person should look at.
#include "support/Pictures.h"

#include "base/RuntimeError.h"
#include "platform/pictures/Picture.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <vector>

namespace lumora::testsupport
{

namespace
{

int ChannelDifference(std::uint32_t a, std::uint32_t b)
{
    int largest = 0;
    for (const int shift : {0, 8, 16})
        largest =
            std::max(largest, std::abs(static_cast<int>(a >> shift & 0xFF) - static_cast<int>(b >> shift & 0xFF)));
    return largest;
}

std::string NameOfRunningTest()
{
    const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
    std::string name = test != nullptr ? std::string{test->test_suite_name()} + "." + test->name() : "no-test";
    std::ranges::replace(name, '/', '-');
    return name;
}

/// White where nothing differs, darker red the more does.
std::vector<std::uint32_t> DifferencePicture(const PixelView& actual, const PixelView& expected)
{
    std::vector<std::uint32_t> pixels;
    for (int y = 0; y < actual.height; ++y)
        for (int x = 0; x < actual.width; ++x)
        {
            const int difference = ChannelDifference(actual.Row(y)[x], expected.Row(y)[x]);
            pixels.push_back(difference == 0 ? 0xFFFFFF
                                             : 0xFF0000 - (static_cast<std::uint32_t>(difference) << 15 & 0x7F0000));
        }
    return pixels;
}

} // namespace

std::string KeepPicture(const std::string& name, const PixelView& picture)
{
    const std::filesystem::path folder{LUMORA_TEST_PICTURES};
    const std::string path = folder / (NameOfRunningTest() + "-" + name + ".png");
    try
    {
        std::filesystem::create_directories(folder);
        SavePicture(path, picture);
        return path;
    }
    catch (const RuntimeError&)
    {
        return {};
    }
}

testing::AssertionResult SamePicture(const PixelView& actual, const PixelView& expected, int tolerance)
{
    if (actual.width != expected.width || actual.height != expected.height)
        return testing::AssertionFailure() << "the picture is " << actual.width << " by " << actual.height << ", not "
                                           << expected.width << " by " << expected.height;
    int count = 0;
    int firstX = 0;
    int firstY = 0;
    int largest = 0;
    for (int y = 0; y < actual.height; ++y)
        for (int x = 0; x < actual.width; ++x)
            if (const int difference = ChannelDifference(actual.Row(y)[x], expected.Row(y)[x]); difference > tolerance)
            {
                if (count++ == 0)
                {
                    firstX = x;
                    firstY = y;
                }
                largest = std::max(largest, difference);
            }
    if (count == 0)
        return testing::AssertionSuccess();
    std::vector<std::uint32_t> difference = DifferencePicture(actual, expected);
    const std::string path = KeepPicture("actual", actual);
    KeepPicture("expected", expected);
    KeepPicture("difference", {difference.data(), actual.width, actual.height, actual.width});
    return testing::AssertionFailure() << count << " pixels differ, by up to " << largest << "; the first at ("
                                       << firstX << ", " << firstY << ") is " << std::hex << actual.Row(firstY)[firstX]
                                       << ", not " << expected.Row(firstY)[firstX] << std::dec << "; see " << path;
}

} // namespace lumora::testsupport
