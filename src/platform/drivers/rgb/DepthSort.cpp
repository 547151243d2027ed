#include "platform/drivers/rgb/DepthSort.h"

#include <algorithm>
#include <bit>
#include <tuple>
#include <utility>

namespace lumora::rgb
{

namespace
{

/// They come in order of submission.
void SortStretch(std::span<SortedPlace> places)
{
    constexpr std::size_t Few = 32;
    if (places.size() > Few)
    {
        std::ranges::sort(places, [](const SortedPlace& a, const SortedPlace& b)
                          { return std::tie(a.key, a.number) < std::tie(b.key, b.number); });
        return;
    }
    for (std::size_t i = 1; i < places.size(); ++i)
    {
        const SortedPlace place = places[i];
        std::size_t to = i;
        for (; to > 0 && places[to - 1].key > place.key; --to)
            places[to] = places[to - 1];
        places[to] = place;
    }
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
    for (List& list : lists_)
    {
        list.first = end;
        end += list.count;
    }
    std::uint32_t place = 0;
    for (std::uint32_t bucket = 0; bucket < Buckets; ++bucket)
    {
        for (List& list : lists_)
            place += std::exchange(list.places[bucket], place);
        ends_[bucket] = place;
    }
    return end;
}

void DepthSort::Distribute(std::size_t list, std::span<const SortedTriangle> triangles, SortedTriangle* sorted,
                           SortedPlace* order)
{
    List& from = lists_[list];
    std::ranges::copy(triangles, sorted + from.first);
    for (std::uint32_t i = 0; i < from.count; ++i)
        order[from.places[BucketOf(triangles[i].key)]++] = {triangles[i].key, from.first + i};
}

void DepthSort::SortBuckets(std::uint32_t first, SortedPlace* order) const
{
    for (std::uint32_t bucket = first; bucket < first + BucketsPerTask; ++bucket)
        SortStretch({order + (bucket == 0 ? 0 : ends_[bucket - 1]), order + ends_[bucket]});
}

} // namespace lumora::rgb
