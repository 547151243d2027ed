// Polygons with colours, materials, textures: built by hosts, compiled once, drawn and picked from the compiled form.
#pragma once

#include "base/Matrix.h"
#include "platform/drivers/DrawMesh.h"
#include "platform/scenegraph/bvh/MeshRays.h"
#include "platform/scenegraph/frames/Color.h"
#include "platform/scenegraph/frames/Material.h"
#include "platform/scenegraph/frames/SceneObject.h"
#include "platform/scenegraph/frames/Texture.h"
#include "platform/scenegraph/mesh/MeshData.h"

#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace lumora
{

/// Render quality: shade (0 flat, 1 Gouraud, 2 Phong), light (8 on) and fill (0 points, 64 wireframe, 128 solid) bits.
namespace quality
{
inline constexpr std::uint32_t ShadeMask = 0x07;
inline constexpr std::uint32_t LightOn = 0x08;
inline constexpr std::uint32_t LightMask = 0x38;
inline constexpr std::uint32_t FillMask = 0x1C0;
inline constexpr std::uint32_t FillPoints = 0x00;
inline constexpr std::uint32_t FillWireframe = 0x40;
inline constexpr std::uint32_t FillSolid = 0x80;
inline constexpr std::uint32_t Wireframe = 0x40; ///< flat, unlit, wireframe
inline constexpr std::uint32_t Flat = 0x88;      ///< flat, lit, solid
inline constexpr std::uint32_t Gouraud = 0x89;   ///< Gouraud, lit, solid
} // namespace quality

/// Positions, normals and the packed face list: for each face its vertex count, then a pair (vertex, normal) for each
/// corner, or a vertex alone when there are no normals; a single 0 ends the list.
struct MeshGeometry
{
    std::vector<Vector> vertices;
    std::vector<Vector> normals;
    std::vector<std::int32_t> faceList;
};

/// How a mesh stands in the way of rays that ask for obstacles (RayPickFlags::BoundingBoxes), the control's camera
/// among them. Pictures and exact picks do not ask.
enum class Obstacle : std::int32_t
{
    Box = 0,   ///< the box around it, along its own axes
    Faces = 1, ///< its faces, from either side: a building to walk in, a terrain
    None = 2,  ///< nothing of it: a sky's dome, a cockpit around the camera
};

class DrawList;
class MeshBuilder;

/// Who follows a mesh: the visible list that draws it, the tree that is searched by picks. `entry` is the listener's
/// own.
class MeshListener
{
public:
    virtual ~MeshListener() = default;

    /// Before anything changes that unfinished picks read.
    virtual void BeforeChange() {}

    /// Before the shape changes: said once until the listener looks at the mesh again.
    virtual void OnReshaped(std::uint32_t /*entry*/) {}

    /// The shape, the appearance or the quality changed.
    virtual void OnMeshChanged(std::uint32_t /*entry*/) noexcept {}
};

/// One polygon: before MeshBuilder::AddFace on its own, afterwards a view of the mesh's face. A view raises RMBadObject
/// once the mesh is gone or was emptied.
class Face : public SceneObject
{
public:
    Face() = default;

    /// Adds a corner (in a mesh: with a vertex of its own). RMBadValue when not finite.
    void AddVertex(float x, float y, float z);

    std::int32_t VertexCount() const;

    /// A corner's position, from 0. Error 9 for one that is not there.
    Vector GetVertex(std::int32_t corner) const;

    /// White, opaque at first.
    Color GetColor() const;
    void SetColor(Color color);
    std::shared_ptr<Material> GetMaterial() const; ///< or nothing
    void SetMaterial(const std::shared_ptr<Material>& material);
    std::shared_ptr<Texture> GetTexture() const; ///< or nothing
    void SetTexture(const std::shared_ptr<Texture>& texture);

private:
    friend class MeshBuilder;
    MeshBuilder& Mesh() const;
    const MeshLook& Look() const;

    std::vector<Vector> corners_; // while on its own
    Color color_ = 0xFFFFFFFF;
    std::shared_ptr<Material> material_;
    std::shared_ptr<Texture> texture_;
    std::weak_ptr<MeshBuilder> mesh_;
    std::int32_t index_ = -1;      // in a mesh
    std::uint32_t generation_ = 0; // of the mesh's faces
};

/// A mesh under construction and in use. Faces are polygons of any number of corners, clockwise seen from the front;
/// ones with fewer than three corners are kept, and drawn as nothing. Coordinates are the mesh's own.
///
/// Numbers that are not finite raise RMBadValue, indices outside raise error 9, and leave the mesh as it was.
class MeshBuilder : public Visual, public std::enable_shared_from_this<MeshBuilder>
{
public:
    /// The most vertices or corners a mesh holds.
    static constexpr std::size_t MaximumCount = 0x10000000;

    static std::shared_ptr<MeshBuilder> Make();

    // Building.

    /// A new face of no corners in this mesh, which grows by Face::AddVertex.
    std::shared_ptr<Face> CreateFace();

    /// Moves a face that stands on its own into this mesh. RMFaceUsed when it is in one.
    void AddFace(const std::shared_ptr<Face>& face);

    /// Adds polygons from a packed list; indices count from 0 within the given arrays. An empty `normals` means that
    /// the list has vertex indices alone. Error 9 for an index outside its array or a list that ends early; nothing is
    /// added then. What follows the closing 0 is not read. Answers the index of the first new face.
    std::int32_t AddFaces(std::span<const Vector> vertices, std::span<const Vector> normals,
                          std::span<const std::int32_t> faceList);

    /// A copy of another mesh's faces with their colours, materials and textures. Adding a mesh to itself doubles it.
    void AddMeshBuilder(const std::shared_ptr<MeshBuilder>& other);

    /// Room for so many more vertices, normals and faces; a promise about memory only.
    void ReserveSpace(std::int32_t vertices, std::int32_t normals, std::int32_t faces);

    /// Removes all faces, vertices and normals.
    void Empty();

    void Scale(float x, float y, float z);
    void Translate(float x, float y, float z);

    // Reading.

    /// The polygons as a packed list. Where only some faces have normals, the others are listed with their faces' own,
    /// which follow the mesh's normals.
    MeshGeometry GetGeometry() const;
    std::vector<Vector> GetVertices() const;
    std::vector<Color> GetFaceColors() const;         ///< one per face
    std::vector<float> GetTextureCoordinates() const; ///< u, v of every vertex; 0 where none were set
    std::int32_t GetFaceCount() const;
    std::int32_t GetVertexCount() const;
    std::int32_t GetNormalCount() const;
    std::shared_ptr<Face> GetFace(std::int32_t index);
    Box GetBox() const;

    /// As GetBox, for use within this library.
    const Box& Bounds() const { return data_.box; }

    // Looks. What is said to the mesh is said to each of its faces. Colours with an alpha of 252 (0.99) and more are
    // drawn opaque.

    void SetColor(Color color);
    void SetColorRGB(float red, float green, float blue);
    void SetMaterial(const std::shared_ptr<Material>& material);
    void SetTexture(const std::shared_ptr<Texture>& texture);
    void SetFaceColors(std::span<const Color> colors); ///< one per face; error 9 when the count differs

    /// Per vertex; v 0 is the top of the image.
    void SetTextureCoordinates(std::int32_t vertex, float u, float v);
    void SetTextureCoordinates(std::span<const float> uv); ///< u, v of every vertex

    /// Replaces all normals by ones made from the faces: a corner averages the faces around its vertex (weighted by
    /// their angle) whose own normals are within `creaseAngle` radians. Meshes without normals are drawn with
    /// ones made by the angle 0.5 (in a mesh without normals GetNormalCount stays 0).
    void GenerateNormals(float creaseAngle);

    std::uint32_t GetQuality() const;

    /// As GetQuality, for use within this library.
    std::uint32_t Quality() const { return quality_; }

    /// The most a device draws of this mesh; Gouraud at first.
    void SetQuality(std::uint32_t quality);

    Obstacle GetObstacle() const { return obstacle_; }

    /// Belongs to the mesh as its quality does: AddMeshBuilder copies no obstacle and Empty keeps it. RMBadValue for a
    /// value that is none.
    void SetObstacle(Obstacle obstacle);

    // Compiled form.

    /// Built at need and kept until the mesh or one of its materials changes.
    std::shared_ptr<const DrawMesh> Compiled();

    /// Calls `visit` with each material of the compiled form; may meet one twice. For use within this library.
    template<typename Visit>
    void VisitMaterials(Visit&& visit) const
    {
        for (const GroupMaterial& group : groupMaterials_)
            if (group.material)
                visit(group.material);
    }

    // Picking.

    /// Compiles the mesh and builds its tree for rays now, which picks would otherwise do once they repeat. The tree
    /// lasts until the mesh changes.
    void PreparePicking();

    /// What finds hits on Compiled(). For use within this library.
    rays::MeshRays& Rays() { return rays_; }

    // For use within this library: who follows this mesh.

    struct Listening
    {
        MeshListener* listener;
        std::uint32_t entry = NoEntry; ///< the listener's own
        bool isNotified = false;       ///< of another shape, since it looked at the mesh last
    };

    static constexpr std::uint32_t NoEntry = 0xFFFFFFFF;

    /// The listener's record, made at need.
    Listening& RecordOf(MeshListener& listener);

    /// Of the listener's record, or NoEntry where there is none.
    std::uint32_t EntryIn(const MeshListener& listener) const;
    void RemoveListener(const MeshListener& listener) noexcept;

private:
    friend class Face;
    struct GroupMaterial
    {
        std::shared_ptr<Material> material;
        std::uint64_t revision = 0;
    };

    MeshBuilder() = default;
    void FinishPicks();
    void BeforeReshaping();
    void NotifyChanged() noexcept;
    void Changed();
    std::shared_ptr<Face> ViewOf(std::size_t face);
    std::size_t RequireFace(std::int32_t index) const;
    void AppendCorner(std::size_t face, Vector position);
    void Join(const MeshData& added);
    std::vector<std::uint32_t> AdoptLooks(const std::vector<MeshLook>& looks);
    std::uint32_t LookFor(const MeshLook& look);
    void SetLook(std::size_t face, const MeshLook& look);
    void ChangeEachLook(const std::function<void(MeshLook&)>& change);
    bool MaterialsAreCurrent() const;
    void TakeMaterials(DrawMesh& mesh);

    MeshData data_;
    std::uint32_t quality_ = quality::Gouraud;
    Obstacle obstacle_ = Obstacle::Box;
    std::uint32_t generation_ = 0; // of the faces: Empty ends one
    std::shared_ptr<const DrawMesh> compiled_;
    std::vector<GroupMaterial> groupMaterials_; // of compiled_
    rays::MeshRays rays_;
    std::vector<Listening> listeners_;
};

} // namespace lumora
