#include "platform/scenegraph/bvh/MeshRays.h"

namespace lumora::rays
{

namespace
{

// Up to so many triangles a tree is built in no more time than a few sweeps take.
constexpr std::uint32_t SmallMesh = 64;

// Building a tree takes as long as 60 to 300 sweeps, from a thousand triangles to a million (pick-rates measures it). A
// mesh that was swept about so often has cost, in the worst case, not much more than twice what would have been best.
constexpr std::uint32_t SweepsPerTree = 100;

double MeetsMeshTriangle(const DrawMesh& mesh, const ShearedRay& ray, std::size_t triangle, double limit)
{
    float corners[3][3];
    for (std::size_t corner = 0; corner < 3; ++corner)
    {
        const std::uint32_t vertex = mesh.indices[3 * triangle + corner];
        corners[corner][0] = mesh.x[vertex];
        corners[corner][1] = mesh.y[vertex];
        corners[corner][2] = mesh.z[vertex];
    }
    return MeetsTriangle(ray, corners[0], corners[1], corners[2], limit);
}

template<typename Found>
void VisitAll(const DrawMesh& mesh, const LocalRay& ray, Found&& found)
{
    const ShearedRay sheared = Sheared(ray);
    for (std::uint32_t triangle = 0; triangle < mesh.TriangleCount(); ++triangle)
        if (const double distance = MeetsMeshTriangle(mesh, sheared, triangle, Missed); distance < Missed)
            found(TriangleHit{distance, triangle});
}

// The plane across the ray in which vertices are sorted by side: that of the triangle test, seen from where the ray
// enters the mesh, in Singles of about 1.
SideTest SidesOf(const LocalRay& ray, const ShearedRay& sheared, const DoubleBox& bounds, double start)
{
    const double reach = bounds.Reach();
    const double scale = std::clamp(ScaleFor(reach), 0x1p-126, 0x1p126);
    const Double3 far = ray.direction * start;
    const Double3 entry = ray.origin + far;
    const double place[3] = {entry.x, entry.y, entry.z};
    const auto [x, y, z] = sheared.axis;
    SideTest test{};
    test.alongX[x] = test.alongY[y] = static_cast<float>(scale);
    test.alongX[z] = static_cast<float>(-sheared.shearX * scale);
    test.alongY[z] = static_cast<float>(-sheared.shearY * scale);
    test.offsetX = static_cast<float>(-(place[x] - sheared.shearX * place[z]) * scale);
    test.offsetY = static_cast<float>(-(place[y] - sheared.shearY * place[z]) * scale);
    // Singles' roundings of sums of numbers up to the reach, and doubles' of what lies far away.
    test.margin = static_cast<float>(64 * 0x1p-24 * std::max(1.0, reach * scale) +
                                     32 * 0x1p-53 * scale * (Length(ray.origin) + Length(far)));
    return test;
}

template<typename Found>
void Sweep(const Kernels& kernels, const DrawMesh& mesh, const LocalRay& ray, std::vector<std::uint8_t>& sides,
           Found&& found)
{
    const DoubleBox bounds{mesh.bounds.minimum, mesh.bounds.maximum};
    const double reach = bounds.Reach();
    if (bounds.IsEmpty() || !std::isfinite(reach)) // nobody's mesh: what is in it must be looked for one by one
        return VisitAll(mesh, ray, found);
    const Interval within = Within(bounds.Grown(1e-8 * reach), ray);
    if (within.IsEmpty())
        return;
    const ShearedRay sheared = Sheared(ray);
    sides.resize(mesh.VertexCount());
    kernels.findSides(mesh.x.data(), mesh.y.data(), mesh.z.data(), sides.size(),
                      SidesOf(ray, sheared, bounds, within.first), sides.data());
    const std::uint32_t* corner = mesh.indices.data();
    for (std::uint32_t triangle = 0; triangle < mesh.TriangleCount(); ++triangle, corner += 3)
    {
        if ((sides[corner[0]] & sides[corner[1]] & sides[corner[2]]) != 0)
            continue;
        if (const double distance = MeetsMeshTriangle(mesh, sheared, triangle, Missed); distance < Missed)
            found(TriangleHit{distance, triangle});
    }
}

} // namespace

void MeshRays::Prepare(const DrawMesh& mesh)
{
    if (tree_)
        return;
    tree_ = BuildMeshTree(mesh);
    sides_ = {};
}

Method MeshRays::NextMethod(const DrawMesh& mesh)
{
    if (method_ != Method::Automatic)
        return method_;
    const std::uint32_t sweeps = mesh.TriangleCount() <= SmallMesh ? 0 : SweepsPerTree;
    return tree_ || sweeps_++ >= sweeps ? Method::Tree : Method::Sweep;
}

TriangleHit MeshRays::Nearest(const DrawMesh& mesh, const LocalRay& ray)
{
    TriangleHit nearest;
    const auto keep = [&](const TriangleHit& hit) { nearest = hit < nearest ? hit : nearest; };
    switch (NextMethod(mesh))
    {
    case Method::Plain:
        VisitAll(mesh, ray, keep);
        break;
    case Method::Sweep:
        Sweep(*kernels_, mesh, ray, sides_, keep);
        break;
    default:
        Prepare(mesh);
        if (const auto boxes = Prepared(ray, tree_->boxes))
            kernels_->findNearest(*tree_, Sheared(ray), *boxes, nearest);
    }
    return nearest;
}

std::vector<TriangleHit> MeshRays::All(const DrawMesh& mesh, const LocalRay& ray)
{
    std::vector<TriangleHit> hits;
    const auto add = [&](const TriangleHit& hit) { hits.push_back(hit); };
    switch (NextMethod(mesh))
    {
    case Method::Plain:
        VisitAll(mesh, ray, add);
        break;
    case Method::Sweep:
        Sweep(*kernels_, mesh, ray, sides_, add);
        break;
    default:
        Prepare(mesh);
        if (const auto boxes = Prepared(ray, tree_->boxes))
            kernels_->findAll(*tree_, Sheared(ray), *boxes, hits);
        std::ranges::sort(hits, {}, &TriangleHit::triangle);
    }
    return hits;
}

} // namespace lumora::rays
