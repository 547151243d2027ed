// From recorded items to a batch: which vertices to place, which states there are, which work units to set up.
#pragma once

#include "platform/drivers/rgb/Frame.h"
#include "platform/drivers/rgb/Memory.h"
#include "platform/drivers/rgb/MeshFacts.h"
#include "platform/drivers/rgb/Textures.h"

namespace lumora::rgb
{

/// An item as the driver keeps it; the facts keep the mesh.
struct RecordedItem
{
    Matrix4 world;
    const DrawMesh* mesh = nullptr;
    const MeshFacts* facts = nullptr;
    std::uint32_t pass = 0;
    FillStyle fill = FillStyle::Solid;
    bool isGouraud = true;
    bool isLit = true;
};

/// Which of an item's triangles a batch draws.
enum class Share
{
    AtOnce,  ///< all that are not sorted
    Waiting, ///< only those that are sorted
};

/// What a DrawState follows from.
struct StateKey
{
    const Pass* pass = nullptr;
    const TextureImage* texture = nullptr;
    FillStyle fill = FillStyle::Solid;
    bool isFlat = false;
    bool isTranslucent = false;
    bool isAllTranslucent = false;
    bool waits = false;
    bool hasHighlight = false;

    friend bool operator==(const StateKey&, const StateKey&) = default;
};

/// False when nothing in the box can be in sight.
bool MayBeSeen(const Matrix4& world, const Box& bounds, const Pass& pass);

/// Whether some triangles of the item have to be sorted.
bool HasWaiting(const RecordedItem& item, const Pass& pass);

class Planner
{
public:
    /// A batch with so many parts and states takes no further items.
    static constexpr std::size_t EnoughStates = std::size_t{1} << 15;
    static constexpr std::size_t SortedUnitsPerThread = 4;

    /// A batch that has `enoughVertices` takes no further items.
    Planner(Batch& batch, TextureCache& textures, std::uint32_t enoughVertices)
        : batch_(batch), textures_(textures), enoughVertices_(enoughVertices)
    {
    }

    /// Empties the batch.
    void Start(const PixelRect& target, const Kernels& kernels);

    /// Adds the item's groups from `firstGroup` on. Answers the group before which the batch was full, or how many the
    /// item has: what waits to be sorted goes together, however full the batch is. The item must stay where it is until
    /// the batch was drawn.
    std::uint32_t AddItem(const RecordedItem& item, const Pass& pass, Share share, std::uint32_t firstGroup = 0);
    void AddClear(ClearParts parts, const PixelRect& area, std::uint32_t color);

    bool IsFull() const
    {
        return vertexCount_ >= enoughVertices_ || facingCount_ / 16 >= enoughVertices_ ||
               batch_.states.size() + batch_.parts.size() >= EnoughStates;
    }
    bool IsEmpty() const { return batch_.states.empty(); }
    bool HasSorted() const { return !sorted_.empty(); }

    /// What the batch takes so far. Points and units are counted once they are planned.
    WorkCounts Counts() const;

    /// Makes room for what the vertex tasks fill.
    void ReserveVertices();

    /// After the vertex tasks: finds the vertices that points draw, and cuts everything into work units. Of sorted ones
    /// there are no more than SortedUnitsPerThread for each of `threads`, however large.
    void PlanUnits(std::uint32_t threads);

    /// Of the batch and of what plans it.
    std::size_t HeldBytes() const;

    std::uint64_t PrimitiveCount() const { return primitiveCount_; }

private:
    static constexpr int RecentBits = 8;

    std::uint32_t AddPart(const RecordedItem& item, const Pass& pass, const MeshFacts::GroupFacts& group, bool isWhole);
    void AddTasks(Part& part, std::uint32_t number);
    void AddTasks(VertexTask::Kind kind, std::uint32_t part, const Range& range);
    void AddSegment(const RecordedItem& item, const Pass& pass, const MeshFacts::GroupFacts& group, std::uint32_t part,
                    Share share);
    std::uint32_t StateOf(const StateKey& key);
    void AddState(const StateKey& key);
    void CollectPoints(const DrawState& state, Segment& segment);
    void CutUnits(std::span<const Segment> whole, std::uint64_t size, bool isSorted, std::vector<WorkUnit>& units);

    Batch& batch_;
    TextureCache& textures_;
    std::uint32_t enoughVertices_;
    // Wider than the numbers that are made of them, which are used only where a batch is not refused.
    std::uint64_t vertexCount_ = 0;
    std::uint64_t faceCount_ = 0;
    std::uint64_t facingCount_ = 0;
    std::uint32_t largestPointMesh_ = 0;
    bool needsCoordinates_ = false;
    bool needsHighlights_ = false;
    std::uint64_t primitiveCount_ = 0;
    std::vector<StateKey> keys_;                                 ///< of the batch's states
    std::array<std::uint32_t, 1U << RecentBits> recentStates_{}; ///< by a key's hash
    std::uint32_t roomForParts_ = 0;                             ///< in the last task
    std::vector<Segment> atOnce_;                                ///< before they are cut
    std::vector<Segment> sorted_;
    Buffer<std::uint8_t> isTaken_;
};

} // namespace lumora::rgb
