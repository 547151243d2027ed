// Runs the stages for every primitive, one after the other, and keeps the translucent triangles that wait.
#include "platform/drivers/reference/ReferenceDriver.h"

#include "base/RuntimeError.h"
#include "platform/drivers/reference/Clipping.h"
#include "platform/drivers/reference/MeshStage.h"
#include "platform/drivers/reference/Output.h"
#include "platform/drivers/reference/Rasterizer.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <new>
#include <stdexcept>

namespace lumora
{

namespace
{

using namespace reference;

constexpr const char* Source = "ReferenceDriver";
constexpr double FarthestDepth = 1;

/// A translucent triangle that waits for its turn.
struct WaitingTriangle
{
    std::vector<ScreenTriangle> parts; ///< what clipping left
    std::shared_ptr<const MipChain> texture;
    OutputRules rules;
    PixelRect area;
    double meanDepth = 0; ///< eye space
};

class ReferenceDriver final : public Driver
{
public:
    explicit ReferenceDriver(ReferenceOptions options) : options_(options) {}

    void SetTarget(const PixelView& target) override;
    void Clear(ClearParts parts, const PixelRect& area, std::uint32_t color) override;
    void Begin(const PassState& pass) override;
    void Draw(const DrawItem& item) override;
    void End() override { pass_.reset(); }
    void Finish() override;

private:
    struct CachedTexture
    {
        std::weak_ptr<const TextureImage> image;
        std::shared_ptr<const MipChain> mips;
    };

    void DrawSolid(const MeshStage& stage, const DrawMesh::Group& group);
    void DrawEdges(const MeshStage& stage, const DrawMesh& mesh, const DrawMesh::Group& group);
    void DrawPoints(const MeshStage& stage, const DrawMesh& mesh, const DrawMesh::Group& group);
    std::vector<ScreenTriangle> VisibleParts(std::span<const ClipVertex, 3> corners) const;
    std::shared_ptr<const MipChain> MipsOf(const std::shared_ptr<const TextureImage>& image);
    FragmentSink SinkFor(const OutputRules& rules, const MipChain* texture);
    OutputRules Rules() const;
    PixelRect DrawnArea() const { return Intersection(pass_->state.scissor, target_.pixels.Bounds()); }
    void DrawWaiting();
    void ForgetUnusedTextures();

