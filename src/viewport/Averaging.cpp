#include "viewport/Averaging.h"

#include <algorithm>
#include <cstdint>

namespace lumora
{

namespace
{

struct ChannelSums
{
    std::uint32_t blue = 0;
    std::uint32_t green = 0;
    std::uint32_t red = 0;
};

std::uint32_t NearestQuotient(std::uint32_t sum, std::uint32_t samples)
{
    const std::uint32_t quotient = sum / samples;
    const std::uint32_t twiceRest = 2 * (sum % samples);
    const bool up = twiceRest > samples || (twiceRest == samples && quotient % 2 == 1);
    return up ? quotient + 1 : quotient;
}

ChannelSums SumBlock(const PixelView& source, int left, int top, int factor)
{
    ChannelSums sums;
    for (int y = top; y < top + factor; ++y)
    {
        const std::uint32_t* row = source.Row(y);
        for (int x = left; x < left + factor; ++x)
        {
            sums.blue += row[x] & 255;
            sums.green += (row[x] >> 8) & 255;
            sums.red += (row[x] >> 16) & 255;
        }
    }
    return sums;
}

} // namespace

void AverageBlocks(const PixelView& source, int factor, const PixelView& target)
{
    const int width = std::min(source.width / factor, target.width);
    const int height = std::min(source.height / factor, target.height);
    const auto samples = static_cast<std::uint32_t>(factor * factor);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
        {
            const ChannelSums sums = SumBlock(source, x * factor, y * factor, factor);
            target.Row(y)[x] = NearestQuotient(sums.red, samples) << 16 | NearestQuotient(sums.green, samples) << 8 |
                               NearestQuotient(sums.blue, samples);
        }
}

} // namespace lumora
