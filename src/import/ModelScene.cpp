// Frames and mesh builders from a checked result: arrays go into the mesh builders straight from the mapped file.
#include "import/ModelScene.h"

#include "platform/scenegraph/mesh/MeshBuilder.h"

namespace lumora
{

using namespace modelstream;

namespace
{

using Textures = std::vector<std::shared_ptr<Texture>>;
using Materials = std::vector<std::shared_ptr<Material>>;

Textures MakeTextures(const ModelReader& reader)
{
    Textures textures;
    for (std::size_t i = 0; i < reader.Textures().size(); ++i)
    {
        const Picture& picture = reader.Textures()[i];
        textures.push_back(std::make_shared<Texture>(static_cast<int>(picture.width), static_cast<int>(picture.height),
                                                     reader.Pixels(i)));
        textures.back()->SetName(reader.Text(picture.name));
    }
    return textures;
}

Materials MakeMaterials(const ModelReader& reader)
{
    Materials materials;
    for (const SurfaceLook& look : reader.Materials())
    {
        auto material = std::make_shared<Material>(look.power);
        material->SetName(reader.Text(look.name));
        material->SetSpecular(look.specular[0], look.specular[1], look.specular[2]);
        material->SetEmissive(look.emissive[0], look.emissive[1], look.emissive[2]);
        materials.push_back(std::move(material));
    }
    return materials;
}

std::shared_ptr<MeshBuilder> MakeMesh(const ModelReader& reader, std::size_t index, const Materials& materials,
                                      const Textures& textures)
{
    const Mesh& mesh = reader.Meshes()[index];
    const ModelReader::MeshArrays& arrays = reader.Arrays(index);
    auto builder = MeshBuilder::Make();
    builder->SetName(reader.Text(mesh.name));
    builder->AddFaces(arrays.positions, arrays.normals, arrays.faceList);
    if (!arrays.uv.empty())
        builder->SetTextureCoordinates(arrays.uv);
    if (mesh.material != NoIndex)
    {
        const SurfaceLook& look = reader.Materials()[mesh.material];
        builder->SetColor(look.color);
        builder->SetMaterial(materials[mesh.material]);
        if (look.texture != NoIndex)
            builder->SetTexture(textures[look.texture]);
    }
    if (!arrays.faceColors.empty())
        builder->SetFaceColors(arrays.faceColors);
    return builder;
}

Matrix4 PlaceOf(const Node& node)
{
    const std::array<double, 12>& t = node.transform;
    return Matrix4::FromAxes({t[0], t[1], t[2]}, {t[3], t[4], t[5]}, {t[6], t[7], t[8]}, {t[9], t[10], t[11]});
}

// The root stands still: what is asked of frames relative to their root is then in the model's own coordinates,
// whatever place the file gives its topmost node.
std::shared_ptr<Frame> MakeFrames(const ModelReader& reader, const std::vector<std::shared_ptr<MeshBuilder>>& meshes)
{
    auto root = Frame::Make();
    std::vector<std::shared_ptr<Frame>> frames;
    frames.reserve(reader.Nodes().size());
    std::size_t nextMesh = 0;
    for (const Node& node : reader.Nodes())
    {
        auto frame = Frame::Make(node.parent == NoIndex ? root : frames[node.parent]);
        frame->SetName(reader.Text(node.name));
        frame->AddTransform(CombineType::Replace, PlaceOf(node));
        for (std::uint32_t i = 0; i < node.meshCount; ++i)
            frame->AddVisual(meshes[reader.NodeMeshes()[nextMesh++]]);
        frames.push_back(std::move(frame));
    }
    return root;
}

} // namespace

ImportedModel BuildModel(const ModelReader& reader, const std::function<bool(double)>& tick)
{
    const Textures textures = MakeTextures(reader);
    const Materials materials = MakeMaterials(reader);
    ImportedModel model;
    std::vector<std::shared_ptr<MeshBuilder>> meshes;
    for (std::size_t i = 0; i < reader.Meshes().size(); ++i)
    {
        if (tick && !tick(static_cast<double>(i) / static_cast<double>(reader.Meshes().size())))
            return {};
        meshes.push_back(MakeMesh(reader, i, materials, textures));
        model.statistics.triangles += reader.Meshes()[i].faceCount;
    }
    model.root = MakeFrames(reader, meshes);
    for (const TextReference warning : reader.Warnings())
        model.warnings.push_back(reader.Text(warning));
    model.statistics.meshes = meshes.size();
    model.statistics.textures = textures.size();
    model.statistics.frames = reader.Nodes().size() + 1;
    return model;
}

} // namespace lumora
