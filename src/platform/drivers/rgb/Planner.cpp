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

bool IsTextured(const RecordedItem& item, const MeshFacts::GroupFacts& group)
{
    return item.fill == FillStyle::Solid && group.texture != nullptr;
}

bool IsTextureTranslucent(const RecordedItem& item, const MeshFacts::GroupFacts& group)
{
    return IsTextured(item, group) && group.texture->hasTranslucency;
}

bool IsTranslucent(const RecordedItem& item, const MeshFacts::GroupFacts& group)
{
    return group.isTranslucent || IsTextureTranslucent(item, group);
}

bool LightsFaces(const RecordedItem& item)
{
    return !item.isGouraud && item.fill != FillStyle::Points;
}

/// Whether there is something to draw of a group: what waits is not drawn at once.
bool IsDrawn(const RecordedItem& item, const MeshFacts::GroupFacts& group, const Pass& pass, Share share)
{
    if (share == Share::Waiting)
        return IsTranslucent(item, group);
    const bool waits = pass.state.transparency == Transparency::Sorted && item.fill == FillStyle::Solid;
    return !(waits && (IsTextureTranslucent(item, group) || group.isAllTranslucent));
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

Blending BlendingOf(const StateKey& key)
{
    const Transparency transparency = key.pass->state.transparency;
    if (!key.isTranslucent)
        return Blending::Opaque;
    if (transparency == Transparency::Stippled)
        return Blending::Stippled;
    if (key.waits)
        return Blending::Veiled;
    // In sorted mode what is drawn at once is opaque, but for lines and points, which do not wait.
    const bool isSorted = transparency == Transparency::Sorted && key.fill == FillStyle::Solid;
    return isSorted ? Blending::Opaque : Blending::Blended;
}

} // namespace

Matrix4 NormalsOf(const Matrix4& world)
{
    return UnitSized(NormalMatrix(world));
}

void Part::Prepare()
{
    toClip = *world * pass->worldToClip;
    const Matrix4& toCamera = pass->state.worldToCamera;
    for (int row = 0; row < 4; ++row)
        toDepth[row] = world->m[row][0] * toCamera.m[0][2] + world->m[row][1] * toCamera.m[1][2] +
                       world->m[row][2] * toCamera.m[2][2] + world->m[row][3] * toCamera.m[3][2];
}

bool MayBeSeen(const Matrix4& world, const Box& bounds, const Pass& pass)
{
    if (bounds.IsEmpty())
        return true;
    const Matrix4 toClip = world * pass.worldToClip;
    const Double3 low{bounds.minimum};
    const Double3 high{bounds.maximum};
    const Double3 half = (high - low) * 0.5;
    const Double3 middle = (high + low) * 0.5;
    const double halves[3] = {half.x, half.y, half.z};
    const Double4 centre = Transform(Double4{middle.x, middle.y, middle.z, 1}, toClip);
    const double at[4] = {centre.x, centre.y, centre.z, centre.w};
    // How far the box reaches from its centre: along x, y and z, and against the planes w + x, w - x, w + y, w - y, w -
    // z.
    double reach[4] = {};
    double plus[3] = {};
    double minus[3] = {};
    for (int axis = 0; axis < 3; ++axis)
    {
        const auto& row = toClip.m[axis];
        for (int i = 0; i < 4; ++i)
            reach[i] += halves[axis] * std::abs(row[i]);
        for (int i = 0; i < 3; ++i)
        {
            plus[i] += halves[axis] * std::abs(row[3] + row[i]);
            minus[i] += halves[axis] * std::abs(row[3] - row[i]);
        }
    }
    double size = 0;
    for (int i = 0; i < 4; ++i)
        size += std::abs(at[i]) + reach[i];
    const double slack = -1e-6 * size;
    bool isOutside = at[2] + reach[2] < slack || at[3] - at[2] + minus[2] < slack;
    for (int i = 0; i < 2; ++i)
        isOutside = isOutside || at[3] + at[i] + plus[i] < slack || at[3] - at[i] + minus[i] < slack;
    return !isOutside;
}

