#include "platform/drivers/rgb/DepthSort.h"

#include <algorithm>
#include <bit>
#include <tuple>
#include <utility>

namespace lumora::rgb
{

namespace
{

/// They come in order of submission. Best where few are out of place.
void SortByInsertion(std::span<SortedPlace> places)
{
    for (std::size_t i = 1; i < places.size(); ++i)
    {
        const SortedPlace place = places[i];
        std::size_t to = i;
        for (; to > 0 && places[to - 1].key > place.key; --to)
            places[to] = places[to - 1];
        places[to] = place;
    }
}

constexpr std::size_t MostInParts = 256;
constexpr int PartBits = 5;

/// Puts up to MostInParts places into the order of PartBits bits of their keys, the lowest of which is bit `shift` of
/// what exceeds `least`; those of equal bits stay in order.
void SortByParts(std::span<SortedPlace> places, std::uint32_t least, int shift)
{
    constexpr std::uint32_t Parts = 1U << PartBits;
    const auto partOf = [&](const SortedPlace& place) { return (place.key - least) >> shift & (Parts - 1); };
    std::uint32_t next[Parts + 1]{};
    for (const SortedPlace& place : places)
        ++next[partOf(place) + 1];
    for (std::uint32_t part = 1; part < Parts; ++part)
        next[part] += next[part - 1];
    SortedPlace sorted[MostInParts];
    for (const SortedPlace& place : places)
        sorted[next[partOf(place)]++] = place;
    std::copy_n(sorted, places.size(), places.begin());
}

/// They come in order of submission, and differ in the lowest `shift` bits of what their keys exceed `least` by.
void SortStretch(std::span<SortedPlace> places, std::uint32_t least, int shift)
{
    constexpr std::size_t Few = 12;
    if (shift == 0)
        return;
    if (places.size() > MostInParts)
    {
        std::ranges::sort(places, [](const SortedPlace& a, const SortedPlace& b)
                          { return std::tie(a.key, a.number) < std::tie(b.key, b.number); });
        return;
    }
    if (places.size() > Few)
        SortByParts(places, least, std::max(shift - PartBits, 0));
    SortByInsertion(places);
}

} // namespace

void DepthSort::Start(std::size_t lists)
{
    lists_.assign(lists, {});
}

void DepthSort::SetRange(std::uint32_t least, std::uint32_t greatest)
{
    least_ = least;
    shift_ =
        std::max(0, static_cast<int>(std::bit_width(greatest - least)) - static_cast<int>(std::bit_width(Buckets - 1)));
}

void DepthSort::Count(std::size_t list, std::span<const SortedTriangle> triangles)
{
    List& counted = lists_[list];
    counted.count = static_cast<std::uint32_t>(triangles.size());
    for (const SortedTriangle& triangle : triangles)
        ++counted.places[BucketOf(triangle.key)];
}

std::uint32_t DepthSort::Place()
{
    std::uint32_t end = 0;
    for (const List& list : lists_)
        end += list.count;
    std::uint32_t place = 0;
    for (std::uint32_t bucket = 0; bucket < Buckets; ++bucket)
    {
        for (List& list : lists_)
            place += std::exchange(list.places[bucket], place);
        ends_[bucket] = place;
    }
    return end;
}

void DepthSort::Distribute(std::size_t list, std::span<const SortedTriangle> triangles, SortedPlace* order)
{
    List& from = lists_[list];
    for (std::uint32_t i = 0; i < from.count; ++i)
        order[from.places[BucketOf(triangles[i].key)]++] = {triangles[i].key,
                                                            SortedPlace::NumberOf(static_cast<std::uint32_t>(list), i)};
}

void DepthSort::SortBuckets(std::uint32_t first, SortedPlace* order) const
{
    for (std::uint32_t bucket = first; bucket < first + BucketsPerTask; ++bucket)
        SortStretch({order + (bucket == 0 ? 0 : ends_[bucket - 1]), order + ends_[bucket]}, least_, shift_);
}

} // namespace lumora::rgb
