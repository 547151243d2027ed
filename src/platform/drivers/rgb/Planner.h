// From recorded items to a batch: which vertices to place, which states there are, which work units to set up.
#pragma once

#include "platform/drivers/rgb/Frame.h"
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
    /// A batch that has this many vertices takes no further items.
    static constexpr std::uint32_t EnoughVertices = 1U << 20;

    Planner(Batch& batch, TextureCache& textures) : batch_(batch), textures_(textures) {}

    /// Empties the batch.
    void Start(const PixelRect& target, const Kernels& kernels);

    void AddItem(const RecordedItem& recorded, const Pass& pass, Share share);
    void AddClear(ClearParts parts, const PixelRect& area, std::uint32_t color);

    bool IsFull() const { return vertexCount_ >= EnoughVertices; }
    bool IsEmpty() const { return batch_.states.empty(); }
    std::uint32_t VertexCount() const { return vertexCount_; }

    /// Makes room for what the vertex tasks fill.
    void ReserveVertices();

    /// After the vertex tasks: finds the vertices that points draw, and cuts everything into work units: what is drawn
    /// at once, and what waits to be sorted.
    void PlanUnits(std::uint32_t threads);

    /// Further work units, over the sorted triangles.
    void PlanSortedUnits(std::uint32_t threads);

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
    std::uint32_t vertexCount_ = 0;
    std::uint32_t faceCount_ = 0;
    std::uint32_t facingCount_ = 0;
    bool needsCoordinates_ = false;
    bool needsHighlights_ = false;
    std::uint64_t primitiveCount_ = 0;
    std::vector<Segment> whole_; ///< before they are cut
    Buffer<std::uint8_t> isTaken_;
};

} // namespace lumora::rgb
