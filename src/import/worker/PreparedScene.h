// A scene as it will be handed over, still referring to Assimp's arrays.
#pragma once

#include "import/worker/Materials.h"
#include "import/worker/MeshJoin.h"
#include "import/worker/Pictures.h"

#include <assimp/scene.h>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace lumora
{

struct PreparedNode
{
    const aiNode* node = nullptr;
    std::uint32_t parent = modelstream::NoIndex;
    std::uint32_t meshCount = 0;
};

struct PreparedScene
{
    std::vector<PreparedNode> nodes;
    std::vector<std::uint32_t> nodeMeshes; ///< indices into `meshes`
    std::vector<PreparedMesh> meshes;      ///< those with a face to show
    std::vector<Look> looks;               ///< by Assimp's material index
    std::vector<DecodedPicture> pictures;
    std::vector<std::string> warnings;
    std::uint64_t parseMilliseconds = 0;
};

/// Throws Unreadable when there is nothing to show, or nodes are too many or nested too deep. `folder` is where
/// textures lie; `progress` hears the part done, 0..1.
PreparedScene Prepare(const aiScene& scene, const std::filesystem::path& folder,
                      const std::function<void(double)>& progress);

} // namespace lumora
