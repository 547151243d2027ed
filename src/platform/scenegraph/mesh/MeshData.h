// What a mesh builder holds: flat arrays that are cheap to copy, to append and to compile.
#pragma once

#include "platform/scenegraph/frames/Color.h"
#include "platform/scenegraph/frames/Material.h"
#include "platform/scenegraph/frames/Texture.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace lumora
{

/// One value for each face. As long as all faces agree, it is kept once.
template<typename T>
class PerFace
{
public:
    explicit PerFace(T value) : common_(value) {}

    bool IsUniform() const { return values_.empty(); }
    T Common() const { return common_; }
    T operator[](std::size_t face) const { return values_.empty() ? common_ : values_[face]; }

    void SetAll(T value)
    {
        common_ = value;
        values_.clear();
    }

    void Set(std::size_t face, T value, std::size_t count)
    {
        if (values_.empty() && value == common_)
            return;
        Spread(count);
        values_[face] = value;
    }

    /// Allocates what Append with the same arguments needs, which then cannot fail.
    void Reserve(T value, std::size_t more, std::size_t count)
    {
        if (count == 0 || (values_.empty() && value == common_))
            return;
        Spread(count);
        if (count + more > values_.capacity())
            values_.reserve(std::max(count + more, 2 * values_.capacity()));
    }

    /// For `more` faces after the first `count`.
    void Append(T value, std::size_t more, std::size_t count)
    {
        if (count == 0)
            SetAll(value);
        if (values_.empty() && value == common_)
            return;
        Spread(count);
        values_.resize(count + more, value);
    }

    /// The first `more` values of `other`, each through `translate`, after the first `count` of this.
    template<typename Translate>
    void AppendAll(const PerFace& other, std::size_t more, std::size_t count, Translate&& translate)
    {
        if (other.IsUniform())
            return Append(translate(other.common_), more, count);
        Spread(count);
        values_.reserve(count + more);
        for (std::size_t face = 0; face < more; ++face)
            values_.push_back(translate(other.values_[face]));
    }

    /// One value for every face there is.
    void Assign(std::vector<T> values) { values_ = std::move(values); }

private:
    void Spread(std::size_t count)
    {
        if (values_.empty())
            values_.resize(count, common_);
    }

    T common_;
    std::vector<T> values_; // empty while all agree
};

/// What a face is made of and what is on it; both may be nothing.
struct MeshLook
{
    std::shared_ptr<Material> material;
    std::shared_ptr<Texture> texture;

    friend bool operator==(const MeshLook&, const MeshLook&) = default;
};

struct MeshData
{
    /// A corner without a normal of its own: it gets a generated one.
    static constexpr std::uint32_t NoNormal = 0xFFFFFFFF;

    std::vector<Vector> vertices;
    std::vector<Vector> normals;
    std::vector<float> uv; ///< u and v of each vertex; empty, or shorter, where nobody set them

    // Corners of all faces, one after another.
    std::vector<std::uint32_t> cornerVertex;
    std::vector<std::uint32_t> cornerNormal;    ///< empty while no corner has a normal
    std::vector<std::uint32_t> faceStart = {0}; ///< first corner of each face, and the end
    PerFace<Color> color{0xFFFFFFFF};
    PerFace<std::uint32_t> look{0};
    std::vector<MeshLook> looks = std::vector<MeshLook>(1); ///< what `look` counts in; the first is nothing at all
    Box box;                                                ///< around all vertices

    std::size_t FaceCount() const { return faceStart.size() - 1; }
    std::size_t CornerCount() const { return cornerVertex.size(); }
    std::uint32_t NormalOf(std::size_t corner) const { return cornerNormal.empty() ? NoNormal : cornerNormal[corner]; }
};

struct CompiledMesh
{
    std::shared_ptr<DrawMesh> mesh;        ///< its groups' materials are still to be filled in
    std::vector<std::uint32_t> groupLooks; ///< which of MeshData::looks each group has
};

/// Builds the form that is drawn and picked.
CompiledMesh CompileMesh(const MeshData& data);

/// A number that no compiled mesh had before.
std::uint64_t NewMeshIdentity();

} // namespace lumora