    ReferenceOptions options_;
    Target target_;
    std::optional<Pass> pass_;
    std::vector<WaitingTriangle> waiting_;
    std::map<std::uint64_t, CachedTexture> textures_;
};

void ReferenceDriver::SetTarget(const PixelView& target)
{
    const bool isEmpty = target.width == 0 || target.height == 0;
    if (target.width < 0 || target.height < 0 || (target.pixels == nullptr && !isEmpty))
        throw RuntimeError{error::RMBadValue, Source, "The surface to draw into has no pixels."};
    DrawWaiting();
    try
    {
        std::vector<double> depths(static_cast<std::size_t>(target.width) * static_cast<std::size_t>(target.height),
                                   FarthestDepth);
        target_ = {target, std::move(depths)};
    }
    catch (const std::exception&)
    {
        throw RuntimeError{error::RMBadAlloc, Source, "There is not enough memory for a depth buffer of this size."};
    }
}

void ReferenceDriver::Clear(ClearParts parts, const PixelRect& area, std::uint32_t color)
{
    DrawWaiting();
    const PixelRect inside = Intersection(area, target_.pixels.Bounds());
    for (int y = inside.top; y < inside.bottom; ++y)
        for (int x = inside.left; x < inside.right; ++x)
        {
            if (parts.color)
                target_.pixels.Row(y)[x] = color;
            if (parts.depth)
                target_.DepthAt(x, y) = FarthestDepth;
        }
}

void ReferenceDriver::Begin(const PassState& pass)
{
    pass_ = Pass{pass, IlluminationOf(pass, options_.monochrome)};
    pass_->state.lights = {};
}

void ReferenceDriver::Draw(const DrawItem& item)
{
    if (!pass_)
        throw RuntimeError{error::InvalidCall, Source, "Something was drawn outside a pass."};
    if (item.mesh == nullptr)
        throw RuntimeError{error::RMBadObject, Source, "Nothing was given where a mesh is drawn."};
    const MeshStage stage{item, *pass_};
    for (const DrawMesh::Group& group : item.mesh->groups)
    {
        if (item.fill == FillStyle::Solid)
            DrawSolid(stage, group);
        else if (item.fill == FillStyle::Wireframe)
            DrawEdges(stage, *item.mesh, group);
        else
            DrawPoints(stage, *item.mesh, group);
    }
}

void ReferenceDriver::Finish()
{
    DrawWaiting();
    ForgetUnusedTextures();
}

OutputRules ReferenceDriver::Rules() const
{
    const PassState& state = pass_->state;
    return {state.fog, state.filter, state.transparency == Transparency::Stippled, true};
}

FragmentSink ReferenceDriver::SinkFor(const OutputRules& rules, const MipChain* texture)
{
    return [this, &rules, texture](const Fragment& fragment) { Output(target_, rules, texture, fragment); };
}

void ReferenceDriver::DrawSolid(const MeshStage& stage, const DrawMesh::Group& group)
{
    const std::shared_ptr<const MipChain> texture = MipsOf(group.texture);
    const bool isTextureTranslucent = texture != nullptr && group.texture->hasTranslucency;
    const OutputRules rules = Rules();
    for (std::uint32_t i = 0; i < group.triangleCount; ++i)
    {
        const std::array<ClipVertex, 3> corners = stage.Triangle(group, group.firstTriangle + i, texture != nullptr);
        std::vector<ScreenTriangle> parts = VisibleParts(corners);
        const bool isTranslucent =
            isTextureTranslucent ||
            std::ranges::any_of(corners, [](const ClipVertex& corner) { return corner.attributes.diffuse.alpha < 1; });
        if (isTranslucent && pass_->state.transparency == Transparency::Sorted)
        {
            WaitingTriangle waiting{std::move(parts), texture, rules, DrawnArea(), 0};
            waiting.rules.writesDepth = false;
            for (const ClipVertex& corner : corners)
                waiting.meanDepth += corner.attributes.eyeDepth / 3;
            if (!waiting.parts.empty() && std::isfinite(waiting.meanDepth))
                waiting_.push_back(std::move(waiting));
            continue;
        }
        for (const ScreenTriangle& part : parts)
            RasterizeTriangle(part, DrawnArea(), SinkFor(rules, texture.get()));
    }
}

void ReferenceDriver::DrawEdges(const MeshStage& stage, const DrawMesh& mesh, const DrawMesh::Group& group)
{
    const OutputRules rules = Rules();
    for (std::uint32_t i = 0; i < group.edgeCount; ++i)
    {
        const DrawMesh::Edge& edge = mesh.edges[group.firstEdge + i];
        if (stage.IsCulled(edge.triangleA) && (edge.triangleB == DrawMesh::NoFace || stage.IsCulled(edge.triangleB)))
            continue;
        const std::array<ClipVertex, 2> ends = stage.Edge(group, edge);
        const auto visible = ClipLine(ends[0], ends[1]);
        if (!visible)
            continue;
        const std::optional<ScreenVertex> start = ToScreen(pass_->state, visible->first);
        const std::optional<ScreenVertex> end = ToScreen(pass_->state, visible->second);
        if (start && end)
            RasterizeLine(*start, *end, DrawnArea(), SinkFor(rules, nullptr));
    }
}

void ReferenceDriver::DrawPoints(const MeshStage& stage, const DrawMesh& mesh, const DrawMesh::Group& group)
{
    const OutputRules rules = Rules();
    std::vector<bool> isDrawn(mesh.VertexCount());
    for (std::uint32_t i = 0; i < 3 * group.triangleCount; ++i)
    {
        const std::uint32_t vertex = mesh.indices[3 * group.firstTriangle + i];
        if (isDrawn[vertex] || stage.IsCulled(group.firstTriangle + i / 3))
            continue;
        isDrawn[vertex] = true;
        const ClipVertex point = stage.Point(group, vertex);
        if (!IsVisible(point))
            continue;
        if (const std::optional<ScreenVertex> place = ToScreen(pass_->state, point))
            RasterizePoint(*place, DrawnArea(), SinkFor(rules, nullptr));
    }
}

std::vector<ScreenTriangle> ReferenceDriver::VisibleParts(std::span<const ClipVertex, 3> corners) const
{
    std::vector<ScreenVertex> polygon;
    for (const ClipVertex& vertex : ClipTriangle(corners))
    {
        const std::optional<ScreenVertex> place = ToScreen(pass_->state, vertex);
        if (!place)
            return {};
        polygon.push_back(*place);
    }
    std::vector<ScreenTriangle> parts;
    for (std::size_t i = 2; i < polygon.size(); ++i)
    {
        const ScreenTriangle part{polygon[0], polygon[i - 1], polygon[i]};
        const std::int64_t area = SignedArea(part);
        const CullMode winding = area > 0 ? CullMode::Clockwise : CullMode::CounterClockwise;
        if (area != 0 && winding != pass_->state.cull)
            parts.push_back(part);
    }
    return parts;
}

std::shared_ptr<const MipChain> ReferenceDriver::MipsOf(const std::shared_ptr<const TextureImage>& image)
{
    if (!IsUsable(image.get()))
        return nullptr;
    CachedTexture& cached = textures_[image->identity];
    if (cached.mips == nullptr)
        cached = {image, std::make_shared<const MipChain>(*image)};
    return cached.mips;
}

void ReferenceDriver::DrawWaiting()
{
    std::ranges::stable_sort(waiting_, std::ranges::greater{}, &WaitingTriangle::meanDepth);
    for (const WaitingTriangle& triangle : waiting_)
        for (const ScreenTriangle& part : triangle.parts)
            RasterizeTriangle(part, triangle.area, SinkFor(triangle.rules, triangle.texture.get()));
    waiting_.clear();
}

void ReferenceDriver::ForgetUnusedTextures()
{
    std::erase_if(textures_, [](const auto& entry) { return entry.second.image.expired(); });
}

} // namespace

std::unique_ptr<Driver> MakeReferenceDriver(ReferenceOptions options)
{
    return std::make_unique<ReferenceDriver>(options);
}

} // namespace lumora
