#include "geometry/PointTree.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace lumora
{

namespace
{

constexpr std::int32_t LeafSize = 8;

} // namespace

void PlaneBox::Include(PlanePoint p)
{
    left = std::min(left, p.x);
    right = std::max(right, p.x);
    top = std::min(top, p.y);
    bottom = std::max(bottom, p.y);
}

EarRegion::EarRegion(PlanePoint a, PlanePoint b, PlanePoint c, double angle, double margin) : margin_(margin)
{
    const double slope = std::tan(angle) / 2;
    const auto lens = [slope](PlanePoint from, PlanePoint to)
    {
        const PlanePoint middle{(from.x + to.x) / 2, (from.y + to.y) / 2};
        const PlanePoint across{(from.y - to.y) * slope, (to.x - from.x) * slope};
        return PieceOf<4>(
            {from, {middle.x - across.x, middle.y - across.y}, to, {middle.x + across.x, middle.y + across.y}});
    };
    pieces_ = {PieceOf<3>({a, b, c}), lens(a, b), lens(b, c), lens(c, a)};
}

template<std::size_t Count>
EarRegion::Piece EarRegion::PieceOf(const std::array<PlanePoint, Count>& corners)
{
    Piece piece;
    double area = 0;
    for (std::size_t i = 0; i < Count; ++i)
    {
        const PlanePoint from = corners[i];
        const PlanePoint to = corners[(i + 1) % Count];
        piece.box.Include(from);
        area += (from.x - corners[0].x) * (to.y - corners[0].y) - (to.x - corners[0].x) * (from.y - corners[0].y);
    }
    if (area == 0)
        return piece;
    for (std::size_t i = 0; i < Count; ++i)
    {
        const PlanePoint from = corners[i];
        const PlanePoint to = corners[(i + 1) % Count];
        const double length = std::hypot(to.x - from.x, to.y - from.y);
        if (!(length > 0))
            continue;
        const double sign = (area > 0 ? 1 : -1) / length;
        const double nx = (to.y - from.y) * sign;
        const double ny = (from.x - to.x) * sign;
        piece.sides[piece.sideCount++] = {nx, ny, nx * from.x + ny * from.y};
    }
    return piece;
}

bool EarRegion::Meets(const Piece& piece, const PlaneBox& box)
{
    if (box.right < piece.box.left || box.left > piece.box.right || box.bottom < piece.box.top ||
        box.top > piece.box.bottom)
        return false;
    for (std::size_t i = 0; i < piece.sideCount; ++i)
    {
        const auto& side = piece.sides[i];
        const double nearest =
            side.nx * (side.nx > 0 ? box.left : box.right) + side.ny * (side.ny > 0 ? box.top : box.bottom);
        if (nearest > side.d)
            return false;
    }
    return true;
}

bool EarRegion::MayMeet(PlaneBox box) const
{
    box = {box.left - margin_, box.top - margin_, box.right + margin_, box.bottom + margin_};
    return std::ranges::any_of(pieces_, [&](const Piece& piece) { return Meets(piece, box); });
}

PointTree::PointTree(std::vector<PlanePoint> points)
    : points_(std::move(points)), order_(points_.size()), leafOf_(points_.size())
{
    const auto count = static_cast<std::int32_t>(points_.size());
    std::iota(order_.begin(), order_.end(), 0);
    nodes_.reserve(points_.size() / (LeafSize / 4) + 1);
    nodes_.push_back({{}, 0, count, count, -1});
    for (std::size_t node = 0; node < nodes_.size(); ++node)
        Split(node);
}

// Halves a node's points along the longer side of their box, or makes it a leaf.
void PointTree::Split(std::size_t index)
{
    Node& node = nodes_[index];
    for (std::int32_t at = node.begin; at < node.end; ++at)
        node.box.Include(points_[static_cast<std::size_t>(order_[static_cast<std::size_t>(at)])]);
    if (node.left <= LeafSize)
    {
        for (std::int32_t at = node.begin; at < node.end; ++at)
            leafOf_[static_cast<std::size_t>(order_[static_cast<std::size_t>(at)])] = static_cast<std::int32_t>(index);
        return;
    }
    const bool wide = node.box.right - node.box.left > node.box.bottom - node.box.top;
    const std::int32_t begin = node.begin;
    const std::int32_t end = node.end;
    const auto parent = static_cast<std::int32_t>(index);
    const std::int32_t middle = begin + (end - begin) / 2;
    std::nth_element(order_.begin() + begin, order_.begin() + middle, order_.begin() + end,
                     [&](std::int32_t a, std::int32_t b)
                     {
                         const PlanePoint p = points_[static_cast<std::size_t>(a)];
                         const PlanePoint q = points_[static_cast<std::size_t>(b)];
                         return wide ? p.x < q.x : p.y < q.y;
                     });
    node.child = static_cast<std::int32_t>(nodes_.size());
    nodes_.push_back({{}, begin, middle, middle - begin, parent});
    nodes_.push_back({{}, middle, end, end - middle, parent});
}

void PointTree::Remove(std::int32_t point)
{
    std::int32_t& leaf = leafOf_[static_cast<std::size_t>(point)];
    for (std::int32_t node = leaf; node >= 0; node = nodes_[static_cast<std::size_t>(node)].parent)
        --nodes_[static_cast<std::size_t>(node)].left;
    leaf = -1;
}

} // namespace lumora
