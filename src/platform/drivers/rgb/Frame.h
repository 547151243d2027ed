// What the stages of a frame hand on to each other.
//
// Vertices -> Setup -> Tiles. The vertex stage places and lights each vertex of each item once. Setup walks the
// primitives in work units of a few thousand, throws away what cannot cover a pixel centre, and bins the rest by tile.
// The tile stage walks a tile's bins unit after unit, which is the order of submission whoever filled them; what is
// sorted it puts in order tile by tile, and draws last.
//
// Screen positions are whole numbers of 1/256 pixel. Colors are 0..1 except where a comment says otherwise.
#pragma once

#include "platform/drivers/Driver.h"
#include "platform/drivers/rgb/Buffer.h"
#include "platform/drivers/rgb/Textures.h"

#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <vector>

namespace lumora::rgb
{

inline constexpr int TileShift = 6;
inline constexpr int TileSize = 1 << TileShift;
inline constexpr int TilePixels = TileSize * TileSize;
inline constexpr int BlockShift = 3; ///< 8 by 8 pixels: what the large path accepts, rejects or hides at once
inline constexpr int BlockSize = 1 << BlockShift;
inline constexpr int BlocksPerRow = TileSize / BlockSize;
inline constexpr int BlocksPerTile = BlocksPerRow * BlocksPerRow;

inline constexpr int SubPixelShift = 8;
inline constexpr int SubPixels = 1 << SubPixelShift;

/// Unclipped positions lie within this many pixels of pixel (0, 0), so that an edge function that changes its sign
/// within a tile fits 32 bits there: 2 * 63 steps * (2 * 16384 * 256) per step < 2^30.1. No target is larger.
inline constexpr int GuardBand = 16384;

/// The x of a vertex that must be clipped, or is not finite.
inline constexpr std::int32_t NotPlaced = std::numeric_limits<std::int32_t>::min();

inline constexpr float FarthestDepth = 1.0F;

struct alignas(16) ScreenPosition
{
    std::int32_t x, y; ///< 1/256 pixel
    float depth;
    float inverseW;
};

struct alignas(16) ColorBlock
{
    float red, green, blue, alpha;
};

struct alignas(16) CoordinateBlock
{
    float u, v;
    float eyeDepth; ///< camera-space z
    float unused;
};

/// What a primitive interpolates, all under one index. Coordinates and highlights are filled only where needed.
struct VertexBlocks
{
    Buffer<ScreenPosition> positions;
    Buffer<CoordinateBlock> coordinates;
    Buffer<ColorBlock> colors;
    Buffer<ColorBlock> highlights;

    std::size_t HeldBytes() const
    {
        return positions.CapacityInBytes() + coordinates.CapacityInBytes() + colors.CapacityInBytes() +
               highlights.CapacityInBytes();
    }
};

/// StippleRank for vectors that start at any pixel.
inline constexpr float StippleRows[4][12] = {{0, 8, 2, 10, 0, 8, 2, 10, 0, 8, 2, 10},
                                             {12, 4, 14, 6, 12, 4, 14, 6, 12, 4, 14, 6},
                                             {3, 11, 1, 9, 3, 11, 1, 9, 3, 11, 1, 9},
                                             {15, 7, 13, 5, 15, 7, 13, 5, 15, 7, 13, 5}};

/// A light in single precision, world space.
struct LightValues
{
    LightKind kind;
    float color[3];
    float position[3];
    float toLight[3]; ///< directional and spot: against the way it travels
    float range;
    float constantAttenuation, linearAttenuation, quadraticAttenuation;
    float halfUmbra, halfPenumbra;
};

/// A pass as the driver keeps it.
struct Pass
{
    PassState state; ///< its lights are empty
    Matrix4 worldToClip;
    std::vector<LightValues> lights;
    PixelRect area;     ///< scissor, target and viewport: pixels that may be drawn
    PixelRect viewport; ///< 1/256 pixel; both ends belong to it
};

/// What a pixel's color is made of.
enum class Surface : std::uint8_t
{
    Plain, ///< interpolated colors
    Nearest,
    Linear,
    MipNearest,
    MipLinear,
    LinearMipNearest,
    LinearMipLinear,
};
inline constexpr int SurfaceCount = 7;

enum class Blending : std::uint8_t
{
    Opaque,
    Stippled,
    Blended, ///< writes depth
    Veiled,  ///< blended without writing depth: sorted translucency
};
inline constexpr int BlendingCount = 4;

enum class Primitive : std::uint8_t
{
    Clear,
    Triangles,
    Lines,
    Points,
};

/// A primitive in the bins. Vertices with the top bit belong to the work unit, the others to the batch.
struct Record
{
    static constexpr std::uint32_t Local = 0x80000000;
    std::uint32_t vertex[3];
    std::uint32_t face; ///< flat: index of its color
    std::uint32_t state;

