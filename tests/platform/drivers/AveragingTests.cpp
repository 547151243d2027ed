// Averages of blocks, against their definition.
#include "platform/drivers/Averaging.h"
#include "platform/drivers/rgb/RgbDriver.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

using namespace lumora;

namespace
{

constexpr std::uint32_t Untouched = 0xDEADBEEF;

struct Pixels
{
    Pixels(int width, int height, int pitch, std::uint32_t color = Untouched)
        : memory(static_cast<std::size_t>(pitch) * static_cast<std::size_t>(height), color), view{memory.data(), width,
                                                                                                  height, pitch}
    {
    }
    std::vector<std::uint32_t> memory;
    PixelView view;
};

Pixels RandomPixels(int width, int height, std::mt19937& random)
{
    Pixels pixels{width, height, width + 3};
    for (std::uint32_t& pixel : pixels.memory)
        pixel = static_cast<std::uint32_t>(random());
    return pixels;
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
        const int width = std::max(1, source.width / factor + more);
        const int height = std::max(1, source.height / factor + more);
        Pixels target{width, height, width + 1};
        averager.Average(source, factor, target.view);
        int wrong = 0;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x <= width; ++x)
            {
                const bool isAverage = x < width && x < source.width / factor && y < source.height / factor;
                wrong += target.view.Row(y)[x] != (isAverage ? ByDefinition(source, factor, x, y) : Untouched);
            }
        EXPECT_EQ(wrong, 0) << source.width << " by " << source.height << " in blocks of " << factor;
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
                        ExpectAverages(averager, RandomPixels(width, height, random).view, factor);
            for (const int factor : {2, 4}) // shared out
                ExpectAverages(averager, RandomPixels(1021, 611, random).view, factor);
        }
}

} // namespace
