// What is read back of scenes: geometry, transforms, ray picks and animations; and the root's vector operations.
#include "automation/PackedNumbers.h"
#include "automation/SceneTables.h"
#include "automation/TableTools.h"
#include "platform/pictures/Bitmap.h"

namespace lumora
{

// clang-format off
template<> struct NumberOf<Animation::Key> { using Type = float; };
// clang-format on

namespace automation
{

namespace
{

using FrameReference = std::shared_ptr<Frame>;
using Single = float&;

std::shared_ptr<PickedArray> RayPick(Frame& frame, const FrameReference& reference, float directionX, float directionY,
                                     float directionZ, float originX, float originY, float originZ, std::int32_t flags)
{
    if (flags != 0 && flags != 1)
        RaiseBadValue("Frame", "The flags of a ray pick are 0 for faces or 1 for bounding boxes");
    return frame.RayPick(reference, {{directionX, directionY, directionZ}, {originX, originY, originZ}},
                         static_cast<RayPickFlags>(flags));
}

void GetPick(PickedArray& hits, std::int32_t index, std::shared_ptr<Visual>& visual, FrameReference& frame,
             std::int32_t& face, Single x, Single y, Single z)
{
    const PickHit& hit = hits.GetPick(index);
    visual = hit.visual;
    frame = hit.framePath.empty() ? nullptr : hit.framePath.back();
    face = hit.description.faceIndex;
    Split(hit.description.position, x, y, z);
}

void GetGeometry(MeshBuilder& mesh, std::vector<Vector>& vertices, std::vector<Vector>& normals,
                 std::vector<std::int32_t>& faceList)
{
    MeshGeometry geometry = mesh.GetGeometry();
    vertices = std::move(geometry.vertices);
    normals = std::move(geometry.normals);
    faceList = std::move(geometry.faceList);
}

// A copy of pixels row by row, as many as the sides say.
std::shared_ptr<Texture> CreateTexture(RetainedMode& root, std::int32_t width, std::int32_t height,
                                       const Numbers<std::uint32_t>& pixels)
{
    return root.CreateTexture(width, height, pixels.View());
}

} // namespace

std::vector<MemberRow<Frame>> FrameReadingRows()
{
    return {
        Property(
            "LocalTransform", [](const Frame& frame) { return frame.LocalTransform(); },
            "relative to the parent: 16 numbers, the rows of a matrix for row vectors"),
        Property(
            "WorldTransform", [](Frame& frame) { return frame.WorldTransform(); },
            "relative to the world in which the roots stand"),
        Method(
            "TransformTo", "Reference",
            [](Frame& frame, const FrameReference& reference) { return frame.TransformTo(reference); },
            "from this frame's coordinates to the reference frame's; nothing is the root"),
        Method(
            "AddTransform", "Combine, Transform",
            [](Frame& frame, std::int32_t combine, const Matrix4& transform)
            { frame.AddTransform(CombineFrom(combine), transform); },
            "16 numbers, affine; combine 0 replaces, 1 is before, 2 after the frame's transform"),
        Method(
            "GetBounds", "Reference, MinX, MinY, MinZ, MaxX, MaxY, MaxZ",
            [](Frame& frame, const FrameReference& reference, Single minX, Single minY, Single minZ, Single maxX,
               Single maxY, Single maxZ) { Split(frame.Bounds(reference), minX, minY, minZ, maxX, maxY, maxZ); },
            "the box around everything shown here and below, in the reference frame's coordinates"),
        Method("RayPick", "Reference, DirX, DirY, DirZ, OriginX, OriginY, OriginZ, Flags", &RayPick,
               "what a ray in the reference frame's coordinates meets here and below; flags 0 faces, 1 boxes"),
        Method(
            "GetSceneBackgroundRGB", "Red, Green, Blue",
            [](Frame& frame, Single red, Single green, Single blue)
            { Split(frame.Scene().backgroundColor, red, green, blue); },
            "background of the scene"),
        Method(
            "GetSceneFog", "Mode, Red, Green, Blue, Start, End, Density",
            [](Frame& frame, std::int32_t& mode, Single red, Single green, Single blue, Single start, Single end,
               Single density)
            {
                const SceneSettings& scene = frame.Scene();
                mode = static_cast<std::int32_t>(scene.fogMode);
                Split(scene.fogColor, red, green, blue);
                start = scene.fogStart;
                end = scene.fogEnd;
                density = scene.fogDensity;
            },
            "fog of the scene, on or off"),
    };
}

std::vector<MemberRow<MeshBuilder>> MeshReadingRows()
{
    return {
        Method("GetGeometry", "Vertices, Normals, FaceList", &GetGeometry,
               "all polygons, as AddFaces takes them; vertices alone in the face list when there are no normals"),
        Property("Vertices", &MeshBuilder::GetVertices, "x y z of each"),
        Property(
            "FaceColors", &MeshBuilder::GetFaceColors,
            [](MeshBuilder& mesh, const Numbers<std::uint32_t>& colors) { mesh.SetFaceColors(colors.View()); },
            "0xAARRGGBB of each face"),
        Property(
            "TextureCoordinates", &MeshBuilder::GetTextureCoordinates,
            [](MeshBuilder& mesh, const Numbers<float>& uv) { mesh.SetTextureCoordinates(uv.View()); },
            "u v of each vertex"),
    };
}

std::vector<MemberRow<Face>> FaceReadingRows()
{
    return {
        Method(
            "GetVertex", "Corner, X, Y, Z",
            [](Face& face, std::int32_t corner, Single x, Single y, Single z)
            { Split(face.GetVertex(corner), x, y, z); },
            "a corner's position, from 0"),
        Property("Material", &Face::GetMaterial, "how the face answers light, or nothing"),
        Property("Texture", &Face::GetTexture, "the image on the face, or nothing"),
    };
}

template<>
const MemberTable<PickedArray>& TableOf<PickedArray>()
{
    static const MemberTable<PickedArray> table{
        "PickedArray",
        {
            Property("Count", &PickedArray::GetSize,
                     "how many hits there are; whether there are any, HasPick says sooner"),
            Method("HasPick", "Index", &PickedArray::HasPick, "whether there is a hit of this index, nearest first"),
            Method("GetPick", "Index, Visual, Frame, FaceIndex, X, Y, Z", &GetPick,
                   "a hit: the mesh, the frame that shows it, the face and the place; of box hits z is the distance"),
            Method(
                "PathLength", "Index",
                [](PickedArray& hits, std::int32_t index)
                { return static_cast<std::int32_t>(hits.GetPick(index).framePath.size()); },
                "how many frames lead from the picked one to the one that shows the mesh"),
            Method(
                "PathFrame", "Index, Place",
                [](PickedArray& hits, std::int32_t index, std::int32_t place)
                { return ElementOf(hits.GetPick(index).framePath, place); },
                "a frame on that path, the picked one first"),
        }};
    return table;
}

template<>
const MemberTable<Animation>& TableOf<Animation>()
{
    static const MemberTable<Animation> table{
        "Animation",
        WithNames<Animation>({
            Property("Options", &Animation::GetOptions, &Animation::SetOptions,
                     "sum of 1 open or 2 closed, 4 linear or 8 spline, and 32"),
            Method("AddPositionKey", "Time, X, Y, Z", &Animation::AddPositionKey,
                   "where the frame is at a time; replaces the key of the same time"),
            Property(
                "Keys", [](const Animation& animation) { return animation.Keys(); }, "time x y z of each, by time"),
            Property(
                "Frame", [](const Animation& animation) { return animation.BoundFrame(); }, &Animation::SetFrame,
                "the frame that is moved"),
            Method(
                "PositionAt", "Time, X, Y, Z",
                [](Animation& animation, float time, Single x, Single y, Single z)
                { Split(animation.PositionAt(time), x, y, z); },
                "the place at a time, relative to the frame's parent"),
            Method("SetTime", "Time", &Animation::SetTime, "moves the frame to its place at a time"),
        })};
    return table;
}

std::vector<MemberRow<RetainedMode>> FactoryRows()
{
    using Root = RetainedMode;
    return {
        Method("CreateAnimation", "", &Root::CreateAnimation, "positions over time, for a frame"),
        Method("CreateTextureFromPixels", "Width, Height, Pixels", &CreateTexture,
               "a copy of pixels, row by row, 0xAARRGGBB"),
        Property(
            "Geometry", [](const Root&) { return GeometryKernel::Shared(); }, "the geometry kernel"),
        Method(
            "VectorRotate", "X, Y, Z, AxisX, AxisY, AxisZ, Angle, ResultX, ResultY, ResultZ",
            [](Root& root, float x, float y, float z, float axisX, float axisY, float axisZ, float angle,
               Single resultX, Single resultY, Single resultZ) {
                Split(root.VectorRotate({x, y, z}, {axisX, axisY, axisZ}, angle), resultX, resultY, resultZ);
            },
            "turned about an axis, radians, and of length 1"),
        Method(
            "VectorModulus", "X, Y, Z",
            [](Root& root, float x, float y, float z) {
                return root.VectorModulus({x, y, z});
            },
            "the length"),
        Method(
            "VectorScale", "X, Y, Z, Factor, ResultX, ResultY, ResultZ",
            [](Root& root, float x, float y, float z, float factor, Single resultX, Single resultY, Single resultZ) {
                Split(root.VectorScale({x, y, z}, factor), resultX, resultY, resultZ);
            },
            "the vector times a factor"),
        Method(
            "VectorNormalize", "X, Y, Z",
            [](Root& root, Single x, Single y, Single z) {
                Split(root.VectorNormalize({x, y, z}), x, y, z);
            },
            "in place, to length 1; a zero vector stays"),
        Method(
            "VectorDotProduct", "AX, AY, AZ, BX, BY, BZ",
            [](Root& root, float ax, float ay, float az, float bx, float by, float bz) {
                return root.VectorDotProduct({ax, ay, az}, {bx, by, bz});
            },
            "a times b"),
        Method(
            "VectorCrossProduct", "AX, AY, AZ, BX, BY, BZ, ResultX, ResultY, ResultZ",
            [](Root& root, float ax, float ay, float az, float bx, float by, float bz, Single resultX, Single resultY,
               Single resultZ) {
                Split(root.VectorCrossProduct({ax, ay, az}, {bx, by, bz}), resultX, resultY, resultZ);
            },
            "square to both"),
    };
}

} // namespace automation

} // namespace lumora