bool HasWaiting(const RecordedItem& item, const Pass& pass)
{
    return pass.state.transparency == Transparency::Sorted && item.fill == FillStyle::Solid &&
           item.facts->hasTranslucency;
}

void Planner::Start(const PixelRect& target, const Kernels& kernels)
{
    batch_.parts.clear();
    batch_.states.clear();
    batch_.segments.clear();
    batch_.units.clear();
    batch_.vertexTasks.clear();
    batch_.pointVertices.Clear();
    batch_.sortedUnits.clear();
    batch_.target = target;
    batch_.tilesPerRow = (target.Width() + TileSize - 1) >> TileShift;
    batch_.tileCount = static_cast<std::uint32_t>(batch_.tilesPerRow) *
                       static_cast<std::uint32_t>((target.Height() + TileSize - 1) >> TileShift);
    batch_.kernels = &kernels;
    keys_.clear();
    recentStates_.fill(0);
    atOnce_.clear();
    sorted_.clear();
    roomForParts_ = 0;
    vertexCount_ = faceCount_ = facingCount_ = 0;
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
    keys_.emplace_back();
    if (area.IsEmpty())
        return;
    atOnce_.push_back({static_cast<std::uint32_t>(batch_.states.size() - 1), 0, 0, 1});
    ++primitiveCount_;
}

std::uint32_t Planner::AddItem(const RecordedItem& item, const Pass& pass, Share share, std::uint32_t firstGroup)
{
    const MeshFacts& facts = *item.facts;
    const bool isWhole = facts.hasOneMaterial && (facts.areAllTextured || item.fill != FillStyle::Solid);
    std::uint32_t part = 0;
    bool hasPart = false;
    const auto count = static_cast<std::uint32_t>(facts.groups.size());
    for (std::uint32_t i = firstGroup; i < count; ++i)
    {
        const MeshFacts::GroupFacts& group = facts.groups[i];
        if (!IsDrawn(item, group, pass, share))
            continue;
        const bool needsPart = !hasPart || !isWhole;
        if (needsPart && share == Share::AtOnce && IsFull())
            return i;
        if (needsPart)
            part = AddPart(item, pass, group, isWhole);
        hasPart = true;
        AddSegment(item, pass, group, part, share);
    }
    return count;
}

std::uint32_t Planner::AddPart(const RecordedItem& item, const Pass& pass, const MeshFacts::GroupFacts& group,
                               bool isWhole)
{
    const MeshFacts& facts = *item.facts;
    const auto number = static_cast<std::uint32_t>(batch_.parts.size());
    Part& part = batch_.parts.emplace_back();
    part.mesh = item.mesh;
    part.world = &item.world;
    part.pass = &pass;
    part.material = group.material;
    part.isLit = item.isLit;
    part.lightsFaces = LightsFaces(item);
    part.splitsHighlight = IsTextured(item, group);
    part.needsCoordinates = part.splitsHighlight || pass.state.fog.mode != FogMode::None;
    part.faceVertices = facts.faceVertices.data();
    part.vertices = isWhole ? Range{0, facts.vertexCount} : group.vertices;
    part.vertexBase = static_cast<std::uint32_t>(vertexCount_) - part.vertices.first;
    vertexCount_ += part.vertices.count;
    if (part.lightsFaces)
    {
        part.faces = isWhole ? Range{0, facts.faceCount} : group.faces;
        part.faceBase = static_cast<std::uint32_t>(faceCount_) - part.faces.first;
        faceCount_ += part.faces.count;
    }
    if (item.fill != FillStyle::Solid && pass.state.cull != CullMode::None)
    {
        const bool isFound = number != 0 && batch_.parts[number - 1].world == part.world; // for the item's other parts
        part.facingBase = isFound ? batch_.parts[number - 1].facingBase : static_cast<std::uint32_t>(facingCount_);
        if (!isFound)
        {
            part.planes = facts.PlanesOf(*item.mesh);
            part.triangles = {0, facts.triangleCount};
            facingCount_ += facts.triangleCount;
        }
    }
    needsCoordinates_ = needsCoordinates_ || part.needsCoordinates;
    needsHighlights_ = needsHighlights_ || part.splitsHighlight;
    AddTasks(part, number);
    return number;
}

