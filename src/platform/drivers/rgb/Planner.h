// From recorded items to a batch: which vertices to place, which states there are, which work units to set up.
#pragma once

#include "platform/drivers/rgb/Frame.h"
#include "platform/drivers/rgb/Memory.h"
#include "platform/drivers/rgb/MeshFacts.h"
#include "platform/drivers/rgb/Textures.h"

namespace lumora::rgb
{

/// An item as the driver keeps it.
struct RecordedItem
{
    DrawItem item;
    std::uint32_t pass = 0;
    const MeshFacts* facts = nullptr;
};

/// Which of an item's triangles a batch draws.
enum class Share
{
    AtOnce,  ///< all that are not sorted
    Waiting, ///< only those that are sorted
};

/// False when nothing of the item can be in sight.
bool MayBeSeen(const DrawItem& item, const Pass& pass);

/// Whether some triangles of the item have to be sorted.
bool HasWaiting(const DrawItem& item, const Pass& pass);

class Planner
{
public:
    /// A batch with so many groups and clears takes no further items.
    static constexpr std::size_t EnoughStates = std::size_t{1} << 15;

    /// A batch that has `enoughVertices` takes no further items.
    Planner(Batch& batch, TextureCache& textures, std::uint32_t enoughVertices)
        : batch_(batch), textures_(textures), enoughVertices_(enoughVertices)
    {
    }

    /// Empties the batch.
    void Start(const PixelRect& target, const Kernels& kernels);

    /// Adds the item's groups from `firstGroup` on. Answers the group before which the batch was full, or how many the
    /// item has: what waits to be sorted goes together, however full the batch is.
    std::uint32_t AddItem(const RecordedItem& recorded, const Pass& pass, Share share, std::uint32_t firstGroup = 0);
    void AddClear(ClearParts parts, const PixelRect& area, std::uint32_t color);

    bool IsFull() const
    {
        return vertexCount_ >= enoughVertices_ || facingCount_ / 16 >= enoughVertices_ ||
               batch_.states.size() >= EnoughStates;
    }
    bool IsEmpty() const { return batch_.states.empty(); }

    /// What the batch takes so far. Points and units are counted once they are planned.
    WorkCounts Counts() const;

    /// Makes room for what the vertex tasks fill.
    void ReserveVertices();

    /// After the vertex tasks: finds the vertices that points draw, and cuts everything into work units: what is drawn
    /// at once, and what waits to be sorted.
    void PlanUnits(std::uint32_t threads);

    /// Further work units, over the sorted triangles.
    void PlanSortedUnits(std::uint32_t threads);

    /// Of the batch and of what plans it.
    std::size_t HeldBytes() const;

    std::uint64_t PrimitiveCount() const { return primitiveCount_; }

private:
    std::uint32_t AddPart(const RecordedItem& recorded, const Pass& pass, std::uint32_t group, bool isWhole);
    void AddState(const RecordedItem& recorded, const Pass& pass, std::uint32_t group, std::uint32_t part,
                  const MipChain* texture, Share share);
    void AddTasks(VertexTask::Kind kind, std::uint32_t part, std::uint32_t first, std::uint32_t count);
    void CollectPoints(const DrawState& state, Segment& segment);
    void CutUnits(std::uint32_t threads, bool isSorted, std::vector<WorkUnit>& units);
    Segment WholeSegment(std::uint32_t state) const;

    Batch& batch_;
    TextureCache& textures_;
    std::uint32_t enoughVertices_;
    // Wider than the numbers that are made of them, which are used only where a batch is not refused.
    std::uint64_t vertexCount_ = 0;
    std::uint64_t faceCount_ = 0;
    std::uint64_t facingCount_ = 0;
    std::uint64_t waitingCount_ = 0;
    std::uint32_t largestPointMesh_ = 0;
    bool needsCoordinates_ = false;
    bool needsHighlights_ = false;
    std::uint64_t primitiveCount_ = 0;
    std::vector<Segment> whole_; ///< before they are cut
    Buffer<std::uint8_t> isTaken_;
};

} // namespace lumora::rgb
