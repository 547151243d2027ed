// Averages of blocks, against their definition.
#include "platform/drivers/Averaging.h"
#include "platform/drivers/TestCanvas.h"
#include "platform/drivers/rgb/RgbDriver.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <random>

namespace lumora::test
{

namespace
{

constexpr std::uint32_t Untouched = 0xADBEEF;

Canvas RandomPixels(int width, int height, std::mt19937& random)
{
    Canvas canvas{width, height};
    for (int y = 0; y < height; ++y)
        std::generate_n(canvas.View().Row(y), width, std::ref(random));
    return canvas;
}

// The processor rounds to nearest, halves to even.
std::uint32_t ByDefinition(const PixelView& source, int factor, int x, int y)
{
    std::uint32_t color = 0;
    for (int shift = 0; shift < 24; shift += 8)
    {
        double sum = 0;
        for (int j = 0; j < factor; ++j)
            for (int i = 0; i < factor; ++i)
                sum += source.Row(y * factor + j)[x * factor + i] >> shift & 255;
        color |= static_cast<std::uint32_t>(std::nearbyint(sum / (factor * factor))) << shift;
    }
    return color;
}

void ExpectAverages(BlockAverager& averager, const PixelView& source, int factor)
{
    // One more each way than blocks there are, and less than that too.
    for (const int more : {1, -1})
    {
        Canvas target{std::max(1, source.width / factor + more), std::max(1, source.height / factor + more), Untouched};
        Canvas expected = target;
        for (int y = 0; y < std::min(target.Height(), source.height / factor); ++y)
            for (int x = 0; x < std::min(target.Width(), source.width / factor); ++x)
                expected.View().Row(y)[x] = ByDefinition(source, factor, x, y);
        averager.Average(source, factor, target.View());
        EXPECT_EQ(CountDifferent(target, expected), 0)
            << source.width << " by " << source.height << " in blocks of " << factor;
        EXPECT_FALSE(target.IsMarginTouched());
    }
}

TEST(Averaging, follows_the_definition_for_every_size_on_every_path)
{
    std::mt19937 random{7}; // NOLINT: the same noise every time
    for (const SimdLevel level : AvailableSimdLevels())
        for (const int threads : {1, 3})
        {
            SCOPED_TRACE(testing::Message() << "level " << static_cast<int>(level) << ", threads " << threads);
            BlockAverager averager{Crew::Of(threads), level};
            for (const int factor : {1, 2, 3, 4, 16})
                for (const int width : {1, 2, 3, 4, 5, 6, 7, 8, 30, 65, 66, 67, 132, 255})
                    for (const int height : {1, 4, 5, 6, 7})
                        ExpectAverages(averager, RandomPixels(width, height, random).View(), factor);
            for (const int factor : {2, 4}) // shared out
                ExpectAverages(averager, RandomPixels(1021, 611, random).View(), factor);
        }
}

} // namespace

} // namespace lumora::test
