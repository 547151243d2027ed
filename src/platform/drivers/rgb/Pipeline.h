// What was recorded, and the stages that draw it.
#pragma once

#include "platform/drivers/Crew.h"
#include "platform/drivers/rgb/Frame.h"
#include "platform/drivers/rgb/Memory.h"
#include "platform/drivers/rgb/MeshFacts.h"
#include "platform/drivers/rgb/Planner.h"
#include "platform/drivers/rgb/Textures.h"
#include "platform/drivers/rgb/Tiles.h"

#include <atomic>
#include <vector>

namespace lumora::rgb
{

class Pipeline
{
public:
    /// `threads` as Crew::Of takes them.
    Pipeline(int threads, const Kernels& kernels, const RgbLimits& limits);

    /// Nothing may be waiting. Everything is at the farthest depth from now on.
    void SetTarget(const PixelView& target);

    /// A pass to be filled; items recorded from now on belong to it.
    Pass& NewPass();
    /// False when the mesh is not consistent.
    bool RecordItem(const DrawItem& item);
    void RecordClear(ClearParts parts, const PixelRect& area, std::uint32_t color);

    /// What waits to be sorted is to be drawn at this point of the recording.
    void DrawWaiting();

    /// What drawing would relieve; items that wait to be sorted do not count.
    std::size_t RecordedCount() const { return commands_.size() + items_.size() + (waiting_.empty() ? passCount_ : 0); }

    /// Draws everything recorded but what waits to be sorted.
    void DrawRecorded();
    void Finish();

    /// Drops everything recorded.
    void Forget();

    DriverMemory Memory() const;

private:
    struct Command
    {
        enum class Kind : std::uint8_t
        {
            Items,
            Clear,
            Waiting, ///< of the waiting items
        };
        Kind kind = Kind::Items;
        std::uint32_t first = 0;
        std::uint32_t count = 0;
        ClearParts parts;
        PixelRect area;
        std::uint32_t color = 0;
    };

    enum class UnitState : std::uint8_t
    {
        LeftOut,
        Begun, ///< the rest is for the next round
        Whole,
    };

    void RunCommand(const Command& command);
    void RunBatch();
    void PlaceAndLight(bool alone);
    void RunTask(const VertexTask& task);
    void RunWhole(std::uint32_t part);
    void AnnounceMesh(std::uint32_t part, std::uint32_t end) const;
    void FindFacing(const Part& part, const Range& range);
    void CollectWaiting(bool alone);
    void SortWaiting();
    void RequireRoom() const;
    void CountRecorded();
    void ForgetPasses();
    void DrawUnits(bool alone);
    std::size_t SetUpRound(std::size_t first, std::size_t count, bool alone);
    void TrimBins();
    void DrawRound(std::size_t count, bool alone);
    template<typename Work>
    void Share(std::size_t count, bool alone, Work work);

    std::shared_ptr<Crew> crew_;
    const Kernels& kernels_;
    PixelView target_;
    DepthStore depth_;
    TextureCache textures_;
    MeshFactsCache facts_;

    // What was recorded.
    std::vector<Pass> passes_;
    std::size_t passCount_ = 0;
    std::vector<RecordedItem> items_;
    std::vector<RecordedItem> waiting_;
    std::size_t firstWaiting_ = 0; ///< those before have their command
    std::vector<Command> commands_;

    // Work space.
    Batch batch_;
    Planner planner_;
    std::vector<Bins> bins_;
    std::vector<UnitState> unitStates_;             ///< of the round
    std::vector<UnitPlace> unitPlaces_;             ///< where each of them stopped
    UnitPlace from_;                                ///< where the next round starts within its first unit
    Buffer<std::uint32_t> tileColors_;              ///< room for a tile for each thread
    std::vector<Buffer<SortedTriangle>> collected_; ///< for each waiting unit
    Buffer<SortedPlace> sortSpace_;
    RgbLimits limits_;
    WorkCounts most_; ///< so far
};

} // namespace lumora::rgb
