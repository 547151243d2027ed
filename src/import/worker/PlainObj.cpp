// One pass over the mapped file. Vertices are numbered as triangles first use them, as Assimp's importer does.
#include "import/worker/PlainObj.h"

#include "import/worker/FileBytes.h"

#include <charconv>
#include <cstdint>
#include <filesystem>
#include <string_view>
#include <vector>

namespace lumora
{

namespace
{

constexpr std::uint32_t Unused = 0xFFFFFFFF;
constexpr float PlainGray = 0.6F; // what Assimp gives a model without materials

class PlainObj
{
public:
    explicit PlainObj(std::string_view text) : at_(text.data()), begin_(text.data()), end_(at_ + text.size()) {}

    /// False when the file is not plain.
    bool Read(const std::function<void(double)>& progress)
    {
        constexpr std::uint32_t LinesBetweenReports = 1 << 16;
        for (std::uint32_t line = 1; at_ != end_; ++line)
        {
            if (!ReadLine())
                return false;
            if (line % LinesBetweenReports == 0)
                progress(static_cast<double>(at_ - begin_) / static_cast<double>(end_ - begin_));
        }
        return !corners_.empty();
    }

    aiMesh* TakeMesh()
    {
        auto* mesh = new aiMesh;
        mesh->mPrimitiveTypes = aiPrimitiveType_TRIANGLE;
        mesh->mName.Set("defaultobject");
        mesh->mNumVertices = static_cast<unsigned>(used_.size());
        mesh->mVertices = new aiVector3D[used_.size()];
        for (std::size_t i = 0; i < used_.size(); ++i)
            mesh->mVertices[i] = positions_[used_[i]];
        mesh->mNumFaces = static_cast<unsigned>(corners_.size() / 3);
        mesh->mFaces = new aiFace[mesh->mNumFaces];
        unsigned* const corners = (new std::vector<unsigned>(std::move(corners_)))->data();
        for (std::size_t face = 0; face < mesh->mNumFaces; ++face)
        {
            mesh->mFaces[face].mNumIndices = 3;
            mesh->mFaces[face].mIndices = corners + 3 * face;
        }
        return mesh;
    }

private:
    bool ReadLine()
    {
        SkipBlanks();
        if (at_ == end_ || *at_ == '\n')
            return EndLine();
        const char kind = *at_++;
        if (kind == '#')
        {
            while (at_ != end_ && *at_ != '\n')
                ++at_;
            return EndLine();
        }
        return (kind == 'v' && ReadPosition() && EndLine()) || (kind == 'f' && ReadTriangle() && EndLine());
    }

    bool ReadPosition()
    {
        float x = 0;
        float y = 0;
        float z = 0;
        if (!ReadNumber(x) || !ReadNumber(y) || !ReadNumber(z))
            return false;
        positions_.emplace_back(x, y, -z); // left-handed
        place_.push_back(Unused);
        return true;
    }

    bool ReadTriangle()
    {
        std::uint32_t number[3];
        for (std::uint32_t& n : number)
            if (!ReadNumber(n) || n == 0 || n > positions_.size())
                return false;
        for (std::uint32_t& n : number)
        {
            std::uint32_t& place = place_[n - 1];
            if (place == Unused)
            {
                place = static_cast<std::uint32_t>(used_.size());
                used_.push_back(n - 1);
            }
            n = place;
        }
        corners_.insert(corners_.end(), {number[2], number[1], number[0]}); // mirrored, so the other way round
        return true;
    }

    template<typename Number>
    bool ReadNumber(Number& number)
    {
        if (!IsBlank())
            return false;
        SkipBlanks();
        const auto [stop, problem] = std::from_chars(at_, end_, number);
        at_ = stop;
        return problem == std::errc{};
    }

    bool EndLine()
    {
        SkipBlanks();
        if (at_ == end_)
            return true;
        return *at_++ == '\n';
    }

    bool IsBlank() const { return at_ != end_ && (*at_ == ' ' || *at_ == '\t' || *at_ == '\r'); }
    void SkipBlanks()
    {
        while (IsBlank())
            ++at_;
    }

    const char* at_;
    const char* begin_;
    const char* end_;
    std::vector<aiVector3D> positions_;
    std::vector<std::uint32_t> place_; // of each position among the used ones
    std::vector<std::uint32_t> used_;
    std::vector<unsigned> corners_;
};

aiScene* SceneOf(aiMesh* mesh, const std::string& name)
{
    auto* scene = new aiScene;
    scene->mNumMeshes = 1;
    scene->mMeshes = new aiMesh* [1] { mesh };
    auto* material = new aiMaterial;
    const aiColor3D gray{PlainGray, PlainGray, PlainGray};
    material->AddProperty(&gray, 1, AI_MATKEY_COLOR_DIFFUSE);
    scene->mNumMaterials = 1;
    scene->mMaterials = new aiMaterial* [1] { material };
    auto* node = new aiNode("defaultobject");
    node->mNumMeshes = 1;
    node->mMeshes = new unsigned[1]{0};
    scene->mRootNode = new aiNode(name);
    scene->mRootNode->addChildren(1, &node);
    return scene;
}

} // namespace

const aiScene* ReadPlainObj(const char* path, const std::function<void(double)>& progress)
{
    const std::filesystem::path file{path};
    if (file.extension() != ".obj" && file.extension() != ".OBJ")
        return nullptr;
    const FileBytes bytes(path);
    PlainObj reader(bytes.Text());
    return reader.Read(progress) ? SceneOf(reader.TakeMesh(), file.filename().string()) : nullptr;
}

} // namespace lumora
