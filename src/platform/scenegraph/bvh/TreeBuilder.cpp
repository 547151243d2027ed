// Building a tree from the top: wide nodes by repeated splits in two, each where binned surface areas say it costs
// least.
#include "platform/scenegraph/bvh/BoxTree.h"

#include <bit>
#include <cstring>

namespace lumora::rays
{

namespace
{

// Four numbers at once, in what vectors the compiler has for any processor; the fourth means nothing.
using Quad = float __attribute__((vector_size(16)));
using WholeQuad = std::int32_t __attribute__((vector_size(16)));

constexpr float Infinity = std::numeric_limits<float>::infinity();
constexpr int MaximumBins = 16;

// From here on ranges are cut in half: no input makes a deeper tree than 40 levels and the logarithm of what is left.
constexpr int DeepestByArea = 40;

Quad Loaded(const float* from)
{
    Quad result;
    std::memcpy(&result, from, sizeof(result));
    return result;
}
Quad Least(Quad a, Quad b)
{
    return a < b ? a : b;
}
Quad Greatest(Quad a, Quad b)
{
    return a > b ? a : b;
}
Quad Splat(float value)
{
    return Quad{value, value, value, value};
}

// Half the surface.
float AreaOf(Quad lower, Quad upper)
{
    const Quad size = upper - lower;
    return size[0] * size[1] + size[1] * size[2] + size[2] * size[0];
}

// Item identities stand in a Single's bits: with this one set they are ordinary numbers, which compute fast.
constexpr std::uint32_t IdentityBit = 0x40000000;

} // namespace

std::uint32_t BoxItem::Id() const
{
    return std::bit_cast<std::uint32_t>(lower[3]) & ~IdentityBit;
}

void BoxItem::SetId(std::uint32_t id)
{
    lower[3] = std::bit_cast<float>(id | IdentityBit);
    upper[3] = 0;
}

struct TreeBuilder::Range
{
    std::uint32_t first = 0;
    std::uint32_t end = 0;
    Quad lower = Splat(Infinity);
    Quad upper = Splat(-Infinity);
    Quad lowestCentre = Splat(Infinity); ///< twice the centres, to be exact
    Quad highestCentre = Splat(-Infinity);

    std::uint32_t Count() const { return end - first; }
    float Area() const { return AreaOf(lower, upper); }
    void Include(Quad itemLower, Quad itemUpper)
    {
        const Quad centre = itemLower + itemUpper;
        lower = Least(lower, itemLower);
        upper = Greatest(upper, itemUpper);
        lowestCentre = Least(lowestCentre, centre);
        highestCentre = Greatest(highestCentre, centre);
    }
};

TreeBuilder::Range TreeBuilder::Measured(std::uint32_t first, std::uint32_t end) const
{
    Range range;
    range.first = first;
    range.end = end;
    for (std::uint32_t i = first; i < end; ++i)
        range.Include(Loaded(items_[i].lower), Loaded(items_[i].upper));
    return range;
}

// Items by the place of their centres, along all three axes at once.
struct TreeBuilder::Bins
{
    Quad origin;
    Quad scale;
    int count;
    Quad lower[MaximumBins][3];
    Quad upper[MaximumBins][3];
    std::uint32_t items[MaximumBins][4];

    explicit Bins(const Range& range)
        : origin(range.lowestCentre),
          count(static_cast<int>(std::min(std::uint32_t{MaximumBins}, 4 + range.Count() / 8)))
    {
        const Quad size = range.highestCentre - range.lowestCentre;
        for (int axis = 0; axis < 4; ++axis)
        {
            const float wanted = 0.999F * static_cast<float>(count) / size[axis];
            scale[axis] = axis < 3 && wanted < 1e30F ? wanted : 0; // no extent: everything is in the first bin
        }
        for (int bin = 0; bin < count; ++bin)
            for (int axis = 0; axis < 3; ++axis)
            {
                lower[bin][axis] = Splat(Infinity);
                upper[bin][axis] = Splat(-Infinity);
                items[bin][axis] = 0;
            }
    }

    WholeQuad BinOf(Quad itemLower, Quad itemUpper) const
    {
        return __builtin_convertvector((itemLower + itemUpper - origin) * scale, WholeQuad);
    }