/// Many small parts make one task, a large one several.
void Planner::AddTasks(Part& part, std::uint32_t number)
{
    constexpr std::uint32_t MostOfOne = 0x10000000; // keeps the sum within 32 bits
    const std::uint32_t size = 16 + std::min(part.vertices.count, MostOfOne) + std::min(part.faces.count, MostOfOne) +
                               std::min(part.triangles.count, MostOfOne);
    if (size > VerticesPerTask)
    {
        part.Prepare();
        using enum VertexTask::Kind;
        AddTasks(part.lightsFaces ? Place : PlaceAndLight, number, part.vertices);
        AddTasks(LightFaces, number, part.faces);
        AddTasks(FindFacing, number, part.triangles);
        roomForParts_ = 0;
        return;
    }
    if (size > roomForParts_)
    {
        batch_.vertexTasks.push_back({VertexTask::Kind::WholeParts, number, {0, 0}});
        roomForParts_ = VerticesPerTask;
    }
    ++batch_.vertexTasks.back().range.count;
    roomForParts_ -= size;
}

void Planner::AddTasks(VertexTask::Kind kind, std::uint32_t part, const Range& range)
{
    for (std::uint32_t done = 0; done < range.count; done += VerticesPerTask)
        batch_.vertexTasks.push_back({kind, part, {range.first + done, std::min(VerticesPerTask, range.count - done)}});
}

void Planner::AddSegment(const RecordedItem& item, const Pass& pass, const MeshFacts::GroupFacts& group,
                         std::uint32_t part, Share share)
{
    StateKey key;
    key.pass = &pass;
    key.texture = IsTextured(item, group) ? group.texture : nullptr;
    key.fill = item.fill;
    key.isFlat = LightsFaces(item);
    key.isTranslucent = IsTranslucent(item, group);
    key.isAllTranslucent = group.isAllTranslucent;
    key.waits = share == Share::Waiting;
    key.hasHighlight = key.texture != nullptr && group.material->power > 0 && item.isLit;
    const std::uint32_t state = StateOf(key);
    const Range& range = item.fill == FillStyle::Wireframe ? group.edges : group.triangles;
    if (range.count == 0 || batch_.states[state].area.IsEmpty())
        return;
    (key.waits ? sorted_ : atOnce_).push_back({state, part, range.first, range.count});
    primitiveCount_ += range.count;
    if (item.fill == FillStyle::Points)
        largestPointMesh_ = std::max(largestPointMesh_, item.facts->vertexCount);
}

/// The state of this key: one there is, if it is among those met lately, or a new one.
std::uint32_t Planner::StateOf(const StateKey& key)
{
    const std::uint64_t flags = static_cast<std::uint64_t>(key.fill) | std::uint64_t{key.isFlat} << 2 |
                                std::uint64_t{key.isTranslucent} << 3 | std::uint64_t{key.isAllTranslucent} << 4 |
                                std::uint64_t{key.waits} << 5 | std::uint64_t{key.hasHighlight} << 6;
    const std::uint64_t mixed =
        (reinterpret_cast<std::uintptr_t>(key.texture) ^ reinterpret_cast<std::uintptr_t>(key.pass) ^ flags << 48) *
        0x9E3779B97F4A7C15U;
    std::uint32_t& recent = recentStates_[mixed >> (64 - RecentBits)];
    if (recent >= keys_.size() || keys_[recent] != key)
    {
        recent = static_cast<std::uint32_t>(batch_.states.size());
        AddState(key);
    }
    return recent;
}

