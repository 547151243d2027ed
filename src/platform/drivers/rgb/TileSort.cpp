#include "platform/drivers/rgb/TileSort.h"

#include "platform/drivers/rgb/Setup.h"

#include <algorithm>
#include <bit>
#include <tuple>

namespace lumora::rgb
{

namespace
{

static_assert(MostRecords == std::size_t{1} << SortedRecord::RecordBits);

constexpr int BucketBits = 8;
constexpr int PartBits = 5;
constexpr std::size_t MostInParts = 256;
constexpr std::size_t Few = 12; ///< are best put in order by insertion

/// They come in order of submission. Best where few are out of place.
void SortByInsertion(std::span<SortedRecord> records)
{
    for (std::size_t i = 1; i < records.size(); ++i)
    {
        const SortedRecord record = records[i];
        std::size_t to = i;
        for (; to > 0 && records[to - 1].key > record.key; --to)
            records[to] = records[to - 1];
        records[to] = record;
    }
}

/// Writes records to `to` in the order of `Bits` bits of their keys, the lowest of which is bit `shift` of what exceeds
/// `least`; those of equal bits stay in order. Answers where each number's records end.
template<int Bits>
class BitSort
{
public:
    BitSort(std::span<const SortedRecord> records, std::uint32_t least, int shift, SortedRecord* to)
    {
        const auto bucketOf = [&](const SortedRecord& record) { return (record.key - least) >> shift & (Count - 1); };
        for (const SortedRecord& record : records)
            ++ends_[bucketOf(record) + 1];
        for (std::uint32_t bucket = 1; bucket < Count; ++bucket)
            ends_[bucket] += ends_[bucket - 1];
        for (const SortedRecord& record : records)
            to[ends_[bucketOf(record)]++] = record;
    }

    static constexpr std::uint32_t Count = 1U << Bits;
    std::uint32_t EndOf(std::uint32_t bucket) const { return ends_[bucket]; }

private:
    std::uint32_t ends_[Count + 1]{};
};

/// They come in order of submission, and differ in the lowest `shift` bits of what their keys exceed `least` by.
void SortStretch(std::span<SortedRecord> records, std::uint32_t least, int shift)
{
    if (records.size() > MostInParts)
    {
        std::ranges::sort(records, [](const SortedRecord& a, const SortedRecord& b)
                          { return std::tie(a.key, a.number) < std::tie(b.key, b.number); });
        return;
    }
    if (records.size() > Few)
    {
        SortedRecord sorted[MostInParts];
        BitSort<PartBits>{records, least, std::max(shift - PartBits, 0), sorted};
        std::copy_n(sorted, records.size(), records.begin());
    }
    SortByInsertion(records);
}

} // namespace

void TileSort::Reserve(std::size_t count)
{
    listed_.Renew(count);
    sorted_.Renew(count);
}

std::span<const SortedRecord> TileSort::Sort(std::span<const Bins> bins, std::uint32_t tile)
{
    std::size_t count = 0;
    std::uint32_t least = ~std::uint32_t{0};
    std::uint32_t greatest = 0;
    for (std::size_t number = 0; number < bins.size(); ++number)
    {
        const Bins& from = bins[number];
        for (std::uint32_t i = from.offsets[tile]; i < from.offsets[tile + 1]; ++i)
        {
            const std::uint32_t record = from.references[i];
            const std::uint32_t key = from.keys[record];
            least = std::min(least, key);
            greatest = std::max(greatest, key);
            listed_[count++] = {key, SortedRecord::NumberOf(number, record)};
        }
    }
    const std::span<SortedRecord> listed{listed_.Data(), count};
    if (count <= Few)
    {
        SortByInsertion(listed);
        return listed;
    }
    const int shift = std::max(0, static_cast<int>(std::bit_width(greatest - least)) - BucketBits);
    const BitSort<BucketBits> buckets{listed, least, shift, sorted_.Data()};
    std::uint32_t first = 0;
    for (std::uint32_t bucket = 0; shift != 0 && bucket < buckets.Count; ++bucket)
    {
        const std::uint32_t end = buckets.EndOf(bucket);
        if (end - first > 1)
            SortStretch({sorted_.Data() + first, end - first}, least, shift);
        first = end;
    }
    return {sorted_.Data(), count};
}

} // namespace lumora::rgb
