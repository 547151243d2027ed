// Makes one of equal vertices. Assimp's own step takes a multiple of the time.
#pragma once

#include <assimp/mesh.h>
#include <cstdint>
#include <vector>

namespace lumora
{

/// Which of Assimp's vertices are equal: `first` lists one of each kind, `of` says for each vertex which kind it is.
struct Joined
{
    std::vector<std::uint32_t> first;
    std::vector<std::uint32_t> of;
};

/// What one mesh becomes. Vertices and normals are joined apart from each other, as a mesh builder keeps them.
struct PreparedMesh
{
    const aiMesh* mesh = nullptr;
    int uvChannel = -1;                 ///< -1: none
    Joined vertices;                    ///< by position and texture coordinates
    Joined normals;                     ///< empty when there are none
    std::vector<aiVector3D> ownNormals; ///< in place of the file's, one per corner, when smooth ones had to be made
    std::uint32_t faceCount = 0;
    std::uint32_t leftOutLines = 0;  ///< points and lines
    std::uint32_t leftOutBroken = 0; ///< faces with a number that is not finite, or an index outside

    bool HasNormals() const { return !normals.of.empty(); }
};

/// True for a triangle whose corners are all there and finite.
bool IsGoodFace(const aiMesh& mesh, const aiFace& face);

/// Joins and counts. `uvChannel` is the one the mesh's texture wants, -1 for none; it is ignored when the mesh lacks
/// it.
PreparedMesh Prepare(const aiMesh& mesh, int uvChannel);

/// Joins `count` vectors by the bits of their floats, together with those of `second` when that is given.
Joined Join(const aiVector3D* vectors, const aiVector3D* second, std::uint32_t count);

} // namespace lumora
