// What is drawn: meshes like those of a scanner, many small boxes, and boxes within boxes.
#pragma once

#include "platform/drivers/DrawMesh.h"

#include <cstdint>
#include <memory>
#include <string>

namespace lumora::bench
{

using Mesh = std::shared_ptr<const DrawMesh>;

/// The texture that loads with texture coordinates carry.
inline constexpr int TextureSide = 512;

/// A closed, smooth, bumpy ring of about `triangles` small triangles, within a radius of 1.5 around the origin.
Mesh Ring(std::uint32_t triangles);

/// `perSide` cubed boxes apart from each other, within a radius of 1.5.
Mesh BoxGrid(int perSide);

/// Boxes around each other, the smallest first: every pixel is drawn up to `count` times.
Mesh NestedBoxes(int count);

/// The same mesh under another identity with half transparent colors, with a texture on it, or, as it takes part in
/// Wireframe, with its edges.
Mesh Translucent(const Mesh& mesh);
Mesh Textured(const Mesh& mesh);
Mesh WithEdges(const Mesh& mesh);

/// The triangles of a Wavefront file, moved and scaled to a radius of 1.5, with smooth normals.
Mesh ReadObj(const std::string& path);

} // namespace lumora::bench
