// lumora-import-worker: reads one model file with Assimp and hands it over in shared memory. It is started under limits
// by the import library and may end in any way; nothing is cleaned up, for the system does that faster.
#include "import/ModelStream.h"
#include "import/worker/Complaint.h"
#include "import/worker/Notices.h"
#include "import/worker/PlainObj.h"
#include "import/worker/PreparedScene.h"
#include "import/worker/StreamWriter.h"

#include <assimp/Importer.hpp>
#include <assimp/ProgressHandler.hpp>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <new>
#include <string_view>
#include <unistd.h>

namespace lumora
{

namespace
{

using Clock = std::chrono::steady_clock;

// No step of Assimp's that is not needed: joining vertices, splitting by kind of primitive, looking for bad numbers
// and making normals are done here, in one pass and in less time.
constexpr unsigned Steps = aiProcess_ValidateDataStructure | aiProcess_Triangulate | aiProcess_TransformUVCoords |
                           aiProcess_ConvertToLeftHanded;

constexpr double PartOfParsing = 0.85;
constexpr std::size_t MostNotices = modelstream::MaximumWarnings / 2;

void Report(double fraction)
{
    static int last = -1;
    const int percent = static_cast<int>(fraction * 100);
    if (percent <= last)
        return;
    last = percent;
    const auto byte = static_cast<unsigned char>(percent);
    [[maybe_unused]] const ssize_t written = write(modelstream::ProgressDescriptor, &byte, 1);
}

class Progress : public Assimp::ProgressHandler
{
public:
    bool Update(float fraction) override
    {
        if (fraction >= 0 && fraction <= 1)
            Report(fraction * PartOfParsing);
        return true;
    }
};

[[noreturn]] void End(int code, const char* complaint)
{
    std::fprintf(stderr, "%s\n", complaint);
    std::fflush(stderr);
    _exit(code);
}

const aiScene& Parse(Assimp::Importer& importer, const char* path)
{
    if (const aiScene* plain = ReadPlainObj(path, [](double part) { Report(PartOfParsing * part); }))
        return *plain;
    importer.SetProgressHandler(new Progress); // the importer deletes it
    importer.SetPropertyBool(AI_CONFIG_IMPORT_NO_SKELETON_MESHES, true);
    const aiScene* scene = importer.ReadFile(path, Steps);
    // Validation refuses a whole file for one empty mesh in it.
    if (scene == nullptr && std::string_view(importer.GetErrorString()).find("contains no") != std::string_view::npos)
        scene = importer.ReadFile(path, Steps & ~static_cast<unsigned>(aiProcess_ValidateDataStructure));
    if (scene == nullptr)
        throw Unreadable(importer.GetErrorString());
    if (scene->mRootNode == nullptr || scene->mNumMeshes == 0)
        throw Unreadable("it has no surface to show");
    return *scene;
}

void Run(const char* path)
{
    const Clock::time_point start = Clock::now();
    std::vector<std::string> notices;
    CollectNotices(notices, MostNotices);
    Assimp::Importer importer;
    const aiScene& scene = Parse(importer, path);
    const auto parse = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
    PreparedScene prepared = Prepare(scene, std::filesystem::path(path).parent_path(),
                                     [](double part) { Report(PartOfParsing + part * (0.95 - PartOfParsing)); });
    prepared.warnings.insert(prepared.warnings.begin(), notices.begin(), notices.end());
    prepared.parseMilliseconds = static_cast<std::uint64_t>(parse.count());
    WriteStream(modelstream::ResultDescriptor, prepared);
    _exit(modelstream::ExitFinished);
}

} // namespace

} // namespace lumora

int main(int count, char** arguments)
{
    using namespace lumora;
    if (count != 2 || fcntl(modelstream::ResultDescriptor, F_GETFD) < 0)
        End(modelstream::ExitNotStarted, "this program is started by the import library, with the path of a model");
    std::signal(SIGXFSZ, SIG_IGN); // growing the result beyond its limit is refused then, and can be told
    std::signal(SIGPIPE, SIG_IGN);
    std::set_new_handler([] { _exit(modelstream::ExitOutOfMemory); });
    try
    {
        Run(arguments[1]);
    }
    catch (const NoRoom& complaint)
    {
        End(modelstream::ExitOutOfMemory, complaint.what());
    }
    catch (const std::exception& complaint) // also what the parts of the standard library say about absurd sizes
    {
        End(modelstream::ExitUnreadable, complaint.what());
    }
}
