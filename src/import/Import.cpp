// The way of a model file: checks on the path, the worker, checks on its result, frames; and a sentence for each end.
#include "import/Import.h"

#include "base/RuntimeError.h"
#include "import/ModelReader.h"
#include "import/ModelScene.h"
#include "import/WorkerProcess.h"

#include <algorithm>
#include <dlfcn.h>
#include <filesystem>
#include <new>
#include <unistd.h>

namespace lumora
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr std::size_t LeastMemory = std::size_t{256} << 20;
constexpr double PartOfReading = 0.9; // of the whole progress; building takes the rest

std::chrono::milliseconds Since(Clock::time_point start)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
}

[[noreturn]] void Fail(std::int32_t number, const std::string& path, const std::string& what)
{
    throw RuntimeError(number, importerror::Source, "The model \"" + PrintableText(path) + "\" " + what);
}

void CheckPath(const std::string& path)
{
    namespace fs = std::filesystem;
    std::error_code failure;
    const fs::file_status status = fs::status(path, failure);
    if (path.find('\0') != std::string::npos || status.type() == fs::file_type::not_found)
        Fail(error::FileNotFound, path, "is not there: check the name and the folder.");
    if (status.type() != fs::file_type::regular)
        Fail(importerror::PathAccess, path,
             "is not a file, or lies in a folder that is closed to you: choose a model file.");
    if (access(path.c_str(), R_OK) != 0)
        Fail(importerror::PathAccess, path, "may not be read: change its permissions.");
    if (fs::file_size(path, failure) == 0)
        Fail(importerror::InvalidFormat, path, "is an empty file: choose another one.");
}

// The folder of the library that this function is part of; empty when the system does not know it.
std::filesystem::path LibraryFolder()
{
    Dl_info found{};
    const void* const inside = reinterpret_cast<const void*>(&LibraryFolder);
    std::error_code failure;
    if (dladdr(inside, &found) == 0 || found.dli_fname == nullptr)
        return {};
    return std::filesystem::canonical(found.dli_fname, failure).parent_path();
}

// Only absolute paths: a program in the current folder is never started.
std::vector<std::filesystem::path> PlacesOfWorker(const ImportOptions& options)
{
    if (!options.workerPath.empty())
        return {options.workerPath};
    std::error_code failure;
    const std::filesystem::path running = std::filesystem::read_symlink("/proc/self/exe", failure);
    const std::filesystem::path library = LibraryFolder();
    std::vector<std::filesystem::path> places;
    if (!running.empty())
        places.push_back(running.parent_path() / "lumora-import-worker");
    if (!library.empty())
        places.push_back((library / LUMORA_PROGRAMS_FROM_LIBRARY / "lumora-import-worker").lexically_normal());
    return places;
}

std::string FindWorker(const ImportOptions& options, const std::string& model)
{
    std::string looked;
    for (const std::filesystem::path& place : PlacesOfWorker(options))
    {
        if (access(place.c_str(), X_OK) == 0)
            return place.string();
        looked += (looked.empty() ? "\"" : " or \"") + place.string() + "\"";
    }
    Fail(importerror::CannotStart, model,
         "cannot be read because the program that reads it is missing: install " + looked + ".");
}

[[noreturn]] void FailAs(const WorkerResult& result, const std::string& path, const ImportOptions& options)
{
    const std::string message = PrintableText(result.message);
    switch (result.end)
    {
    case WorkerEnd::OutOfMemory:
        Fail(error::OutOfMemory, path,
             "needs more memory than the limit of " + std::to_string(std::max(options.memoryLimit, LeastMemory) >> 20) +
                 " MiB: raise the limit or choose a smaller model.");
    case WorkerEnd::TimedOut:
        Fail(importerror::TimedOut, path,
             "was not read within " + std::to_string(options.timeLimit.count()) +
                 " milliseconds: raise the limit or choose a smaller model.");
    case WorkerEnd::Cancelled:
        Fail(importerror::Cancelled, path, "was not read because that was cancelled.");
    case WorkerEnd::NotStarted:
        Fail(importerror::CannotStart, path,
             "cannot be read because its reader does not start (" + message + "): install this program anew.");
    default:
        Fail(importerror::InvalidFormat, path,
             "cannot be read (" + message + "): check that it is complete and of the kind that its name says.");
    }
}

ImportedModel BuildFrom(const WorkerResult& result, const std::string& path, const ImportOptions& options)
{
    std::function<bool(double)> tick;
    if (options.progress)
        tick = [&](double part) { return options.progress(PartOfReading + (1 - PartOfReading) * part); };
    const ModelReader reader(result.stream.Bytes());
    ImportedModel model = BuildModel(reader, tick);
    if (!model.root)
        FailAs({WorkerEnd::Cancelled, "", {}}, path, options);
    model.root->SetName(PrintableText(std::filesystem::path(path).filename().string()));
    model.statistics.parse = std::chrono::milliseconds(std::min<std::uint64_t>(
        reader.Header().parseMilliseconds, static_cast<std::uint64_t>(options.timeLimit.count())));
    return model;
}

} // namespace

ImportedModel ImportModel(const std::string& path, const ImportOptions& options)
{
    CheckPath(path);
    WorkerJob job{FindWorker(options, path),
                  std::filesystem::absolute(path).string(),
                  options.timeLimit,
                  std::max(options.memoryLimit, LeastMemory),
                  {}};
    if (options.progress)
        job.tick = [&](double part) { return options.progress(part < 0 ? part : part * PartOfReading); };
    const Clock::time_point start = Clock::now();
    const WorkerResult result = RunWorker(job);
    if (result.end != WorkerEnd::Finished)
        FailAs(result, path, options);
    const std::chrono::milliseconds load = Since(start);
    try
    {
        ImportedModel model = BuildFrom(result, path, options);
        model.statistics.load = load;
        model.statistics.transfer = Since(start) - load;
        return model;
    }
    catch (const DamagedStream& damage)
    {
        FailAs(
            {WorkerEnd::Crashed, std::string("its reader broke down and left a damaged result: ") + damage.what(), {}},
            path, options);
    }
    catch (const std::bad_alloc&)
    {
        FailAs({WorkerEnd::OutOfMemory, "", {}}, path, options);
    }
    catch (const RuntimeError& failure)
    {
        if (failure.Number() == error::RMBadAlloc)
            FailAs({WorkerEnd::OutOfMemory, "", {}}, path, options);
        throw;
    }
}

} // namespace lumora
