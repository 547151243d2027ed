// Puts what waits into the order of drawing, in stages that threads share: by the bucket of its key, then within each
// bucket. Equal keys keep the order of submission.
#pragma once

#include "platform/drivers/rgb/Frame.h"

#include <span>
#include <vector>

namespace lumora::rgb
{

class DepthSort
{
public:
    static constexpr std::uint32_t Buckets = 256;
    static constexpr std::uint32_t BucketsPerTask = 4;

    /// Nothing is counted; there will be lists 0 to `lists` - 1.
    void Start(std::size_t lists);

    /// The triangles of one list: for each list once, after the keys of all are known.
    void Count(std::size_t list, std::span<const SortedTriangle> triangles);

    /// The range of all keys; before anything is counted.
    void SetRange(std::uint32_t least, std::uint32_t greatest);

    /// After all are counted. Answers how many there are.
    std::uint32_t Place();

    /// Writes the places of a list's triangles, counted before, to where they belong. `order` has room for all.
    void Distribute(std::size_t list, std::span<const SortedTriangle> triangles, SortedPlace* order);

    /// After all are distributed: sorts BucketsPerTask buckets, from `first` on.
    void SortBuckets(std::uint32_t first, SortedPlace* order) const;

    std::size_t HeldBytes() const { return lists_.capacity() * sizeof(List); }

private:
    struct List
    {
        std::uint32_t count = 0;
        std::uint32_t places[Buckets] = {}; ///< in the order: how many, then the next one's
    };

    std::uint32_t BucketOf(std::uint32_t key) const { return (key - least_) >> shift_; }

    std::vector<List> lists_;
    std::uint32_t least_ = 0;
    int shift_ = 0;
    std::uint32_t ends_[Buckets] = {};
};

} // namespace lumora::rgb
