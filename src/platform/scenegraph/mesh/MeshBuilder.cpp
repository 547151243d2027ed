// Mesh builders: polygons in and out.
#include "platform/scenegraph/mesh/MeshBuilder.h"

#include "base/Faults.h"
#include "platform/scenegraph/frames/Checks.h"
#include "platform/scenegraph/mesh/MeshNormals.h"

#include <algorithm>
#include <new>
#include <stdexcept>

namespace lumora
{

namespace
{

constexpr const char* Source = "MeshBuilder";

constexpr Color White = 0xFFFFFFFF;

// ReserveSpace believes a caller up to this many elements; beyond, the arrays grow as they fill.
constexpr std::size_t MaximumReserve = std::size_t{1} << 22;

// Runs what only allocates; afterwards the changes themselves cannot fail.
template<typename Allocate>
void RequireMemory(Allocate&& allocate)
{
    try
    {
        allocate();
    }
    catch (const std::bad_alloc&)
    {
        throw RuntimeError{error::RMBadAlloc, Source, "There is not enough memory for the mesh"};
    }
    catch (const std::length_error&)
    {
        throw RuntimeError{error::RMBadAlloc, Source, "There is not enough memory for the mesh"};
    }
}

// Room for `more` elements, doubling so that many small additions stay cheap.
template<typename T>
void Grow(std::vector<T>& list, std::size_t more)
{
    const std::size_t needed = list.size() + more;
    if (needed > list.capacity())
        list.reserve(std::max(needed, 2 * list.capacity()));
}

void RequireRoom(const MeshData& data, std::size_t vertices, std::size_t normals, std::size_t corners,
                 std::size_t faces)
{
    constexpr std::size_t most = MeshBuilder::MaximumCount;
    if (data.vertices.size() + vertices > most || data.normals.size() + normals > most ||
        data.CornerCount() + corners > most || data.FaceCount() + faces > most)
        throw RuntimeError{error::OutOfMemory, Source,
                           "A mesh holds at most " + std::to_string(most) + " vertices or corners"};
}

struct ListSize
{
    std::size_t faces = 0;
    std::size_t corners = 0;
};

[[noreturn]] void RaiseMalformed(const std::string& description)
{
    throw RuntimeError{error::SubscriptOutOfRange, Source, description};
}

// Measures a packed list and refuses one that could not be added.
ListSize ExamineFaceList(std::span<const std::int32_t> list, std::size_t vertexCount, std::size_t normalCount)
{
    const std::size_t stride = normalCount > 0 ? 2 : 1;
    const auto isWithin = [](std::int32_t index, std::size_t count)
    { return index >= 0 && static_cast<std::size_t>(index) < count; };

    ListSize size;
    std::size_t at = 0;
    while (at < list.size() && list[at] != 0)
    {
        const std::int32_t corners = list[at++];
        if (corners < 0 || static_cast<std::size_t>(corners) > (list.size() - at) / stride)
            RaiseMalformed("The face list ends within a face");
        for (std::int32_t corner = 0; corner < corners; ++corner, at += stride)
        {
            if (!isWithin(list[at], vertexCount))
                RaiseMalformed("The face list names vertex " + std::to_string(list[at]) + ", which is not there");
            if (stride == 2 && !isWithin(list[at + 1], normalCount))
                RaiseMalformed("The face list names normal " + std::to_string(list[at + 1]) + ", which is not there");
        }
        ++size.faces;
        size.corners += static_cast<std::size_t>(corners);
    }
    if (at >= list.size())
        RaiseMalformed("The face list has no closing 0");
    return size;
}

void RequireFinite(std::span<const Vector> list)
{
    if (!std::ranges::all_of(list, [](Vector v) { return IsFinite(v); }))
        RaiseBadValue(Source, "A number is infinite or not a number");
}

// From now on every corner has an entry, if only "none".
void ListNormals(MeshData& data)
{
    if (data.cornerNormal.empty())
        data.cornerNormal.assign(data.CornerCount(), MeshData::NoNormal);
}

// There is room for `size` more.
void AppendFaceList(MeshData& data, std::span<const std::int32_t> list, const ListSize& size, std::uint32_t firstVertex,
                    std::uint32_t firstNormal, bool withNormals)
{
    const bool listNormals = withNormals || !data.cornerNormal.empty();
    std::size_t corner = data.CornerCount();
    std::size_t face = data.faceStart.size();
    data.cornerVertex.resize(corner + size.corners);
    data.faceStart.resize(face + size.faces);
    if (listNormals)
        data.cornerNormal.resize(corner + size.corners, MeshData::NoNormal);
    for (std::size_t at = 0; list[at] != 0;)
    {
        for (std::int32_t left = list[at++]; left > 0; --left, ++corner)
        {
            data.cornerVertex[corner] = firstVertex + static_cast<std::uint32_t>(list[at++]);
            if (withNormals)
                data.cornerNormal[corner] = firstNormal + static_cast<std::uint32_t>(list[at++]);
        }
        data.faceStart[face++] = static_cast<std::uint32_t>(corner);
    }
}

bool LacksNormals(const MeshData& data, std::size_t face)
{
    for (std::uint32_t corner = data.faceStart[face]; corner < data.faceStart[face + 1]; ++corner)
        if (data.NormalOf(corner) == MeshData::NoNormal)
            return true;
    return false;
}

// Whether every vertex can be scaled and moved so; the box's corners move farthest.
bool StaysFinite(const Box& box, Vector factor, Vector distance)
{
    const auto moved = [&](Vector p) {
        return Vector{p.x * factor.x + distance.x, p.y * factor.y + distance.y, p.z * factor.z + distance.z};
    };
    return box.IsEmpty() || (IsFinite(moved(box.minimum)) && IsFinite(moved(box.maximum)));
}

void MoveVertices(MeshData& data, Vector factor, Vector distance)
{
    data.box = Box{};
    for (Vector& p : data.vertices)
    {
        p = {p.x * factor.x + distance.x, p.y * factor.y + distance.y, p.z * factor.z + distance.z};
        data.box.Include(p);
    }
}

} // namespace

// Faces.

MeshBuilder& Face::Mesh() const
{
    const auto mesh = mesh_.lock();
    if (!mesh || mesh->generation_ != generation_)
        throw RuntimeError{error::RMBadObject, "Face", "The mesh of this face is gone or was emptied"};
    return *mesh;
}

void Face::AddVertex(float x, float y, float z)
{
    faults::Point("Face.AddVertex");
    lumora::RequireFinite("Face", {x, y, z});
    if (index_ < 0)
        corners_.push_back({x, y, z});
    else
        Mesh().AppendCorner(static_cast<std::size_t>(index_), {x, y, z});
}

std::int32_t Face::VertexCount() const
{
    faults::Point("Face.VertexCount");
    if (index_ < 0)
        return static_cast<std::int32_t>(corners_.size());
    const MeshData& data = Mesh().data_;
    const auto face = static_cast<std::size_t>(index_);
    return static_cast<std::int32_t>(data.faceStart[face + 1] - data.faceStart[face]);
}

Vector Face::GetVertex(std::int32_t corner) const
{
    const std::int32_t count = VertexCount();
    if (corner < 0 || corner >= count)
        throw RuntimeError{error::SubscriptOutOfRange, "Face",
                           "There is no corner " + std::to_string(corner) + " among " + std::to_string(count)};
    if (index_ < 0)
        return corners_[static_cast<std::size_t>(corner)];
    const MeshData& data = Mesh().data_;
    return data.vertices[data.cornerVertex[data.faceStart[static_cast<std::size_t>(index_)] +
                                           static_cast<std::uint32_t>(corner)]];
}

// Building.

std::shared_ptr<MeshBuilder> MeshBuilder::Make()
{
    return std::shared_ptr<MeshBuilder>{new MeshBuilder};
}

std::shared_ptr<Face> MeshBuilder::ViewOf(std::size_t face)
{
    auto view = std::make_shared<Face>();
    view->mesh_ = weak_from_this();
    view->index_ = static_cast<std::int32_t>(face);
    view->generation_ = generation_;
    return view;
}

std::shared_ptr<Face> MeshBuilder::CreateFace()
{
    faults::Point("MeshBuilder.CreateFace");
    RequireRoom(data_, 0, 0, 0, 1);
    const std::size_t face = data_.FaceCount();
    auto view = ViewOf(face);
    RequireMemory(
        [&]
        {
            Grow(data_.faceStart, 1);
            data_.color.Reserve(White, 1, face);
            data_.look.Reserve(0, 1, face);
        });
    data_.color.Append(White, 1, face);
    data_.look.Append(0, 1, face);
    data_.faceStart.push_back(data_.faceStart.back());
    Changed();
    return view;
}

void MeshBuilder::AppendCorner(std::size_t face, Vector position)
{
    BeforeReshaping();
    RequireRoom(data_, 1, 0, 1, 0);
    RequireMemory(
        [&]
        {
            Grow(data_.vertices, 1);
            Grow(data_.cornerVertex, 1);
            if (!data_.cornerNormal.empty())
                Grow(data_.cornerNormal, 1);
        });
    const auto place = static_cast<std::ptrdiff_t>(data_.faceStart[face + 1]);
    const auto vertex = static_cast<std::uint32_t>(data_.vertices.size());
    data_.cornerVertex.insert(data_.cornerVertex.begin() + place, vertex);
    if (!data_.cornerNormal.empty())
        data_.cornerNormal.insert(data_.cornerNormal.begin() + place, MeshData::NoNormal);
    for (std::size_t later = face + 1; later < data_.faceStart.size(); ++later)
        ++data_.faceStart[later];
    data_.vertices.push_back(position);
    data_.box.Include(position);
    Changed();
}

void MeshBuilder::AddFace(const std::shared_ptr<Face>& face)
{
    faults::Point("MeshBuilder.AddFace");
    RequireObject(Source, face, "The face");
    if (face->index_ >= 0)
        throw RuntimeError{error::RMFaceUsed, Source, "The face is in a mesh already"};
    std::vector<std::int32_t> list{static_cast<std::int32_t>(face->corners_.size())};
    for (std::size_t corner = 0; corner < face->corners_.size(); ++corner)
        list.push_back(static_cast<std::int32_t>(corner));
    list.push_back(0);

    const std::size_t index = data_.FaceCount();
    if (face->corners_.empty()) // a packed list has no way to say "no corners"
        CreateFace();
    else
        AddFaces(face->corners_, {}, list);
    data_.color.Set(index, face->color_, data_.FaceCount());
    SetLook(index, {face->material_, face->texture_});
    face->mesh_ = weak_from_this();
    face->index_ = static_cast<std::int32_t>(index);
    face->generation_ = generation_;
    face->corners_.clear();
}

std::int32_t MeshBuilder::AddFaces(std::span<const Vector> vertices, std::span<const Vector> normals,
                                   std::span<const std::int32_t> faceList)
{
    faults::Point("MeshBuilder.AddFaces");
    RequireFinite(vertices);
    RequireFinite(normals);
    const ListSize size = ExamineFaceList(faceList, vertices.size(), normals.size());
    RequireRoom(data_, vertices.size(), normals.size(), size.corners, size.faces);

    BeforeReshaping();
    const std::size_t firstFace = data_.FaceCount();
    RequireMemory(
        [&]
        {
            Grow(data_.vertices, vertices.size());
            Grow(data_.normals, normals.size());
            Grow(data_.cornerVertex, size.corners);
            Grow(data_.faceStart, size.faces);
            if (!normals.empty())
                ListNormals(data_);
            if (!data_.cornerNormal.empty() || !normals.empty())
                Grow(data_.cornerNormal, size.corners);
            data_.color.Reserve(White, size.faces, firstFace);
            data_.look.Reserve(0, size.faces, firstFace);
        });
    data_.color.Append(White, size.faces, firstFace);
    data_.look.Append(0, size.faces, firstFace);
    AppendFaceList(data_, faceList, size, static_cast<std::uint32_t>(data_.vertices.size()),
                   static_cast<std::uint32_t>(data_.normals.size()), !normals.empty());
    data_.vertices.insert(data_.vertices.end(), vertices.begin(), vertices.end());
    data_.normals.insert(data_.normals.end(), normals.begin(), normals.end());
    for (const Vector vertex : vertices)
        data_.box.Include(vertex);
    Changed();
    return static_cast<std::int32_t>(firstFace);
}

void MeshBuilder::AddMeshBuilder(const std::shared_ptr<MeshBuilder>& other)
{
    faults::Point("MeshBuilder.AddMeshBuilder");
    RequireObject(Source, other, "The mesh");
    const MeshData own = other.get() == this ? data_ : MeshData{};
    const MeshData& added = other.get() == this ? own : other->data_;
    RequireRoom(data_, added.vertices.size(), added.normals.size(), added.CornerCount(), added.FaceCount());
    BeforeReshaping();
    RequireMemory(
        [&]
        {
            if (data_.vertices.empty() && data_.normals.empty() && data_.FaceCount() == 0)
                data_ = MeshData{added};
            else
                Join(added);
        });
    Changed();
}

// Everything that may fail comes first, so that a mesh is joined whole or not at all.
void MeshBuilder::Join(const MeshData& added)
{
    const bool listNormals = !data_.cornerNormal.empty() || !added.cornerNormal.empty();
    Grow(data_.vertices, added.vertices.size());
    Grow(data_.normals, added.normals.size());
    Grow(data_.cornerVertex, added.CornerCount());
    Grow(data_.faceStart, added.FaceCount());
    if (listNormals)
    {
        ListNormals(data_);
        Grow(data_.cornerNormal, added.CornerCount());
    }
    std::vector<float> uv;
    if (!added.uv.empty() || !data_.uv.empty())
    {
        uv = data_.uv;
        uv.resize(2 * data_.vertices.size());
        uv.insert(uv.end(), added.uv.begin(), added.uv.end());
    }
    PerFace<Color> colors = data_.color;
    PerFace<std::uint32_t> looks = data_.look;
    const std::vector<std::uint32_t> lookIds = AdoptLooks(added.looks);
    colors.AppendAll(added.color, added.FaceCount(), data_.FaceCount(), [](Color color) { return color; });
    looks.AppendAll(added.look, added.FaceCount(), data_.FaceCount(), [&](std::uint32_t id) { return lookIds[id]; });

    const auto firstVertex = static_cast<std::uint32_t>(data_.vertices.size());
    const auto firstNormal = static_cast<std::uint32_t>(data_.normals.size());
    const auto firstCorner = static_cast<std::uint32_t>(data_.CornerCount());
    data_.vertices.insert(data_.vertices.end(), added.vertices.begin(), added.vertices.end());
    data_.normals.insert(data_.normals.end(), added.normals.begin(), added.normals.end());
    for (const std::uint32_t vertex : added.cornerVertex)
        data_.cornerVertex.push_back(firstVertex + vertex);
    for (std::size_t corner = 0; listNormals && corner < added.CornerCount(); ++corner)
    {
        const std::uint32_t normal = added.NormalOf(corner);
        data_.cornerNormal.push_back(normal == MeshData::NoNormal ? normal : firstNormal + normal);
    }
    for (std::size_t face = 1; face < added.faceStart.size(); ++face)
        data_.faceStart.push_back(firstCorner + added.faceStart[face]);
    data_.uv = std::move(uv);
    data_.color = std::move(colors);
    data_.look = std::move(looks);
    data_.box.Include(added.box);
}

void MeshBuilder::ReserveSpace(std::int32_t vertices, std::int32_t normals, std::int32_t faces)
{
    faults::Point("MeshBuilder.ReserveSpace");
    const auto room = [](std::int32_t count, std::size_t present)
    {
        if (count < 0 || static_cast<std::size_t>(count) > MaximumCount)
            RaiseBadValue(Source, "The space to reserve is outside 0 .. " + std::to_string(MaximumCount));
        return present + std::min(static_cast<std::size_t>(count), MaximumReserve);
    };
    const std::size_t vertexRoom = room(vertices, data_.vertices.size());
    const std::size_t normalRoom = room(normals, data_.normals.size());
    const std::size_t faceRoom = room(faces, data_.faceStart.size());
    RequireMemory(
        [&]
        {
            data_.vertices.reserve(vertexRoom);
            data_.normals.reserve(normalRoom);
            data_.faceStart.reserve(faceRoom);
        });
}

void MeshBuilder::Empty()
{
    faults::Point("MeshBuilder.Empty");
    BeforeReshaping();
    data_ = MeshData{};
    ++generation_;
    Changed();
}

void MeshBuilder::Scale(float x, float y, float z)
{
    faults::Point("MeshBuilder.Scale");
    lumora::RequireFinite(Source, {x, y, z});
    if (!StaysFinite(data_.box, {x, y, z}, {}))
        RaiseBadValue(Source, "The mesh would leave the range of Singles");
    BeforeReshaping();
    MoveVertices(data_, {x, y, z}, {});
    // Normals go with the cofactors, as planes do; a mirrored mesh keeps them outward.
    const Matrix4 scale = Matrix4::FromAxes({x, 0, 0}, {0, y, 0}, {0, 0, z}, {});
    const Matrix4 forNormals = NormalMatrix(scale);
    for (Vector& normal : data_.normals)
        if (const Double3 turned = TransformDirection(normal, forNormals); Length(turned) > 0)
            normal = Normalized(turned).ToVector();
    Changed();
}

void MeshBuilder::Translate(float x, float y, float z)
{
    faults::Point("MeshBuilder.Translate");
    lumora::RequireFinite(Source, {x, y, z});
    if (!StaysFinite(data_.box, {1, 1, 1}, {x, y, z}))
        RaiseBadValue(Source, "The mesh would leave the range of Singles");
    BeforeReshaping();
    MoveVertices(data_, {1, 1, 1}, {x, y, z});
    Changed();
}

// Reading.

MeshGeometry MeshBuilder::GetGeometry() const
{
    faults::Point("MeshBuilder.GetGeometry");
    MeshGeometry geometry{data_.vertices, data_.normals, {}};
    const bool withNormals = !data_.normals.empty();
    // Filled through a pointer: the list has millions of entries, and ends before its room where faces are empty.
    geometry.faceList.resize(data_.FaceCount() + (withNormals ? 2 : 1) * data_.CornerCount() + 1);
    std::int32_t* entry = geometry.faceList.data();
    for (std::size_t face = 0; face < data_.FaceCount(); ++face)
    {
        const std::uint32_t first = data_.faceStart[face];
        const std::uint32_t end = data_.faceStart[face + 1];
        if (first == end) // a count of 0 would end the list
            continue;
        const auto own = static_cast<std::uint32_t>(geometry.normals.size());
        if (withNormals && LacksNormals(data_, face))
            geometry.normals.push_back(FaceNormal(data_, face));
        *entry++ = static_cast<std::int32_t>(end - first);
        for (std::uint32_t corner = first; corner < end; ++corner)
        {
            *entry++ = static_cast<std::int32_t>(data_.cornerVertex[corner]);
            if (!withNormals)
                continue;
            const std::uint32_t normal = data_.NormalOf(corner);
            *entry++ = static_cast<std::int32_t>(normal == MeshData::NoNormal ? own : normal);
        }
    }
    *entry++ = 0;
    geometry.faceList.resize(static_cast<std::size_t>(entry - geometry.faceList.data()));
    return geometry;
}

std::vector<Vector> MeshBuilder::GetVertices() const
{
    faults::Point("MeshBuilder.GetVertices");
    return data_.vertices;
}

std::int32_t MeshBuilder::GetFaceCount() const
{
    faults::Point("MeshBuilder.GetFaceCount");
    return static_cast<std::int32_t>(data_.FaceCount());
}

std::int32_t MeshBuilder::GetVertexCount() const
{
    faults::Point("MeshBuilder.GetVertexCount");
    return static_cast<std::int32_t>(data_.vertices.size());
}

std::int32_t MeshBuilder::GetNormalCount() const
{
    faults::Point("MeshBuilder.GetNormalCount");
    return static_cast<std::int32_t>(data_.normals.size());
}

std::size_t MeshBuilder::RequireFace(std::int32_t index) const
{
    if (index < 0 || static_cast<std::size_t>(index) >= data_.FaceCount())
        throw RuntimeError{error::SubscriptOutOfRange, Source,
                           "There is no face " + std::to_string(index) + " among " + std::to_string(data_.FaceCount())};
    return static_cast<std::size_t>(index);
}

std::shared_ptr<Face> MeshBuilder::GetFace(std::int32_t index)
{
    faults::Point("MeshBuilder.GetFace");
    return ViewOf(RequireFace(index));
}

Box MeshBuilder::GetBox() const
{
    faults::Point("MeshBuilder.GetBox");
    return data_.box;
}

} // namespace lumora
