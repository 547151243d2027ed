#include "platform/drivers/rgb/Planner.h"

#include "platform/drivers/rgb/KernelSets.h"
#include "platform/drivers/rgb/Setup.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace lumora::rgb
{

namespace
{

constexpr std::uint32_t VerticesPerTask = 2048;
constexpr std::uint32_t FewestPrimitives = 256; ///< in a work unit

bool IsTextured(const DrawItem& item, const DrawMesh::Group& group)
{
    return item.fill == FillStyle::Solid && IsUsable(group.texture.get());
}

bool IsTranslucent(const DrawItem& item, const DrawMesh::Group& group)
{
    return group.translucent || (IsTextured(item, group) && group.texture->hasTranslucency);
}

bool LightsFaces(const DrawItem& item)
{
    return !item.gouraud && item.fill != FillStyle::Points;
}

Surface SurfaceOf(TextureFilter filter)
{
    switch (filter)
    {
    case TextureFilter::Nearest:
        return Surface::Nearest;
    case TextureFilter::MipNearest:
        return Surface::MipNearest;
    case TextureFilter::MipLinear:
        return Surface::MipLinear;
    case TextureFilter::LinearMipNearest:
        return Surface::LinearMipNearest;
    case TextureFilter::LinearMipLinear:
        return Surface::LinearMipLinear;
    case TextureFilter::Linear:
        break;
    }
    return Surface::Linear;
}

/// Scaled so that squares of its products stay within single precision.
Matrix4 UnitSized(Matrix4 matrix)
{
    double largest = 0;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            largest = std::max(largest, std::abs(matrix.m[row][column]));
    if (!(largest > 0) || !std::isfinite(largest))
        return matrix;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            matrix.m[row][column] /= largest;
    return matrix;
}

Blending BlendingOf(const DrawItem& item, const DrawMesh::Group& group, Transparency transparency, Share share)
{
    if (!IsTranslucent(item, group))
        return Blending::Opaque;
    if (transparency == Transparency::Stippled)
        return Blending::Stippled;
    if (share == Share::Waiting)
        return Blending::Veiled;
    // In sorted mode what is drawn at once is opaque, but for lines and points, which do not wait.
    const bool isSorted = transparency == Transparency::Sorted && item.fill == FillStyle::Solid;
    return isSorted ? Blending::Opaque : Blending::Blended;
}

} // namespace

bool MayBeSeen(const DrawItem& item, const Pass& pass)
{
    const Box& bounds = item.mesh->bounds;
    if (bounds.IsEmpty())
        return true;
    const Matrix4 toClip = item.world * pass.worldToClip;
    int outside[6] = {};
    for (int corner = 0; corner < 8; ++corner)
    {
        const Vector v = bounds.Corner(corner);
        const Double4 p = Transform(Double4{v.x, v.y, v.z, 1}, toClip);
        const double slack = 1e-6 * (std::abs(p.x) + std::abs(p.y) + std::abs(p.z) + std::abs(p.w));
        const double distance[6] = {p.w + p.x, p.w - p.x, p.w + p.y, p.w - p.y, p.z, p.w - p.z};
        for (int plane = 0; plane < 6; ++plane)
            outside[plane] += distance[plane] < -slack ? 1 : 0;
    }
    return std::ranges::none_of(outside, [](int corners) { return corners == 8; });
}

bool HasWaiting(const DrawItem& item, const Pass& pass)
{
    return pass.state.transparency == Transparency::Sorted && item.fill == FillStyle::Solid &&
           std::ranges::any_of(item.mesh->groups,
                               [&](const DrawMesh::Group& group) { return IsTranslucent(item, group); });
}

void Planner::Start(const PixelRect& target, const Kernels& kernels)
{
    batch_.parts.clear();
    batch_.states.clear();
    batch_.segments.clear();
    batch_.units.clear();
    batch_.vertexTasks.clear();
    batch_.pointVertices.Clear();
    batch_.sorted.Clear();
    batch_.waitingUnits.clear();
    batch_.order.Clear();
    batch_.target = target;
    batch_.tilesPerRow = (target.Width() + TileSize - 1) >> TileShift;
    batch_.tileCount = static_cast<std::uint32_t>(batch_.tilesPerRow) *
                       static_cast<std::uint32_t>((target.Height() + TileSize - 1) >> TileShift);
    batch_.kernels = &kernels;
    whole_.clear();
    vertexCount_ = faceCount_ = facingCount_ = waitingCount_ = 0;
    largestPointMesh_ = 0;
    needsCoordinates_ = needsHighlights_ = false;
    primitiveCount_ = 0;
}

void Planner::AddClear(ClearParts parts, const PixelRect& area, std::uint32_t color)
{
    DrawState state;
    state.primitive = Primitive::Clear;
    state.area = area;
    state.clear = parts;
    state.clearColor = color;
    batch_.states.push_back(state);
}

std::uint32_t Planner::AddItem(const RecordedItem& recorded, const Pass& pass, Share share, std::uint32_t firstGroup)
{
    const DrawItem& item = recorded.item;
    const std::vector<DrawMesh::Group>& groups = item.mesh->groups;
    const auto isDrawn = [&](const DrawMesh::Group& group)
    {
        const bool waits = pass.state.transparency == Transparency::Sorted && item.fill == FillStyle::Solid;
        const bool isTextureTranslucent = IsTextured(item, group) && group.texture->hasTranslucency;
        if (share == Share::Waiting)
            return IsTranslucent(item, group);
        const std::size_t number = static_cast<std::size_t>(&group - groups.data());
        return !(waits && (isTextureTranslucent || recorded.facts->groups[number].isAllTranslucent));
    };
    const bool isWhole = recorded.facts->hasOneMaterial &&
                         std::ranges::all_of(groups, [&](const DrawMesh::Group& group)
                                             { return IsTextured(item, group) == IsTextured(item, groups.front()); });
    std::uint32_t part = 0;
    bool hasPart = false;
    const auto count = static_cast<std::uint32_t>(groups.size());
    for (std::uint32_t i = firstGroup; i < count; ++i)
    {
        if (!isDrawn(groups[i]))
            continue;
        const bool needsPart = !hasPart || !isWhole;
        if (needsPart && share == Share::AtOnce && IsFull())
            return i;
        if (needsPart)
            part = AddPart(recorded, pass, i, isWhole);
        hasPart = true;
        AddState(recorded, pass, i, part, IsTextured(item, groups[i]) ? textures_.Find(*groups[i].texture) : nullptr,
                 share);
    }
    return count;
}

std::uint32_t Planner::AddPart(const RecordedItem& recorded, const Pass& pass, std::uint32_t group, bool isWhole)
{
    const DrawItem& item = recorded.item;
    const DrawMesh& mesh = *item.mesh;
    const MeshFacts::Range vertices =
        isWhole ? MeshFacts::Range{0, mesh.VertexCount()} : recorded.facts->groups[group].vertices;
    const MeshFacts::Range faces = isWhole ? MeshFacts::Range{0, static_cast<std::uint32_t>(mesh.faceNormalX.size())}
                                           : recorded.facts->groups[group].faces;
    Part part;
    part.item = &item;
    part.pass = &pass;
    part.toClip = item.world * pass.worldToClip;
    part.toCamera = item.world * pass.state.worldToCamera;
    part.normals = UnitSized(NormalMatrix(item.world));
    part.material = mesh.groups[group].material;
    part.splitsHighlight = IsTextured(item, mesh.groups[group]);
    part.needsCoordinates = part.splitsHighlight || pass.state.fog.mode != FogMode::None;
    part.vertexBase = static_cast<std::uint32_t>(vertexCount_) - vertices.first;
    part.faceVertices = recorded.facts->faceVertices.data();
    const auto number = static_cast<std::uint32_t>(batch_.parts.size());
    AddTasks(LightsFaces(item) ? VertexTask::Kind::Place : VertexTask::Kind::PlaceAndLight, number, vertices.first,
             vertices.count);
    vertexCount_ += vertices.count;
    if (LightsFaces(item))
    {
        part.faceBase = static_cast<std::uint32_t>(faceCount_) - faces.first;
        AddTasks(VertexTask::Kind::LightFaces, number, faces.first, faces.count);
        faceCount_ += faces.count;
    }
    if (item.fill != FillStyle::Solid && pass.state.cull != CullMode::None)
    {
        const bool isFound = !batch_.parts.empty() && batch_.parts.back().item == &item; // for the item's other parts
        part.facingBase = isFound ? batch_.parts.back().facingBase : static_cast<std::uint32_t>(facingCount_);
        if (!isFound)
        {
            part.planes = recorded.facts->PlanesOf(mesh);
            AddTasks(VertexTask::Kind::FindFacing, number, 0, mesh.TriangleCount());
            facingCount_ += mesh.TriangleCount();
        }
    }
    needsCoordinates_ = needsCoordinates_ || part.needsCoordinates;
    needsHighlights_ = needsHighlights_ || part.splitsHighlight;
    batch_.parts.push_back(part);
    return number;
}

void Planner::AddTasks(VertexTask::Kind kind, std::uint32_t part, std::uint32_t first, std::uint32_t count)
{
    for (std::uint32_t done = 0; done < count; done += VerticesPerTask)
        batch_.vertexTasks.push_back({kind, part, first + done, std::min(VerticesPerTask, count - done)});
}

void Planner::AddState(const RecordedItem& recorded, const Pass& pass, std::uint32_t group, std::uint32_t part,
                       const MipChain* texture, Share share)
{
    const DrawItem& item = recorded.item;
    const DrawMesh::Group& of = item.mesh->groups[group];
    DrawState state;
    state.primitive = item.fill == FillStyle::Solid       ? Primitive::Triangles
                      : item.fill == FillStyle::Wireframe ? Primitive::Lines
                                                          : Primitive::Points;
    state.surface = texture != nullptr ? SurfaceOf(pass.state.filter) : Surface::Plain;
    state.blending = BlendingOf(item, of, pass.state.transparency, share);
    state.isFlat = LightsFaces(item);
    state.fog = pass.state.fog;
    state.isTextureTranslucent = texture != nullptr && of.texture->hasTranslucency;
    state.sortsTranslucent = share == Share::AtOnce && state.primitive == Primitive::Triangles &&
                             pass.state.transparency == Transparency::Sorted && IsTranslucent(item, of);
    state.waits = share == Share::Waiting;
    state.isAllTranslucent = recorded.facts->groups[group].isAllTranslucent;
    state.area = state.primitive == Primitive::Triangles ? pass.area : Intersection(pass.state.scissor, batch_.target);
    state.part = part;
    state.group = group;
    state.cull = pass.state.cull;
    state.texture = texture;
    state.hasHighlight = texture != nullptr && of.material.power > 0 && item.lit;
    const int fog = state.fog.mode == FogMode::None ? 0 : 1;
    const int blending = static_cast<int>(state.blending);
    state.drawRun = state.primitive == Primitive::Triangles
                        ? batch_.kernels->drawTriangles[static_cast<int>(state.surface)][blending][fog]
                        : batch_.kernels->drawLines[blending][fog];
    batch_.states.push_back(state);
    const std::uint32_t primitives = WholeSegment(static_cast<std::uint32_t>(batch_.states.size() - 1)).count;
    primitiveCount_ += primitives;
    waitingCount_ += state.waits ? primitives : 0;
    if (state.primitive == Primitive::Points)
        largestPointMesh_ = std::max(largestPointMesh_, item.mesh->VertexCount());
}

WorkCounts Planner::Counts() const
{
    WorkCounts counts;
    counts.vertices = vertexCount_;
    counts.faces = faceCount_;
    counts.facings = facingCount_;
    counts.points = batch_.pointVertices.Size();
    counts.meshVertices = largestPointMesh_;
    counts.waiting = waitingCount_;
    counts.states = batch_.states.size();
    counts.units = batch_.units.size() + batch_.waitingUnits.size() + batch_.vertexTasks.size();
    return counts;
}

std::size_t Planner::HeldBytes() const
{
    const auto heldBy = [](const auto&... lists)
    { return (... + (lists.capacity() * sizeof(typename std::decay_t<decltype(lists)>::value_type))); };
    return heldBy(batch_.parts, batch_.states, batch_.segments, batch_.units, batch_.vertexTasks, batch_.waitingUnits,
                  whole_) +
           batch_.vertices.HeldBytes() + batch_.faces.HeldBytes() + batch_.isCulled.CapacityInBytes() +
           batch_.pointVertices.CapacityInBytes() + batch_.sorted.CapacityInBytes() + batch_.order.CapacityInBytes() +
           isTaken_.CapacityInBytes();
}

void Planner::ReserveVertices()
{
    batch_.vertices.positions.Renew(vertexCount_);
    batch_.vertices.colors.Renew(vertexCount_);
    batch_.vertices.coordinates.Renew(needsCoordinates_ ? vertexCount_ : 0);
    batch_.vertices.highlights.Renew(needsHighlights_ ? vertexCount_ : 0);
    batch_.faces.colors.Renew(faceCount_);
    batch_.faces.highlights.Renew(needsHighlights_ ? faceCount_ : 0);
    batch_.isCulled.Renew(facingCount_);
}

Segment Planner::WholeSegment(std::uint32_t number) const
{
    const DrawState& state = batch_.states[number];
    if (state.primitive == Primitive::Clear)
        return {number, 0, state.area.IsEmpty() ? 0U : 1U};
    if (state.area.IsEmpty())
        return {number, 0, 0};
    const DrawMesh::Group& group = batch_.parts[state.part].item->mesh->groups[state.group];
    if (state.primitive == Primitive::Lines)
        return {number, group.firstEdge, group.edgeCount};
    return {number, group.firstTriangle, group.triangleCount};
}

void Planner::CollectPoints(const DrawState& state, Segment& segment)
{
    const Part& part = batch_.parts[state.part];
    const DrawMesh& mesh = *part.item->mesh;
    isTaken_.Renew(mesh.VertexCount());
    std::fill_n(isTaken_.Data(), isTaken_.Size(), std::uint8_t{0});
    const std::uint32_t end = segment.first + segment.count;
    const auto before = static_cast<std::uint32_t>(batch_.pointVertices.Size());
    for (std::uint32_t triangle = segment.first; triangle < end; ++triangle)
    {
        if (state.cull != CullMode::None && batch_.isCulled[triangle + part.facingBase] != 0)
            continue;
        for (int corner = 0; corner < 3; ++corner)
        {
            const std::uint32_t vertex = mesh.indices[3 * std::size_t{triangle} + corner];
            if (isTaken_[vertex] == 0)
                batch_.pointVertices.Append(vertex);
            isTaken_[vertex] = 1;
        }
    }
    segment.first = before;
    segment.count = static_cast<std::uint32_t>(batch_.pointVertices.Size()) - before;
}

void Planner::PlanUnits(std::uint32_t threads)
{
    for (const bool waits : {false, true})
    {
        whole_.clear();
        for (std::uint32_t i = 0; i < batch_.states.size(); ++i)
        {
            if (batch_.states[i].waits != waits)
                continue;
            Segment segment = WholeSegment(i);
            if (batch_.states[i].primitive == Primitive::Points)
                CollectPoints(batch_.states[i], segment);
            if (segment.count != 0)
                whole_.push_back(segment);
        }
        CutUnits(threads, false, waits ? batch_.waitingUnits : batch_.units);
    }
}

void Planner::PlanSortedUnits(std::uint32_t threads)
{
    whole_.clear();
    whole_.push_back({0, 0, static_cast<std::uint32_t>(batch_.order.Size())});
    CutUnits(threads, true, batch_.units);
}

/// Cuts `whole_` into work units.
void Planner::CutUnits(std::uint32_t threads, bool isSorted, std::vector<WorkUnit>& units)
{
    constexpr std::uint64_t UnitsPerThread = 4;
    std::uint64_t total = 0;
    for (const Segment& segment : whole_)
        total += segment.count;
    const std::uint64_t fair = total / (UnitsPerThread * threads) + 1;
    const auto size = static_cast<std::uint32_t>(
        std::clamp<std::uint64_t>(threads == 1 ? MostPrimitives : fair, FewestPrimitives, MostPrimitives));
    std::uint32_t room = 0;
    for (const Segment& segment : whole_)
        for (std::uint32_t done = 0; done < segment.count;)
        {
            if (room == 0)
            {
                units.push_back({static_cast<std::uint32_t>(batch_.segments.size()), 0, isSorted});
                room = size;
            }
            const std::uint32_t count = std::min(room, segment.count - done);
            batch_.segments.push_back({segment.state, segment.first + done, count});
            ++units.back().segmentCount;
            done += count;
            room -= count;
        }
}

} // namespace lumora::rgb
