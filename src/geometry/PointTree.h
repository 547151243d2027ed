// Points of a plane that can be searched by region and removed one by one.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace lumora
{

struct PlanePoint
{
    double x = 0;
    double y = 0;
};

struct PlaneBox
{
    double left = std::numeric_limits<double>::infinity();
    double top = std::numeric_limits<double>::infinity();
    double right = -std::numeric_limits<double>::infinity();
    double bottom = -std::numeric_limits<double>::infinity();

    void Include(PlanePoint p);
};

/// Where a point may lie that sees a triangle nearly all around: the triangle, and beyond each edge a flat lens (taken
/// for a rhombus) of the points that see the edge under almost half a turn.
class EarRegion
{
public:
    /// `angle` (radians): how much less than half a turn an edge may be seen under; `margin` is added all around.
    EarRegion(PlanePoint a, PlanePoint b, PlanePoint c, double angle, double margin);

    /// False only when nothing of the box lies in the region.
    bool MayMeet(PlaneBox box) const;

private:
    /// A convex polygon as its box and, unless it has no area, the half-planes n · p <= d whose intersection it is.
    struct Piece
    {
        struct HalfPlane
        {
            double nx;
            double ny;
            double d;
        };

        PlaneBox box;
        std::array<HalfPlane, 4> sides{};
        std::size_t sideCount = 0;
    };

    template<std::size_t Count>
    static Piece PieceOf(const std::array<PlanePoint, Count>& corners);
    static bool Meets(const Piece& piece, const PlaneBox& box);

    std::array<Piece, 4> pieces_;
    double margin_;
};

class PointTree
{
public:
    explicit PointTree(std::vector<PlanePoint> points);

    void Remove(std::int32_t point);

    /// The first point left in the region (in no particular order) for which `matches` is true, or -1. `work` counts
    /// the boxes and points looked at.
    template<typename Matches>
    std::int32_t Find(const EarRegion& region, std::int64_t& work, Matches&& matches)
    {
        pending_.assign(1, 0);
        while (!pending_.empty())
        {
            const Node& node = nodes_[static_cast<std::size_t>(pending_.back())];
            pending_.pop_back();
            ++work;
            if (node.left == 0 || !region.MayMeet(node.box))
                continue;
            if (node.child >= 0)
            {
                pending_.push_back(node.child + 1);
                pending_.push_back(node.child);
                continue;
            }
            for (std::int32_t at = node.begin; at < node.end; ++at)
            {
                const std::int32_t point = order_[static_cast<std::size_t>(at)];
                const PlanePoint p = points_[static_cast<std::size_t>(point)];
                ++work;
                if (leafOf_[static_cast<std::size_t>(point)] >= 0 && region.MayMeet({p.x, p.y, p.x, p.y}) &&
                    matches(point))
                    return point;
            }
        }
        return -1;
    }

private:
    struct Node
    {
        PlaneBox box;
        std::int32_t begin; // of order_
        std::int32_t end;
        std::int32_t left; // points not yet removed
        std::int32_t parent;
        std::int32_t child = -1; // the first of two neighbours; none in a leaf
    };

    void Split(std::size_t node);

    std::vector<PlanePoint> points_;
    std::vector<std::int32_t> order_;  // points, leaf by leaf
    std::vector<std::int32_t> leafOf_; // of each point; -1 once removed
    std::vector<Node> nodes_;
    std::vector<std::int32_t> pending_; // kept for its memory
};

} // namespace lumora