    void Add(Quad itemLower, Quad itemUpper)
    {
        const WholeQuad bin = BinOf(itemLower, itemUpper);
        for (int axis = 0; axis < 3; ++axis)
        {
            const auto place = static_cast<std::size_t>(bin[axis]);
            ++items[place][axis];
            lower[place][axis] = Least(lower[place][axis], itemLower);
            upper[place][axis] = Greatest(upper[place][axis], itemUpper);
        }
    }
};

// Sorts a range into those that are left and the others, and measures both in passing.
template<typename IsLeft>
void TreeBuilder::Partition(const Range& range, IsLeft&& isLeft, Range& left, Range& right)
{
    BoxItem* low = items_.data() + range.first;
    BoxItem* high = items_.data() + range.end;
    left = Range{};
    right = Range{};
    while (low < high)
    {
        Quad lower = Loaded(low->lower);
        Quad upper = Loaded(low->upper);
        if (isLeft(lower, upper))
        {
            left.Include(lower, upper);
            ++low;
            continue;
        }
        while (true)
        {
            right.Include(lower, upper);
            --high;
            if (low == high)
                break;
            lower = Loaded(high->lower);
            upper = Loaded(high->upper);
            if (isLeft(lower, upper))
            {
                left.Include(lower, upper);
                std::swap(*low, *high);
                ++low;
                break;
            }
        }
    }
    left.first = range.first;
    left.end = right.first = static_cast<std::uint32_t>(low - items_.data());
    right.end = range.end;
}

bool TreeBuilder::SplitByBins(const Range& range, Range& left, Range& right)
{
    Bins bins{range};
    for (std::uint32_t i = range.first; i < range.end; ++i)
        bins.Add(Loaded(items_[i].lower), Loaded(items_[i].upper));

    const auto leaves = [this](std::uint32_t count) { return static_cast<float>((count + leafSize_ - 1) / leafSize_); };
    float least = Infinity;
    int bestAxis = 0;
    int bestBin = 0;
    for (int axis = 0; axis < 3; ++axis)
    {
        if (bins.scale[axis] == 0)
            continue;
        float costAfter[MaximumBins];
        Quad lower = Splat(Infinity);
        Quad upper = Splat(-Infinity);
        std::uint32_t count = 0;
        for (int bin = bins.count - 1; bin > 0; --bin)
        {
            lower = Least(lower, bins.lower[bin][axis]);
            upper = Greatest(upper, bins.upper[bin][axis]);
            count += bins.items[bin][axis];
            costAfter[bin] = count > 0 ? AreaOf(lower, upper) * leaves(count) : Infinity;
        }
        lower = Splat(Infinity);
        upper = Splat(-Infinity);
        count = 0;
        for (int bin = 1; bin < bins.count; ++bin)
        {
            lower = Least(lower, bins.lower[bin - 1][axis]);
            upper = Greatest(upper, bins.upper[bin - 1][axis]);
            count += bins.items[bin - 1][axis];
            const float cost = count > 0 ? AreaOf(lower, upper) * leaves(count) + costAfter[bin] : Infinity;
            if (cost < least)
            {
                least = cost;
                bestAxis = axis;
                bestBin = bin;
            }
        }
    }
    if (bestBin == 0)
        return false;
    Partition(
        range, [&](Quad lower, Quad upper) { return bins.BinOf(lower, upper)[bestAxis] < bestBin; }, left, right);
    return true;
}

void TreeBuilder::Split(const Range& range, int depth, Range& left, Range& right)
{
    if (depth < DeepestByArea && SplitByBins(range, left, right))
        return;
    const std::uint32_t middle = range.first + range.Count() / 2;
    left = Measured(range.first, middle);
    right = Measured(middle, range.end);
}

Reference TreeBuilder::BuildRange(BoxTree& tree, const Range& range, int depth, std::uint32_t parent,
                                  std::uint32_t lane)
{
    if (range.Count() <= leafSize_)
        return LeafBit | makeLeaf_(context_, {items_.data() + range.first, range.Count()});
    Range parts[Node::Width];
    parts[0] = range;
    int count = 1;
    while (count < Node::Width)
    {
        int largest = -1;
        for (int part = 0; part < count; ++part)
            if (parts[part].Count() > leafSize_ && (largest < 0 || parts[part].Area() > parts[largest].Area()))
                largest = part;
        if (largest < 0)
            break;
        const Range whole = parts[largest];
        Split(whole, depth, parts[largest], parts[count]);
        ++count;
    }
    const auto index = static_cast<std::uint32_t>(tree.nodes.size());
    tree.nodes.emplace_back();
    tree.nodes[index].parent = parent;
    tree.nodes[index].laneAbove = lane;
    for (int part = 0; part < count; ++part)
    {
        const Range& own = parts[part];
        tree.nodes[index].SetLane(part, {own.lower[0], own.lower[1], own.lower[2]},
                                  {own.upper[0], own.upper[1], own.upper[2]});
        const Reference child = BuildRange(tree, own, depth + 1, index, static_cast<std::uint32_t>(part));
        tree.nodes[index].child[part] = child;
    }
    return index;
}

void TreeBuilder::Build(BoxTree& tree)
{
    tree.nodes.clear();
    tree.root = NoReference;
    if (items_.empty())
        return;
    tree.nodes.reserve(items_.size() / (2 * leafSize_) + 1);
    const Range all = Measured(0, static_cast<std::uint32_t>(items_.size()));
    tree.root = BuildRange(tree, all, 0, NoReference, 0);
}

} // namespace lumora::rays
