// Welding: vertices in one place become one.
#pragma once

#include "platform/scenegraph/RetainedMode.h"

namespace lumora
{

struct OptimizeOptions
{
    bool copyFaceColors = false; ///< otherwise all faces become white
    bool dropRepeats = false;    ///< leave out a corner that has its predecessor's, or its face's first, vertex
};

/// Rebuilds the mesh from its polygons, in their order, with one vertex for each position: positions are the same that
/// agree in all coordinates written with four decimals. Normals are left out (so the mesh is drawn with generated
/// ones), and with them materials, textures and texture coordinates; unused vertices and faces without corners go.
/// Faces that are left with fewer than three corners stay, and are drawn as nothing. The mesh object itself, its
/// application data and quality remain.
///
/// Errors, with source "modOptimize", are those of the mesh operations. Nothing has changed, unless it is the last step
/// that fails: the copy back into the emptied mesh.
void OptimizeMesh(RetainedMode& root, MeshBuilder& mesh, const OptimizeOptions& options);

} // namespace lumora
