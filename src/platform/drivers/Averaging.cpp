#include "platform/drivers/Averaging.h"

#include <algorithm>
#include <utility>

namespace lumora
{

namespace
{

/// Below this many pixels read, waking another thread costs more than it saves.
constexpr std::int64_t SmallPixelCount = 1 << 17;

/// Pixels of the source in one unit of work.
constexpr std::int64_t UnitPixelCount = 1 << 16;

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

ChannelSums SumBlock(const std::uint32_t* source, std::ptrdiff_t pitch, int factor)
{
    ChannelSums sums;
    for (int y = 0; y < factor; ++y, source += pitch)
        for (int x = 0; x < factor; ++x)
        {
            sums.blue += source[x] & 255;
            sums.green += (source[x] >> 8) & 255;
            sums.red += (source[x] >> 16) & 255;
        }
    return sums;
}

// The compiler knows the factor of the two that matter, and divides by shifting.
inline void AverageRowPlain(const std::uint32_t* source, std::ptrdiff_t pitch, int factor, int count,
                            std::uint32_t* target)
{
    const auto samples = static_cast<std::uint32_t>(factor * factor);
    for (int i = 0; i < count; ++i, source += factor)
    {
        const ChannelSums sums = SumBlock(source, pitch, factor);
        target[i] = NearestQuotient(sums.red, samples) << 16 | NearestQuotient(sums.green, samples) << 8 |
                    NearestQuotient(sums.blue, samples);
    }
}

} // namespace

void averaging::Kernels::Average(int factor, const std::uint32_t* source, std::ptrdiff_t pitch, int count,
                                 std::uint32_t* target) const
{
    if (factor == 2)
        two(source, pitch, count, target);
    else if (factor == 4)
        four(source, pitch, count, target);
    else
        AverageRowPlain(source, pitch, factor, count, target);
}

averaging::Kernels averaging::KernelsFor([[maybe_unused]] SimdLevel level)
{
#ifdef LUMORA_HAS_HIGHWAY
    if (level != SimdLevel::Plain)
    {
        if (const Kernels wanted = HighwayKernels(level); wanted.two != nullptr)
            return wanted;
        if (const Kernels best = HighwayKernels(SimdLevel::Best); best.two != nullptr)
            return best;
    }
#endif
    return PlainKernels();
}

averaging::Kernels averaging::PlainKernels()
{
    return {[](const std::uint32_t* source, std::ptrdiff_t pitch, int count, std::uint32_t* target)
            { AverageRowPlain(source, pitch, 2, count, target); },
            [](const std::uint32_t* source, std::ptrdiff_t pitch, int count, std::uint32_t* target)
            { AverageRowPlain(source, pitch, 4, count, target); }};
}

BlockAverager::BlockAverager(std::shared_ptr<Crew> crew, SimdLevel simd)
    : crew_(std::move(crew)), kernels_(averaging::KernelsFor(simd))
{
}

void BlockAverager::Average(const PixelView& source, int factor, const PixelView& target)
{
    const int width = std::min(source.width / factor, target.width);
    const int height = std::min(source.height / factor, target.height);
    if (width < 1 || height < 1)
        return;
    const std::int64_t pixelsOfRow = std::int64_t{width} * factor * factor;
    const int unitRows = static_cast<int>(std::clamp<std::int64_t>(UnitPixelCount / pixelsOfRow, 1, height));
    auto averageRows = [&](std::size_t unit, int)
    {
        const int first = static_cast<int>(unit) * unitRows;
        for (int y = first; y < std::min(first + unitRows, height); ++y)
            kernels_.Average(factor, source.Row(y * factor), source.pitch, width, target.Row(y));
    };
    const int units = (height + unitRows - 1) / unitRows;
    crew_->Run(static_cast<std::size_t>(units), pixelsOfRow * height < SmallPixelCount, averageRows);
}

} // namespace lumora