void Planner::AddState(const StateKey& key)
{
    const PassState& pass = key.pass->state;
    DrawState state;
    state.primitive = key.fill == FillStyle::Solid       ? Primitive::Triangles
                      : key.fill == FillStyle::Wireframe ? Primitive::Lines
                                                         : Primitive::Points;
    state.surface = key.texture != nullptr ? SurfaceOf(pass.filter) : Surface::Plain;
    state.blending = BlendingOf(key);
    state.isFlat = key.isFlat;
    state.fog = pass.fog;
    state.isTextureTranslucent = key.texture != nullptr && key.texture->hasTranslucency;
    state.sortsTranslucent = !key.waits && state.primitive == Primitive::Triangles &&
                             pass.transparency == Transparency::Sorted && key.isTranslucent;
    state.waits = key.waits;
    state.isAllTranslucent = key.isAllTranslucent;
    state.area = state.primitive == Primitive::Triangles ? key.pass->area : Intersection(pass.scissor, batch_.target);
    state.cull = pass.cull;
    state.texture = key.texture != nullptr ? textures_.Find(*key.texture) : nullptr;
    state.hasHighlight = key.hasHighlight;
    const int fog = state.fog.mode == FogMode::None ? 0 : 1;
    const int blending = static_cast<int>(state.blending);
    state.drawRun = state.primitive == Primitive::Triangles
                        ? batch_.kernels->drawTriangles[static_cast<int>(state.surface)][blending][fog]
                        : batch_.kernels->drawLines[blending][fog];
    batch_.states.push_back(state);
    keys_.push_back(key);
}

WorkCounts Planner::Counts() const
{
    WorkCounts counts;
    counts.vertices = vertexCount_;
    counts.faces = faceCount_;
    counts.facings = facingCount_;
    counts.points = batch_.pointVertices.Size();
    counts.meshVertices = largestPointMesh_;
    counts.states = batch_.states.size() + batch_.parts.size();
    counts.units = batch_.units.size() + batch_.sortedUnits.size() + batch_.vertexTasks.size();
    return counts;
}

std::size_t Planner::HeldBytes() const
{
    const auto heldBy = [](const auto&... lists)
    { return (... + (lists.capacity() * sizeof(typename std::decay_t<decltype(lists)>::value_type))); };
    return heldBy(batch_.parts, batch_.states, batch_.segments, batch_.units, batch_.vertexTasks, batch_.sortedUnits,
                  keys_, atOnce_, sorted_) +
           batch_.vertices.HeldBytes() + batch_.faces.HeldBytes() + batch_.isCulled.CapacityInBytes() +
           batch_.pointVertices.CapacityInBytes() + isTaken_.CapacityInBytes();
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

void Planner::CollectPoints(const DrawState& state, Segment& segment)
{
    const Part& part = batch_.parts[segment.part];
    const DrawMesh& mesh = *part.mesh;
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
    for (Segment& segment : atOnce_)
        if (batch_.states[segment.state].primitive == Primitive::Points)
            CollectPoints(batch_.states[segment.state], segment);
    const auto fairSize = [&](std::span<const Segment> whole, std::uint64_t unitsPerThread)
    {
        std::uint64_t total = 0;
        for (const Segment& segment : whole)
            total += segment.count;
        return std::max<std::uint64_t>(FewestPrimitives, total / (unitsPerThread * threads) + 1);
    };
    constexpr std::uint64_t UnitsPerThread = 4;
    const std::uint64_t size = threads == 1 ? MostPrimitives : fairSize(atOnce_, UnitsPerThread);
    CutUnits(atOnce_, std::min<std::uint64_t>(size, MostPrimitives), false, batch_.units);
    CutUnits(sorted_, fairSize(sorted_, SortedUnitsPerThread), true, batch_.sortedUnits);
}

/// Cuts segments into work units of `size` primitives.
void Planner::CutUnits(std::span<const Segment> whole, std::uint64_t size, bool isSorted, std::vector<WorkUnit>& units)
{
    std::uint64_t room = 0;
    for (const Segment& segment : whole)
        for (std::uint32_t done = 0; done < segment.count;)
        {
            if (room == 0)
            {
                units.push_back({static_cast<std::uint32_t>(batch_.segments.size()), 0, isSorted});
                room = size;
            }
            const auto count = static_cast<std::uint32_t>(std::min<std::uint64_t>(room, segment.count - done));
            batch_.segments.push_back({segment.state, segment.part, segment.first + done, count});
            ++units.back().segmentCount;
            done += count;
            room -= count;
        }
}

} // namespace lumora::rgb
