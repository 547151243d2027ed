// OBJ files that hold positions and triangles and nothing else: what scanners write, often millions of lines. Read here
// in a fraction of the time and memory that Assimp needs for them.
#pragma once

#include <assimp/scene.h>
#include <functional>

namespace lumora
{

/// The scene that Assimp would make of the file, triangles and left-handed, or nothing where the file is of another
/// kind, or anything in it (a name, a normal, a polygon, a number that is none) asks for the whole reader. Positions
/// may differ from Assimp's in the last bit: here they are the nearest to what is written.
///
/// The scene must not be destroyed: its faces share one array. `progress` hears the part done, 0..1.
const aiScene* ReadPlainObj(const char* path, const std::function<void(double)>& progress);

} // namespace lumora
