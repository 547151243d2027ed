// Meshes and textures made by hand, for tests of drivers.
#pragma once

#include "platform/drivers/Driver.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <tuple>
#include <vector>

namespace lumora::test
{

/// One corner of a face. Without a normal it gets the face's.
struct Corner
{
    Vector position;
    float u = 0;
    float v = 0;
    std::optional<Vector> normal = {};
    std::optional<std::uint32_t> color = {}; ///< instead of the maker's
};

/// Two ends, each by its coordinates, the lower one first.
using EdgeKey = std::pair<std::tuple<float, float, float>, std::tuple<float, float, float>>;

/// Compiles faces one by one; every corner becomes a vertex of its own. Faces are convex and clockwise seen from the
/// front.
class MeshMaker
{
public:
    std::uint32_t color = 0xFFFFFFFF; ///< of corners without their own

    /// Faces added from now on belong to a new group.
    MeshMaker& Group(SurfaceMaterial material, std::shared_ptr<const TextureImage> texture = nullptr);
    MeshMaker& Face(const std::vector<Corner>& corners);
    MeshMaker& Polygon(const std::vector<Vector>& positions);
    std::shared_ptr<const DrawMesh> Make() const;

private:
    void AddVertex(const Corner& corner, Vector faceNormal);
    void AddEdge(const std::vector<Corner>& corners, std::uint32_t side, std::uint32_t firstVertex);

    DrawMesh mesh_;
    std::map<EdgeKey, std::size_t> edgeOf_;
};

/// Items to draw; those of a mesh alone are lit, smooth and solid.
DrawItem Item(std::shared_ptr<const DrawMesh> mesh, const Matrix4& world = Matrix4::Identity());
DrawItem Unlit(DrawItem item);
DrawItem Flat(DrawItem item);
DrawItem Filled(DrawItem item, FillStyle fill);

std::shared_ptr<const DrawMesh> OneFace(const std::vector<Vector>& corners, std::uint32_t color = 0xFFFFFFFF);

/// A rectangle that faces -z at depth `z`; u goes 0 .. `repeat` to the right, v down.
std::shared_ptr<const DrawMesh> Quad(float left, float bottom, float right, float top, float z, std::uint32_t color,
                                     std::shared_ptr<const TextureImage> texture = nullptr, float repeat = 1);

/// Around the origin, every side with its own color (alpha from `alpha`) unless `texture` is on all of them.
std::shared_ptr<const DrawMesh> Cube(float halfSize, std::uint32_t alpha = 0xFF,
                                     std::shared_ptr<const TextureImage> texture = nullptr);

/// Around the origin, smooth, of quadrangles with triangles at the poles.
std::shared_ptr<const DrawMesh> Sphere(float radius, int rings, int segments, std::uint32_t color,
                                       SurfaceMaterial material = {},
                                       std::shared_ptr<const TextureImage> texture = nullptr);

/// A floor in the plane y 0 that faces up, of `cells` by `cells` squares; texture coordinates repeat per cell.
std::shared_ptr<const DrawMesh> Floor(float halfSize, int cells, std::uint32_t color,
                                      std::shared_ptr<const TextureImage> texture = nullptr);

/// Triangles strewn over a cube of +-`spread`, each at most `size` large, in colors of their own. The same for the
/// same seed everywhere.
std::shared_ptr<const DrawMesh> Confetti(int count, float spread, float size, std::uint32_t alpha, unsigned seed);

std::shared_ptr<const TextureImage> MakeTexture(int width, int height, std::vector<std::uint32_t> pixels);

/// Squares of `cell` pixels in two colors.
std::shared_ptr<const TextureImage> Checkerboard(int size, int cell, std::uint32_t first, std::uint32_t second);

/// Red grows to the right, green downwards, alpha falls to the right from 255 to `lastAlpha`.
std::shared_ptr<const TextureImage> Ramp(int width, int height, std::uint32_t lastAlpha = 0xFF);

} // namespace lumora::test
