// Normals for meshes whose vertices are cut apart along texture seams.
#pragma once

#include <assimp/mesh.h>
#include <vector>

namespace lumora
{

/// One unit normal per corner (three for each face of the mesh, in order): the average, weighted by their angles, of
/// the faces at the corner's position that lie within 0.5 radians of the corner's own face. Left-handed: faces are
/// clockwise seen from where their normals point. Faces that are no triangles get zeros.
std::vector<aiVector3D> SmoothNormals(const aiMesh& mesh);

} // namespace lumora