    bool IsLocal() const { return (vertex[0] & Local) != 0; }
};

/// A work unit's primitives and where they go.
struct Bins
{
    VertexBlocks local; ///< made by clipping
    Buffer<Record> records;
    Buffer<std::uint32_t> keys;    ///< of sorted units: for each record, smaller is farther
    Buffer<std::uint32_t> pairs;   ///< tile << 16 | record, in order of submission
    Buffer<std::uint32_t> offsets; ///< of each tile's first reference, one more than there are tiles
    Buffer<std::uint16_t> references;
    std::uint64_t coveredPixels = 0; ///< an upper bound: how much work this is
    std::uint32_t mostInTile = 0;    ///< references
    bool hasOneState = true;         ///< all records have the first one's

    std::size_t HeldBytes() const;

    void Clear();
    /// A record of this state may come next.
    void NoteState(std::uint32_t state)
    {
        hasOneState = hasOneState && (records.Size() == 0 || records[0].state == state);
    }
    /// Sorts the pairs by tile.
    void Close(std::uint32_t tileCount);
};

/// What references refer to.
struct Primitives
{
    const VertexBlocks& local;
    const Record* records;
};

/// A tile being drawn.
struct TileView
{
    std::uint32_t* colors; ///< TilePixels
    float* depths;
    float* blockFarthest;
    int left, top; ///< in the target
};

struct Batch;
struct DrawState;
using DrawRun = void (*)(const TileView& tile, const Batch& batch, const Primitives& primitives, const DrawState& state,
                         const std::uint16_t* references, std::size_t count);

/// A clear, or everything that is the same for primitives of many items: a tile draws those in one run.
struct DrawState
{
    Primitive primitive = Primitive::Triangles;
    Surface surface = Surface::Plain;
    Blending blending = Blending::Opaque;
    bool isFlat = false;
    bool sortsTranslucent = false; ///< translucent triangles wait
    bool waits = false;            ///< only its translucent triangles are drawn, sorted with those of others
    bool isAllTranslucent = false; ///< no need to look
    bool isTextureTranslucent = false;
    bool hasHighlight = false; ///< where it stays apart from the diffuse color
    PixelRect area;            ///< only these pixels
    CullMode cull = CullMode::None;
    FogState fog;
    const MipChain* texture = nullptr;
    DrawRun drawRun = nullptr;
    ClearParts clear;
    std::uint32_t clearColor = 0;
};

/// A stretch of numbers.
struct Range
{
    std::uint32_t first = 0;
    std::uint32_t count = 0;
};

struct TrianglePlanes;

/// Vertices and faces of a mesh that are placed and lit together: those of a group, or of all groups where these
/// differ in nothing that lighting needs.
struct Part
{
    const DrawMesh* mesh = nullptr;
    const Matrix4* world = nullptr;
    const Pass* pass = nullptr;
    const SurfaceMaterial* material = nullptr;
    bool isLit = false;
    bool lightsFaces = false; ///< flat: faces are lit instead of vertices
    bool needsCoordinates = false;
    bool splitsHighlight = false;                ///< textured: the highlight stays apart from the diffuse color
    std::uint32_t vertexBase = 0;                ///< index of the mesh's vertex 0 among the batch's, modulo 2^32
    std::uint32_t faceBase = 0;                  ///< the same for face 0
    std::uint32_t facingBase = 0;                ///< and for triangle 0, where that is needed
    const TrianglePlanes* planes = nullptr;      ///< of the mesh, or nothing
    const std::uint32_t* faceVertices = nullptr; ///< the first vertex of each face's first triangle
    Range vertices;
    Range faces;     ///< that are lit
    Range triangles; ///< whose facing is found

    // What Prepare computes.
    Matrix4 toClip;
    double toDepth[4]; ///< the column of the way to the camera's axes that gives z

    void Prepare();
};

/// The matrix for normals, scaled so that squares of its products stay within single precision.
Matrix4 NormalsOf(const Matrix4& world);

/// One stretch of primitives of one state and part.
struct Segment
{
    std::uint32_t state = 0;
    std::uint32_t part = 0;  ///< of clears: none
    std::uint32_t first = 0; ///< triangle, edge or, of points, index
    std::uint32_t count = 0;
};

/// Segments that one thread sets up into one Bins.
struct WorkUnit
{
    std::uint32_t firstSegment = 0;
    std::uint32_t segmentCount = 0;
    bool isSorted = false; ///< only translucent triangles are set up, with their keys
};

/// Which keys of sorted triangles are meant. Both ends belong to it.
struct KeyRange
{
    std::uint32_t least = 0;
    std::uint32_t greatest = std::numeric_limits<std::uint32_t>::max();

