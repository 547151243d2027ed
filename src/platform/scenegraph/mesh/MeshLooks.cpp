// Mesh builders: colours, materials, textures, normals and quality; keeping the compiled form.
#include "base/Faults.h"
#include "platform/scenegraph/frames/Checks.h"
#include "platform/scenegraph/mesh/MeshBuilder.h"
#include "platform/scenegraph/mesh/MeshNormals.h"

#include <algorithm>

namespace lumora
{

namespace
{

constexpr const char* Source = "MeshBuilder";

[[noreturn]] void RaiseCount(const char* what, std::size_t expected, std::size_t given)
{
    throw RuntimeError{error::SubscriptOutOfRange, Source,
                       std::string{"There must be "} + std::to_string(expected) + ' ' + what + ", not " +
                           std::to_string(given)};
}

} // namespace

// Faces.

Color Face::GetColor() const
{
    faults::Point("Face.GetColor");
    return index_ < 0 ? color_ : Mesh().data_.color[static_cast<std::size_t>(index_)];
}

void Face::SetColor(Color color)
{
    faults::Point("Face.SetColor");
    if (index_ < 0)
    {
        color_ = color;
        return;
    }
    MeshBuilder& mesh = Mesh();
    mesh.data_.color.Set(static_cast<std::size_t>(index_), color, mesh.data_.FaceCount());
    mesh.Changed();
}

const MeshLook& Face::Look() const
{
    const MeshData& data = Mesh().data_;
    return data.looks[data.look[static_cast<std::size_t>(index_)]];
}

std::shared_ptr<Material> Face::GetMaterial() const
{
    faults::Point("Face.GetMaterial");
    return index_ < 0 ? material_ : Look().material;
}

std::shared_ptr<Texture> Face::GetTexture() const
{
    faults::Point("Face.GetTexture");
    return index_ < 0 ? texture_ : Look().texture;
}

void Face::SetMaterial(const std::shared_ptr<Material>& material)
{
    faults::Point("Face.SetMaterial");
    if (index_ < 0)
    {
        material_ = material;
        return;
    }
    MeshBuilder& mesh = Mesh();
    const auto face = static_cast<std::size_t>(index_);
    MeshLook look = Look();
    look.material = material;
    mesh.SetLook(face, look);
}

void Face::SetTexture(const std::shared_ptr<Texture>& texture)
{
    faults::Point("Face.SetTexture");
    if (index_ < 0)
    {
        texture_ = texture;
        return;
    }
    MeshBuilder& mesh = Mesh();
    const auto face = static_cast<std::size_t>(index_);
    MeshLook look = Look();
    look.texture = texture;
    mesh.SetLook(face, look);
}

// Looks.

// Searched from the end: faces that follow each other tend to look alike.
std::uint32_t MeshBuilder::LookFor(const MeshLook& look)
{
    const auto found = std::find(data_.looks.rbegin(), data_.looks.rend(), look);
    if (found != data_.looks.rend())
        return static_cast<std::uint32_t>(data_.looks.rend() - found - 1);
    data_.looks.push_back(look);
    return static_cast<std::uint32_t>(data_.looks.size() - 1);
}

void MeshBuilder::SetLook(std::size_t face, const MeshLook& look)
{
    data_.look.Set(face, LookFor(look), data_.FaceCount());
    Changed();
}

std::vector<std::uint32_t> MeshBuilder::AdoptLooks(const std::vector<MeshLook>& looks)
{
    std::vector<std::uint32_t> ids;
    for (const MeshLook& look : looks)
        ids.push_back(LookFor(look));
    return ids;
}

// Looks that become equal stay listed twice; the compiled form puts them together. While one look is common to all
// faces, the ones that nobody has any more are let go.
void MeshBuilder::ChangeEachLook(const std::function<void(MeshLook&)>& change)
{
    if (data_.look.IsUniform())
    {
        MeshLook look = data_.looks[data_.look.Common()];
        change(look);
        data_.looks.assign(1, MeshLook{});
        data_.look.SetAll(LookFor(look));
    }
    else
    {
        // The first look means "nothing at all" to faces still to come, so the changed ones follow it.
        std::vector<MeshLook> looks(1);
        for (MeshLook look : data_.looks)
        {
            change(look);
            looks.push_back(std::move(look));
        }
        std::vector<std::uint32_t> ids(data_.FaceCount());
        for (std::size_t face = 0; face < ids.size(); ++face)
            ids[face] = data_.look[face] + 1;
        data_.looks = std::move(looks);
        data_.look.Assign(std::move(ids));
    }
    Changed();
}

void MeshBuilder::SetColor(Color color)
{
    faults::Point("MeshBuilder.SetColor");
    data_.color.SetAll(color);
    Changed();
}

void MeshBuilder::SetColorRGB(float red, float green, float blue)
{
    faults::Point("MeshBuilder.SetColorRGB");
    RequireFinite(Source, {red, green, blue});
    data_.color.SetAll(CreateColorRGBA(red, green, blue));
    Changed();
}

void MeshBuilder::SetFaceColors(std::span<const Color> colors)
{
    faults::Point("MeshBuilder.SetFaceColors");
    if (colors.size() != data_.FaceCount())
        RaiseCount("colours", data_.FaceCount(), colors.size());
    data_.color.Assign({colors.begin(), colors.end()});
    Changed();
}

std::vector<Color> MeshBuilder::GetFaceColors() const
{
    faults::Point("MeshBuilder.GetFaceColors");
    std::vector<Color> colors(data_.FaceCount());
    for (std::size_t face = 0; face < colors.size(); ++face)
        colors[face] = data_.color[face];
    return colors;
}

void MeshBuilder::SetMaterial(const std::shared_ptr<Material>& material)
{
    faults::Point("MeshBuilder.SetMaterial");
    ChangeEachLook([&](MeshLook& look) { look.material = material; });
}

void MeshBuilder::SetTexture(const std::shared_ptr<Texture>& texture)
{
    faults::Point("MeshBuilder.SetTexture");
    ChangeEachLook([&](MeshLook& look) { look.texture = texture; });
}

void MeshBuilder::SetTextureCoordinates(std::int32_t vertex, float u, float v)
{
    faults::Point("MeshBuilder.SetTextureCoordinates");
    RequireFinite(Source, {u, v});
    if (vertex < 0 || static_cast<std::size_t>(vertex) >= data_.vertices.size())
        throw RuntimeError{error::SubscriptOutOfRange, Source, "There is no vertex " + std::to_string(vertex)};
    data_.uv.resize(2 * data_.vertices.size());
    data_.uv[2 * static_cast<std::size_t>(vertex)] = u;
    data_.uv[2 * static_cast<std::size_t>(vertex) + 1] = v;
    Changed();
}

void MeshBuilder::SetTextureCoordinates(std::span<const float> uv)
{
    faults::Point("MeshBuilder.SetTextureCoordinates");
    if (uv.size() != 2 * data_.vertices.size())
        RaiseCount("texture coordinates", 2 * data_.vertices.size(), uv.size());
    for (const float value : uv)
        RequireFinite(Source, {value});
    data_.uv.assign(uv.begin(), uv.end());
    Changed();
}

std::vector<float> MeshBuilder::GetTextureCoordinates() const
{
    faults::Point("MeshBuilder.GetTextureCoordinates");
    std::vector<float> uv = data_.uv;
    uv.resize(2 * data_.vertices.size());
    return uv;
}

void MeshBuilder::GenerateNormals(float creaseAngle)
{
    faults::Point("MeshBuilder.GenerateNormals");
    RequireFiniteNotNegative(Source, {creaseAngle});
    CornerNormals made = MakeCornerNormals(data_, VertexCorners{data_}, FaceNormals(data_), creaseAngle);
    data_.normals = std::move(made.normals);
    data_.cornerNormal = std::move(made.ofCorner);
    Changed();
}

std::uint32_t MeshBuilder::GetQuality() const
{
    faults::Point("MeshBuilder.GetQuality");
    return quality_;
}

void MeshBuilder::SetQuality(std::uint32_t quality)
{
    faults::Point("MeshBuilder.SetQuality");
    if ((quality & quality::FillMask) > quality::FillSolid)
        RaiseBadValue(Source, "There is no such fill mode");
    quality_ = quality;
    NotifyChanged();
}

// Picking.

void MeshBuilder::PreparePicking()
{
    faults::Point("MeshBuilder.PreparePicking");
    rays_.Prepare(*Compiled());
}

void MeshBuilder::SetObstacle(Obstacle obstacle)
{
    faults::Point("MeshBuilder.SetObstacle");
    if (obstacle < Obstacle::Box || obstacle > Obstacle::None)
        RaiseBadValue(Source, "An obstacle is 0 for the mesh's box, 1 for its faces or 2 for nothing");
    FinishPicks();
    obstacle_ = obstacle;
}

void MeshBuilder::FinishPicks()
{
    for (std::size_t i = 0; i < listeners_.size(); ++i)
        listeners_[i].listener->BeforeChange();
}

// Before vertices or faces change: picks under way are finished, and scenes look at the box again.
void MeshBuilder::BeforeReshaping()
{
    for (std::size_t i = 0; i < listeners_.size(); ++i)
    {
        listeners_[i].listener->BeforeChange();
        if (!listeners_[i].isNotified)
            listeners_[i].listener->OnReshaped(listeners_[i].entry);
        listeners_[i].isNotified = true;
    }
}

MeshBuilder::Listening& MeshBuilder::RecordOf(MeshListener& listener)
{
    for (Listening& record : listeners_)
        if (record.listener == &listener)
            return record;
    listeners_.push_back({&listener});
    return listeners_.back();
}

std::uint32_t MeshBuilder::EntryIn(const MeshListener& listener) const
{
    const auto found = std::ranges::find(listeners_, &listener, &Listening::listener);
    return found != listeners_.end() ? found->entry : NoEntry;
}

void MeshBuilder::RemoveListener(const MeshListener& listener) noexcept
{
    std::erase_if(listeners_, [&](const Listening& record) { return record.listener == &listener; });
}

void MeshBuilder::NotifyChanged() noexcept
{
    for (const Listening& record : listeners_)
        record.listener->OnMeshChanged(record.entry);
}

// Compiled form.

void MeshBuilder::Changed()
{
    NotifyChanged();
    compiled_.reset();
    rays_ = rays::MeshRays{};
}

bool MeshBuilder::MaterialsAreCurrent() const
{
    return std::ranges::all_of(groupMaterials_, [](const GroupMaterial& group)
                               { return !group.material || group.material->Revision() == group.revision; });
}

void MeshBuilder::TakeMaterials(DrawMesh& mesh)
{
    for (std::size_t group = 0; group < mesh.groups.size(); ++group)
    {
        GroupMaterial& taken = groupMaterials_[group];
        if (!taken.material)
            continue;
        taken.revision = taken.material->Revision();
        mesh.groups[group].material = taken.material->Surface();
    }
}

std::shared_ptr<const DrawMesh> MeshBuilder::Compiled()
{
    if (compiled_ && MaterialsAreCurrent())
        return compiled_;
    std::shared_ptr<DrawMesh> mesh;
    if (compiled_) // only materials changed: the arrays stay as they are
    {
        mesh = std::make_shared<DrawMesh>(*compiled_);
        mesh->identity = NewMeshIdentity();
    }
    else
    {
        CompiledMesh compiled = CompileMesh(data_);
        groupMaterials_.clear();
        for (const std::uint32_t look : compiled.groupLooks)
            groupMaterials_.push_back({data_.looks[look].material});
        mesh = std::move(compiled.mesh);
    }
    TakeMaterials(*mesh);
    compiled_ = std::move(mesh);
    return compiled_;
}

} // namespace lumora
