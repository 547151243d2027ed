// What is kept of a scene and what is left out, and the words for the latter.
#include "import/worker/PreparedScene.h"

#include "import/worker/Complaint.h"

#include <set>

namespace lumora
{

using namespace modelstream;

namespace
{

constexpr std::size_t MostWarnings = MaximumWarnings / 2; // the other half is for what Assimp says

/// Index of each of Assimp's meshes in the prepared list, NoIndex for one without a face to show.
std::vector<std::uint32_t> PrepareMeshes(const aiScene& scene, PreparedScene& result,
                                         const std::function<void(double)>& progress)
{
    std::vector<std::uint32_t> indexOf(scene.mNumMeshes, NoIndex);
    std::uint64_t lines = 0;
    std::uint64_t broken = 0;
    for (unsigned i = 0; i < scene.mNumMeshes; ++i)
    {
        const aiMesh& mesh = *scene.mMeshes[i];
        const bool hasLook = mesh.mMaterialIndex < result.looks.size();
        PreparedMesh prepared = Prepare(mesh, hasLook ? result.looks[mesh.mMaterialIndex].uvChannel : -1);
        lines += prepared.leftOutLines;
        broken += prepared.leftOutBroken;
        if (prepared.faceCount > 0)
        {
            indexOf[i] = static_cast<std::uint32_t>(result.meshes.size());
            result.meshes.push_back(std::move(prepared));
        }
        progress((i + 1.0) / scene.mNumMeshes);
    }
    if (lines > 0)
        result.warnings.push_back(std::to_string(lines) + " points and lines are left out: only surfaces are shown.");
    if (broken > 0)
        result.warnings.push_back(std::to_string(broken) + " faces are left out: their numbers are not finite.");
    return indexOf;
}

std::vector<Look> MakeLooks(const aiScene& scene, Pictures& pictures)
{
    std::set<unsigned> used;
    for (unsigned i = 0; i < scene.mNumMeshes; ++i)
        used.insert(scene.mMeshes[i]->mMaterialIndex);
    std::vector<Look> looks(scene.mNumMaterials);
    for (const unsigned index : used)
        if (index < scene.mNumMaterials)
            looks[index] = MakeLook(*scene.mMaterials[index], pictures);
    return looks;
}

struct Pending
{
    const aiNode* node;
    std::uint32_t parent;
    std::uint32_t depth;
};

// Parents before children, siblings in order, with a stack of its own: foreign trees can be deep.
void PrepareNodes(const aiNode& root, const std::vector<std::uint32_t>& meshIndexOf, PreparedScene& result)
{
    std::vector<Pending> stack{{&root, NoIndex, 0}};
    while (!stack.empty())
    {
        const Pending next = stack.back();
        stack.pop_back();
        const auto index = static_cast<std::uint32_t>(result.nodes.size());
        if (index >= MaximumNodes || next.depth > MaximumDepth)
            throw Unreadable("it has too many nodes, or they are nested too deep");
        PreparedNode prepared{next.node, next.parent, 0};
        for (unsigned i = 0; i < next.node->mNumMeshes; ++i)
        {
            const unsigned mesh = next.node->mMeshes[i];
            if (mesh >= meshIndexOf.size() || meshIndexOf[mesh] == NoIndex)
                continue;
            result.nodeMeshes.push_back(meshIndexOf[mesh]);
            ++prepared.meshCount;
        }
        result.nodes.push_back(prepared);
        for (unsigned i = next.node->mNumChildren; i-- > 0;)
            stack.push_back({next.node->mChildren[i], index, next.depth + 1});
    }
}

} // namespace

PreparedScene Prepare(const aiScene& scene, const std::filesystem::path& folder,
                      const std::function<void(double)>& progress)
{
    PreparedScene result;
    Pictures pictures(scene, folder, result.warnings);
    result.looks = MakeLooks(scene, pictures);
    result.pictures = pictures.TakeAll();
    const std::vector<std::uint32_t> meshIndexOf = PrepareMeshes(scene, result, progress);
    PrepareNodes(*scene.mRootNode, meshIndexOf, result);
    if (result.nodeMeshes.empty())
        throw Unreadable("it has no surface to show");
    if (result.warnings.size() > MostWarnings)
    {
        const std::size_t more = result.warnings.size() - (MostWarnings - 1);
        result.warnings.resize(MostWarnings - 1);
        result.warnings.push_back("There are " + std::to_string(more) + " more things to say of this kind.");
    }
    return result;
}

} // namespace lumora
