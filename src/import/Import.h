// Model files into frames and mesh builders. Foreign bytes are read by a child process; this side stays whole.
#pragma once

#include "platform/scenegraph/frames/Frame.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace lumora
{

/// Numbers of the errors of ImportModel, beside error::FileNotFound and error::OutOfMemory.
namespace importerror
{
inline constexpr std::int32_t PathAccess = 75;     ///< the path is no plain file, or may not be read
inline constexpr std::int32_t InvalidFormat = 321; ///< the file's contents cannot be read as a model
inline constexpr std::int32_t CannotStart = 429;   ///< the program that reads models is missing or does not start
inline constexpr std::int32_t TimedOut = 1460;     ///< the time limit was reached
inline constexpr std::int32_t Cancelled = 32755;   ///< the progress function said so
inline constexpr const char* const Source = "Import";
} // namespace importerror

struct ImportOptions
{
    /// For reading the file; building the frames afterwards comes on top.
    std::chrono::milliseconds timeLimit{60000};

    /// Bytes of address space that reading may take, and the most that its result may be. At least 256 MiB are
    /// always granted: less does not hold the reader itself.
    std::size_t memoryLimit = std::size_t{4} << 30;

    /// Called about every 20 milliseconds with the part done, 0..1, or a negative number when that is unknown. False
    /// cancels. What it throws leaves ImportModel as it came.
    std::function<bool(double fraction)> progress;

    /// The program that reads models; empty means lumora-import-worker beside the running program, or among the
    /// programs of the tree that this library lies in.
    std::string workerPath;
};

struct ImportStatistics
{
    std::size_t triangles = 0; ///< in the meshes, however many frames show them
    std::size_t meshes = 0;
    std::size_t textures = 0;
    std::size_t frames = 0;
    std::chrono::milliseconds load{0};     ///< reading the file in the child process, from start to end
    std::chrono::milliseconds parse{0};    ///< the part of it that Assimp took
    std::chrono::milliseconds transfer{0}; ///< checking the result and building frames and meshes from it
};

struct ImportedModel
{
    /// A root frame, left-handed with y up; hand it to a scene with Frame::AddChild. Frames keep the names and places
    /// of the file's nodes; a mesh that several nodes show is one visual.
    std::shared_ptr<Frame> root;
    ImportStatistics statistics;
    std::vector<std::string> warnings; ///< sentences on what was left out, for example a missing texture
};

/// Reads a model file of a kind that Assimp knows: OBJ, STL, PLY, glTF, GLB, 3DS, COLLADA, X and others.
///
/// Polygons arrive as triangles, clockwise seen from the front. Diffuse colour and opacity become face colours, vertex
/// colours their average over each face, highlight and emission a Material, the diffuse picture a Texture (from a
/// file or from within the model, at most 8192 pixels a side). Meshes without normals keep none, unless they have a
/// texture: those get smooth ones.
///
/// Errors are RuntimeError with source "Import": FileNotFound, OutOfMemory and the numbers of `importerror`. Whatever
/// the file holds, the caller's process goes on, without children or open files left.
ImportedModel ImportModel(const std::string& path, const ImportOptions& options = {});

} // namespace lumora
