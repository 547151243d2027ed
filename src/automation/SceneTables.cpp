// Frames, meshes, lights and what is on them: a row for each member.
#include "automation/SceneTables.h"

#include "automation/PackedNumbers.h"
#include "automation/TableTools.h"
#include "platform/pictures/Bitmap.h"

#include <limits>

namespace lumora::automation
{

namespace
{

using FrameReference = std::shared_ptr<Frame>;

void GetFrameOrientation(Frame& frame, const FrameReference& reference, float& dirX, float& dirY, float& dirZ,
                         float& upX, float& upY, float& upZ)
{
    const Orientation orientation = frame.GetOrientation(reference);
    Split(orientation.direction, dirX, dirY, dirZ);
    Split(orientation.up, upX, upY, upZ);
}

FrameConstraint ConstraintFrom(std::int32_t constraint)
{
    if (constraint < 0 || constraint > 2)
        throw RuntimeError{error::RMBadValue, "Frame", "A constraint is 0 for z, 1 for y or 2 for x"};
    return static_cast<FrameConstraint>(constraint);
}

FogMode FogModeFrom(std::int32_t mode)
{
    if (mode < 0 || mode > 3)
        throw RuntimeError{error::RMBadValue, "Frame", "A fog mode is 0 none, 1 or 2 exponential, or 3 linear"};
    return static_cast<FogMode>(mode);
}

LightKind LightKindFrom(std::int32_t kind)
{
    if (kind < 0 || kind > 3)
        throw RuntimeError{error::RMBadValue, "RetainedMode",
                           "A light is 0 ambient, 1 directional, 2 a point or 3 a spot"};
    return static_cast<LightKind>(kind);
}

std::shared_ptr<Light> CreateLight(RetainedMode& factory, std::int32_t kind, float red, float green, float blue)
{
    return factory.CreateLight(LightKindFrom(kind), {red, green, blue});
}

std::shared_ptr<Texture> CreateTexture(RetainedMode& factory, const std::shared_ptr<Picture>& picture)
{
    if (!picture || !picture->Handle())
        throw RuntimeError{error::RMBadObject, "RetainedMode", "A texture needs a picture"};
    const Bitmap& bitmap = *picture->Handle();
    return factory.CreateTexture(bitmap.Width(), bitmap.Height(), bitmap.Data());
}

std::int32_t AddFaces(MeshBuilder& mesh, const Vectors& vertices, const Vectors& normals,
                      const Numbers<std::int32_t>& faceList)
{
    return mesh.AddFaces(vertices.View(), normals.View(), faceList.View());
}

void GetMeshBox(MeshBuilder& mesh, float& minX, float& minY, float& minZ, float& maxX, float& maxY, float& maxZ)
{
    Split(mesh.GetBox(), minX, minY, minZ, maxX, maxY, maxZ);
}

std::vector<MemberRow<Frame>> FramePlaceRows()
{
    return {
        Method("SetPosition", "Reference, X, Y, Z", &Frame::SetPosition,
               "puts the frame at a place in the reference frame's coordinates; nothing is the root"),
        Method(
            "GetPosition", "Reference, X, Y, Z",
            [](Frame& frame, const FrameReference& reference, float& x, float& y, float& z)
            { Split(frame.GetPosition(reference), x, y, z); },
            "the frame's place in the reference frame's coordinates"),
        Method(
            "SetOrientation", "Reference, DirX, DirY, DirZ, UpX, UpY, UpZ",
            [](Frame& frame, const FrameReference& reference, float dirX, float dirY, float dirZ, float upX, float upY,
               float upZ) {
                frame.SetOrientation(reference, {dirX, dirY, dirZ}, {upX, upY, upZ});
            },
            "turns the z axis along a direction and y as near to up as it goes"),
        Method("GetOrientation", "Reference, DirX, DirY, DirZ, UpX, UpY, UpZ", &GetFrameOrientation,
               "the z and the y axis as unit vectors of the reference frame"),
        Method(
            "LookAt", "Target, Reference, Constraint",
            [](Frame& frame, const FrameReference& target, const FrameReference& reference, std::int32_t constraint)
            { frame.LookAt(target, reference, ConstraintFrom(constraint)); },
            "faces another frame's origin without turning about the constrained axis: 0 z, 1 y, 2 x"),
        Method(
            "AddTranslation", "Combine, X, Y, Z",
            [](Frame& frame, std::int32_t combine, float x, float y, float z)
            { frame.AddTranslation(CombineFrom(combine), x, y, z); },
            "moves the frame; combine 0 replaces, 1 is before, 2 after its transform"),
        Method(
            "AddRotation", "Combine, X, Y, Z, Angle",
            [](Frame& frame, std::int32_t combine, float x, float y, float z, float angle) {
                frame.AddRotation(CombineFrom(combine), {x, y, z}, angle);
            },
            "turns the frame about an axis, radians"),
        Method(
            "AddScale", "Combine, X, Y, Z",
            [](Frame& frame, std::int32_t combine, float x, float y, float z)
            { frame.AddScale(CombineFrom(combine), x, y, z); },
            "scales the frame along its axes"),
    };
}

std::vector<MemberRow<Frame>> FrameRows()
{
    std::vector<MemberRow<Frame>> rows = FramePlaceRows();
    std::vector<MemberRow<Frame>> more = {
        Property("Parent", &Frame::Parent, "the frame above, or nothing"),
        Property("Root", &Frame::Root, "the frame at the top"),
        Property(
            "ChildCount", [](const Frame& frame) { return static_cast<std::int32_t>(frame.Children().size()); },
            "how many frames are below this one"),
        Method(
            "Child", "Index", [](Frame& frame, std::int32_t index) { return ElementOf(frame.Children(), index); },
            "a frame below this one, from 0"),
        Method("AddChild", "Child", &Frame::AddChild, "puts a frame last below this one; its own transform stays"),
        Method("DeleteChild", "Child", &Frame::DeleteChild, "takes a frame out"),
        Property(
            "VisualCount", [](const Frame& frame) { return static_cast<std::int32_t>(frame.Visuals().size()); },
            "how many meshes the frame shows"),
        Method(
            "Visual", "Index", [](Frame& frame, std::int32_t index) { return ElementOf(frame.Visuals(), index); },
            "a mesh the frame shows, from 0"),
        Method("AddVisual", "Visual", &Frame::AddVisual, "shows a mesh here"),
        Method("DeleteVisual", "Visual", &Frame::DeleteVisual, "shows a mesh here no more"),
        Property(
            "LightCount", [](const Frame& frame) { return static_cast<std::int32_t>(frame.Lights().size()); },
            "how many lights stand here"),
        Method(
            "Light", "Index", [](Frame& frame, std::int32_t index) { return ElementOf(frame.Lights(), index); },
            "a light that stands here, from 0"),
        Method("AddLight", "Light", &Frame::AddLight, "puts a light here, shining along z"),
        Method("DeleteLight", "Light", &Frame::DeleteLight, "takes a light away"),
        Method("SetSceneBackgroundRGB", "Red, Green, Blue", &Frame::SetSceneBackgroundRGB,
               "background of the scene, components of 0 to 1"),
        Property("SceneFogEnable", &Frame::GetSceneFogEnable, &Frame::SetSceneFogEnable, "1 while fog is on"),
        Method(
            "SetSceneFogMode", "Mode",
            [](Frame& frame, std::int32_t mode) { frame.SetSceneFogMode(FogModeFrom(mode)); },
            "0 none, 1 exponential, 2 its square, 3 linear"),
        Method("SetSceneFogColor", "Red, Green, Blue", &Frame::SetSceneFogColor, "components of 0 to 1"),
        Method("SetSceneFogParams", "Start, End, Density", &Frame::SetSceneFogParams,
               "depths of linear fog and density of exponential fog"),
    };
    std::ranges::move(more, std::back_inserter(rows));
    return rows;
}

std::vector<MemberRow<MeshBuilder>> MeshRows()
{
    return {
        Method("CreateFace", "", &MeshBuilder::CreateFace, "a new face without corners in this mesh"),
        Method("AddFace", "Face", &MeshBuilder::AddFace, "moves a face that stands on its own into this mesh"),
        Method("AddFaces", "Vertices, Normals, FaceList", &AddFaces,
               "adds polygons, from buffers or texts of numbers: x y z of each vertex and normal, and the packed face "
               "list. "
               "Returns the first new face"),
        Method("AddMeshBuilder", "Other", &MeshBuilder::AddMeshBuilder, "adds a copy of another mesh's faces"),
        Method("ReserveSpace", "Vertices, Normals, Faces", &MeshBuilder::ReserveSpace, "room for so many more"),
        Method("Empty", "", &MeshBuilder::Empty, "removes everything"),
        Method("Scale", "X, Y, Z", &MeshBuilder::Scale, "scales every vertex"),
        Method("Translate", "X, Y, Z", &MeshBuilder::Translate, "moves every vertex"),
        Property("FaceCount", &MeshBuilder::GetFaceCount, "how many polygons there are"),
        Property("VertexCount", &MeshBuilder::GetVertexCount, "how many vertices there are"),
        Property("NormalCount", &MeshBuilder::GetNormalCount, "how many normals there are"),
        Method("GetFace", "Index", &MeshBuilder::GetFace, "a face, from 0"),
        Method("GetBox", "MinX, MinY, MinZ, MaxX, MaxY, MaxZ", &GetMeshBox, "the box around all vertices"),
        Method("SetColor", "Color", &MeshBuilder::SetColor, "0xAARRGGBB of every face"),
        Method("SetColorRGB", "Red, Green, Blue", &MeshBuilder::SetColorRGB, "components of 0 to 1, opaque"),
        Method("SetMaterial", "Material", &MeshBuilder::SetMaterial, "how every face answers light"),
        Method("SetTexture", "Texture", &MeshBuilder::SetTexture, "the image on every face"),
        Method(
            "SetTextureCoordinates", "Vertex, U, V",
            [](MeshBuilder& mesh, std::int32_t vertex, float u, float v) { mesh.SetTextureCoordinates(vertex, u, v); },
            "of one vertex; v 0 is the top of the image"),
        Method("GenerateNormals", "CreaseAngle", &MeshBuilder::GenerateNormals,
               "makes normals from the faces, radians"),
        Method("PreparePicking", "", &MeshBuilder::PreparePicking,
               "makes ready for fast picks what picks would make once they repeat"),
        Property("Quality", &MeshBuilder::GetQuality, &MeshBuilder::SetQuality, "the most a device draws of this mesh"),
        Property(
            "Obstacle", [](const MeshBuilder& mesh) { return static_cast<std::int32_t>(mesh.GetObstacle()); },
            [](MeshBuilder& mesh, std::int32_t kind) { mesh.SetObstacle(static_cast<Obstacle>(kind)); },
            "what of it stops the camera: 0 its box, 1 its faces, 2 nothing"),
    };
}

} // namespace

template<>
const MemberTable<Frame>& TableOf<Frame>()
{
    static const MemberTable<Frame> table{"Frame", Joined(WithNames(FrameRows()), FrameReadingRows())};
    return table;
}

template<>
const MemberTable<MeshBuilder>& TableOf<MeshBuilder>()
{
    static const MemberTable<MeshBuilder> table{"MeshBuilder", Joined(WithNames(MeshRows()), MeshReadingRows())};
    return table;
}

template<>
const MemberTable<Face>& TableOf<Face>()
{
    static const MemberTable<Face> table{
        "Face", Joined(WithNames<Face>({
                           Method("AddVertex", "X, Y, Z", &Face::AddVertex, "adds a corner"),
                           Property("VertexCount", &Face::VertexCount, "how many corners there are"),
                           Property("Color", &Face::GetColor, &Face::SetColor, "0xAARRGGBB"),
                           Method("SetMaterial", "Material", &Face::SetMaterial, "how the face answers light"),
                           Method("SetTexture", "Texture", &Face::SetTexture, "the image on the face"),
                       }),
                       FaceReadingRows())};
    return table;
}

template<>
const MemberTable<Light>& TableOf<Light>()
{
    static const MemberTable<Light> table{
        "Light",
        WithNames<Light>({
            Property("Kind", &Light::Kind, "0 ambient, 1 directional, 2 point, 3 spot"),
            Method("SetColor", "Red, Green, Blue", &Light::SetColor, "components, may exceed 1"),
            Method(
                "GetColor", "Red, Green, Blue",
                [](Light& light, float& red, float& green, float& blue) { Split(light.GetColor(), red, green, blue); },
                "components"),
            Property("Range", &Light::Range, &Light::SetRange, "how far it reaches, scene units"),
            Method("SetAttenuation", "Constant, Linear, Quadratic", &Light::SetAttenuation,
                   "divisors of its light at a distance"),
            Method("SetCone", "Umbra, Penumbra", &Light::SetCone, "full angles of a spot, radians"),
            Property("Umbra", &Light::Umbra, "angle of the bright cone, radians"),
            Property("Penumbra", &Light::Penumbra, "angle of the whole cone, radians"),
        })};
    return table;
}

template<>
const MemberTable<Material>& TableOf<Material>()
{
    static const MemberTable<Material> table{
        "Material",
        WithNames<Material>({
            Property("Power", &Material::Power, &Material::SetPower, "exponent of the highlight; 0 is no highlight"),
            Method("SetSpecular", "Red, Green, Blue", &Material::SetSpecular, "colour of the highlight"),
            Method("SetEmissive", "Red, Green, Blue", &Material::SetEmissive, "light of its own"),
        })};
    return table;
}

template<>
const MemberTable<Texture>& TableOf<Texture>()
{
    static const MemberTable<Texture> table{
        "Texture",
        WithNames<Texture>({
            Property(
                "Width", [](const Texture& texture) { return std::int32_t{texture.Image()->width}; }, "pixels"),
            Property(
                "Height", [](const Texture& texture) { return std::int32_t{texture.Image()->height}; }, "pixels"),
        })};
    return table;
}

template<>
const MemberTable<RetainedMode>& TableOf<RetainedMode>()
{
    static const MemberTable<RetainedMode> table{
        "RetainedMode",
        Joined<RetainedMode>(
            {
                Method("CreateFrame", "Parent", &RetainedMode::CreateFrame,
                       "a frame below another, or a root for nothing"),
                Method("CreateMeshBuilder", "", &RetainedMode::CreateMeshBuilder, "an empty mesh"),
                Method(
                    "CreateFace", "", [](RetainedMode&) { return std::make_shared<Face>(); },
                    "a face on its own, for AddFace"),
                Method("CreateLight", "Kind, Red, Green, Blue", &CreateLight,
                       "0 ambient, 1 directional, 2 point, 3 spot"),
                Method("CreateMaterial", "Power", &RetainedMode::CreateMaterial, "the exponent of its highlight"),
                Method("CreateTexture", "Picture", &CreateTexture, "a copy of a picture's pixels"),
                Method(
                    "CreatePicture", "Width, Height, Color",
                    [](RetainedMode&, std::int32_t width, std::int32_t height, std::uint32_t color)
                    { return NewPicture(width, height, color); },
                    "a picture of one colour, 0xAARRGGBB"),
                Method(
                    "LoadPicture", "Path", [](RetainedMode&, const std::string& path) { return LoadPicture(path); },
                    "decodes a picture file"),
            },
            FactoryRows())};
    return table;
}

} // namespace lumora::automation
