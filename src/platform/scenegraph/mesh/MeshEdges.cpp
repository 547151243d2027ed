// Sides between the same two vertices belong together two by two: the later one learns which came first.
#include "platform/scenegraph/mesh/MeshEdges.h"

#include "parallel/InParallel.h"

#include <algorithm>
#include <atomic>
#include <span>

namespace lumora
{

namespace
{

constexpr std::uint32_t None = DrawnFaces::None;

// A side of a face at the lower of its two vertices.
struct Side
{
    std::uint32_t other;  // the higher vertex
    std::uint32_t corner; // where the side begins
};

class EdgeFinder
{
public:
    EdgeFinder(const MeshData& data, const VertexCorners& around, const DrawnFaces& drawn)
        : data_(data), around_(around), drawn_(drawn), mate_(data.CornerCount(), None)
    {
    }

    void Run(const FaceOrder& order, DrawMesh& mesh)
    {
        mesh.edges.reserve(PairSides());
        for (std::size_t group = 0; group < mesh.groups.size(); ++group)
        {
            const auto firstEdge = static_cast<std::uint32_t>(mesh.edges.size());
            for (std::uint32_t place = order.groupFaces[group]; place < order.groupFaces[group + 1]; ++place)
                if (const std::uint32_t face = order.FaceAt(place); drawn_.firstTriangle[face] != None)
                    StoreFace(face, mesh);
            mesh.groups[group].firstEdge = firstEdge;
            mesh.groups[group].edgeCount = static_cast<std::uint32_t>(mesh.edges.size()) - firstEdge;
        }
    }

private:
    // Each side that was stored leaves the number of its edge in the place of its mate, which nobody asks again.
    void StoreFace(std::uint32_t face, DrawMesh& mesh)
    {
        const std::uint32_t first = data_.faceStart[face];
        const std::uint32_t end = data_.faceStart[face + 1];
        for (std::uint32_t corner = first; corner < end; ++corner)
        {
            const std::uint32_t next = corner + 1 == end ? first : corner + 1;
            if (data_.cornerVertex[corner] == data_.cornerVertex[next])
                continue;
            const std::uint32_t triangle = drawn_.SideTriangleOf(face, corner);
            if (const std::uint32_t mate = mate_[corner]; mate != None)
            {
                mesh.edges[mate_[mate]].triangleB = triangle;
                continue;
            }
            mate_[corner] = static_cast<std::uint32_t>(mesh.edges.size());
            mesh.edges.push_back({drawn_.VertexOf(mesh, face, corner), drawn_.VertexOf(mesh, face, next), triangle});
        }
    }

    // Answers how many sides have no earlier one at their edge.
    std::size_t PairSides()
    {
        constexpr std::size_t Few = 24; // corners, up to which looking through all sides is quick
        std::atomic<std::size_t> edges{0};
        const auto pair = [&](std::size_t, std::size_t first, std::size_t end)
        {
            std::vector<Side> sides;
            std::size_t unpaired = 0;
            for (std::size_t vertex = first; vertex < end; ++vertex)
            {
                sides.clear();
                if (around_.Around(vertex).size() <= Few)
                    VisitSides(static_cast<std::uint32_t>(vertex),
                               [&](const Side& side) { unpaired += PairWithOpen(sides, side) ? 0 : 1; });
                else
                {
                    VisitSides(static_cast<std::uint32_t>(vertex), [&](const Side& side) { sides.push_back(side); });
                    unpaired += sides.size() - PairCrowded(sides);
                }
            }
            edges += unpaired;
        };
        InParallel(data_.vertices.size(), pair);
        return edges;
    }

    // Calls `visit` (side) for the sides whose lower vertex this is, in the order of drawing.
    template<typename Visit>
    void VisitSides(std::uint32_t vertex, Visit&& visit) const
    {
        const std::uint32_t* const vertexOf = data_.cornerVertex.data();
        for (const std::uint32_t corner : around_.Around(vertex))
        {
            const std::uint32_t face = around_.FaceOf(corner);
            if (drawn_.firstTriangle[face] == None)
                continue;
            const bool isTriangle = around_.AreTriangles(); // spares looking the face up
            const std::uint32_t first = isTriangle ? 3 * face : data_.faceStart[face];
            const std::uint32_t last = isTriangle ? first + 2 : data_.faceStart[face + 1] - 1;
            const Side toHere{vertexOf[corner == first ? last : corner - 1], corner == first ? last : corner - 1};
            const Side fromHere{vertexOf[corner == last ? first : corner + 1], corner};
            const bool inOrder = toHere.corner < fromHere.corner;
            for (const Side& side : {inOrder ? toHere : fromHere, inOrder ? fromHere : toHere})
                if (side.other > vertex)
                    visit(side);
        }
    }

    // `open` are the sides that have no mate yet, one for each other vertex.
    bool PairWithOpen(std::vector<Side>& open, const Side& side)
    {
        for (Side& earlier : open)
            if (earlier.other == side.other)
            {
                mate_[side.corner] = earlier.corner;
                earlier = open.back();
                open.pop_back();
                return true;
            }
        open.push_back(side);
        return false;
    }

    // The same for any number of sides. Answers how many found an earlier one.
    std::size_t PairCrowded(std::span<Side> sides)
    {
        std::size_t pairs = 0;
        std::ranges::stable_sort(sides, {}, &Side::other);
        for (std::size_t i = 0; i + 1 < sides.size(); ++i)
            if (sides[i].other == sides[i + 1].other)
            {
                mate_[sides[i + 1].corner] = sides[i].corner;
                ++pairs;
                ++i;
            }
        return pairs;
    }

    const MeshData& data_;
    const VertexCorners& around_;
    const DrawnFaces& drawn_;
    rays::LargeArray<std::uint32_t> mate_; // of each corner's side: the earlier side at the same edge
};

} // namespace

void FindEdges(const MeshData& data, const VertexCorners& around, const FaceOrder& order, const DrawnFaces& drawn,
               DrawMesh& mesh)
{
    EdgeFinder{data, around, drawn}.Run(order, mesh);
}

} // namespace lumora
