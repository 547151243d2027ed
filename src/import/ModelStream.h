// The form in which the worker hands a model over: a header, tables, and arrays that mesh builders take as they lie.
//
// Everything lies in one shared memory file. Offsets count from its start; arrays start at multiples of 64 bytes. Both
// sides are built together and run on one machine, so numbers are in native order.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace lumora::modelstream
{

inline constexpr std::array<char, 8> Magic{'L', 'u', 'm', 'M', 'o', 'd', 'e', 'l'};
inline constexpr std::uint32_t Version = 1;
inline constexpr std::size_t Alignment = 64;
inline constexpr std::uint32_t NoIndex = 0xFFFFFFFF;

// What either side accepts at most.
inline constexpr std::uint32_t MaximumNodes = 250000;
inline constexpr std::uint32_t MaximumDepth = 512; ///< of the node tree
inline constexpr std::uint32_t MaximumPictureSide = 8192;
inline constexpr std::uint64_t MaximumPixels = 1U << 27; ///< of all pictures together
inline constexpr std::uint32_t MaximumNameLength = 1024;
inline constexpr std::uint32_t MaximumWarnings = 32;

/// File descriptors that the worker inherits.
inline constexpr int ResultDescriptor = 3;   ///< the shared memory file, empty at first
inline constexpr int ProgressDescriptor = 4; ///< a pipe: each byte is a percentage, 0..100

/// Exit codes of the worker; the last line of its standard error says why.
inline constexpr int ExitFinished = 0;
inline constexpr int ExitUnreadable = 10;
inline constexpr int ExitOutOfMemory = 11;
inline constexpr int ExitNotStarted = 127;

struct ArrayReference
{
    std::uint64_t offset = 0;
    std::uint64_t count = 0; ///< of elements
};

/// UTF-8 without a terminator, within the text array.
struct TextReference
{
    std::uint32_t offset = 0;
    std::uint32_t length = 0;
};

struct Header
{
    std::array<char, 8> magic = Magic;
    std::uint32_t version = Version;
    std::uint32_t headerBytes = 0;
    std::uint64_t totalBytes = 0;
    std::uint64_t parseMilliseconds = 0;
    ArrayReference nodes;      ///< Node; a parent comes before its children, the root is the first
    ArrayReference nodeMeshes; ///< std::uint32_t, mesh indices: those of the first node, of the second, ...
    ArrayReference meshes;     ///< Mesh
    ArrayReference materials;  ///< SurfaceLook
    ArrayReference textures;   ///< Picture
    ArrayReference warnings;   ///< TextReference
    ArrayReference text;       ///< char
};

struct Node
{
    std::uint32_t parent = NoIndex;
    std::uint32_t meshCount = 0;
    TextReference name;
    std::array<double, 12> transform{}; ///< to the parent: rows x axis, y axis, z axis, origin
};

struct Mesh
{
    TextReference name;
    std::uint32_t material = NoIndex;
    std::uint32_t faceCount = 0;
    ArrayReference positions;  ///< three floats each
    ArrayReference normals;    ///< three floats each, or none
    ArrayReference uv;         ///< float: u, v of each position, or none; v 0 is the top of the picture
    ArrayReference faceList;   ///< std::int32_t: 3, then vertex (and normal) of each corner; a 0 at the end
    ArrayReference faceColors; ///< std::uint32_t 0xAARRGGBB, one per face, or none
};

struct SurfaceLook
{
    TextReference name;
    std::uint32_t color = 0xFFFFFFFF; ///< 0xAARRGGBB
    std::uint32_t texture = NoIndex;
    float power = 0;
    std::array<float, 3> specular{};
    std::array<float, 3> emissive{};
};

struct Picture
{
    TextReference name;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    ArrayReference pixels; ///< std::uint32_t 0xAARRGGBB, rows from top to bottom
};

static_assert(std::is_trivially_copyable_v<Header> && std::is_trivially_copyable_v<Mesh>);
static_assert(sizeof(Header) == 144 && sizeof(Node) == 112 && sizeof(Mesh) == 96 && sizeof(Picture) == 32);

} // namespace lumora::modelstream