    bool Contains(std::uint32_t key) const { return key >= least && key <= greatest; }
    bool IsOne() const { return least == greatest; }
};

/// How far a work unit has been set up: segments, and primitives of the next one.
struct UnitPlace
{
    std::uint32_t segment = 0;
    std::uint32_t primitive = 0;
};

/// A stretch of a part's vertices, faces or triangles, or many small parts.
struct VertexTask
{
    enum class Kind : std::uint8_t
    {
        Place,         ///< vertices
        PlaceAndLight, ///< vertices
        LightFaces,
        FindFacing, ///< triangles
        WholeParts, ///< all of that, and Prepare before
    };
    Kind kind = Kind::Place;
    std::uint32_t part = 0; ///< of WholeParts the first
    Range range;            ///< in the mesh; of WholeParts the count says how many
};

/// What goes through the stages together.
struct Batch
{
    std::vector<Part> parts;
    std::vector<DrawState> states;
    std::vector<Segment> segments;
    std::vector<WorkUnit> units;
    std::vector<VertexTask> vertexTasks;
    VertexBlocks vertices;
    VertexBlocks faces;                  ///< colors and highlights only
    Buffer<std::uint8_t> isCulled;       ///< of triangles, for lines and points
    Buffer<std::uint32_t> pointVertices; ///< that points draw
    std::vector<WorkUnit> sortedUnits;   ///< drawn after the others
    PixelRect target;
    int tilesPerRow = 0;
    std::uint32_t tileCount = 0;
    const struct Kernels* kernels = nullptr;

    std::span<const Segment> SegmentsOf(const WorkUnit& unit) const
    {
        return std::span{segments}.subspan(unit.firstSegment, unit.segmentCount);
    }
};

/// Triangles of up to 64 pixels that face the right way and may cover a pixel, clockwise on the screen.
struct TriangleSurvivors
{
    static constexpr std::uint32_t Capacity = 256;
    static constexpr std::uint32_t Slack = 16; ///< vector stores may write this far beyond the last
    static constexpr std::int32_t Unfinished = -1;

    // Corners as indices of positions, the triangle counted from the first one given, and the tile rectangle as bytes
    // left, top, right, bottom (both included), or Unfinished.
    std::int32_t a[Capacity + Slack], b[Capacity + Slack], c[Capacity + Slack];
    std::int32_t triangle[Capacity + Slack];
    std::int32_t tiles[Capacity + Slack];
    std::uint64_t coveredPixels; ///< by the boxes of those that are finished: an upper bound

    std::array<std::uint32_t, 3> Corners(std::uint32_t i) const
    {
        return {static_cast<std::uint32_t>(a[i]), static_cast<std::uint32_t>(b[i]), static_cast<std::uint32_t>(c[i])};
    }
};

/// Edges that are to be culled, no more than there is room for survivors.
struct EdgeStretch
{
    const DrawMesh::Edge* edges;
    std::uint32_t count;
    const std::uint8_t* isCulled; ///< by triangle, or nothing where none is
    std::uint32_t vertexBase;     ///< added to vertices gives places in `positions`
    const ScreenPosition* positions;
    PixelRect viewport; ///< as in Pass
    PixelRect area;     ///< only these pixels are drawn
    int tilesPerRow;
};

inline constexpr int LineWork = 16; ///< that a line is beside its pixels, in coveredPixels

/// Edges that are drawn, up to as many as a triangle batch has triangles.
struct LineSurvivors
{
    static constexpr std::uint32_t Capacity = 256;
    static constexpr std::uint32_t Slack = 16; ///< vector stores may write this far beyond the last
    static constexpr std::int32_t Unfinished = -1;

    // Ends as indices of positions, the edge counted from the first one given, and the one or two tiles of the line's
    // box: their numbers, twice the same where there is one. Unfinished where there are more or an end lies outside the
    // viewport.
    std::int32_t a[Capacity + Slack], b[Capacity + Slack];
    std::int32_t edge[Capacity + Slack];
    std::int32_t tile[Capacity + Slack], secondTile[Capacity + Slack];
    std::uint64_t coveredPixels; ///< by those that are finished: how much work they are
};

/// What one instruction set does its own way. All of them compute the same bytes.
struct Kernels
{
    /// Mesh vertices from `first` on go to the batch's from `to` on.
    void (*place)(const Part& part, std::uint32_t first, std::uint32_t count, std::uint32_t to, VertexBlocks& blocks);
    void (*light)(const Part& part, std::uint32_t first, std::uint32_t count, std::uint32_t to, VertexBlocks& blocks);
    void (*lightFaces)(const Part& part, std::uint32_t first, std::uint32_t count, std::uint32_t to,
                       VertexBlocks& blocks);
    /// Which of a part's triangles from `first` on are culled.
    void (*findFacing)(const Part& part, std::uint32_t first, std::uint32_t count, std::uint8_t* isCulled);
    /// Drops what is culled or covers no pixel centre. What is left goes into `survivors`; large triangles and those
    /// with a vertex that is not placed go there as they are, marked.
    std::uint32_t (*cullTriangles)(const std::uint32_t* indices, std::uint32_t count, std::uint32_t vertexBase,
                                   const ScreenPosition* positions, const DrawState& state,
                                   TriangleSurvivors& survivors);
    /// Drops edges whose triangles are all culled, and lines beside the area.
    std::uint32_t (*cullEdges)(const EdgeStretch& stretch, LineSurvivors& survivors);
    DrawRun drawTriangles[SurfaceCount][BlendingCount][2]; ///< the last index: with fog
    DrawRun drawLines[BlendingCount][2];                   ///< also points
};

} // namespace lumora::rgb
