// What was recorded, and the stages that draw it.
#pragma once

#include "parallel/Crew.h"
#include "platform/drivers/rgb/Frame.h"
#include "platform/drivers/rgb/Memory.h"
#include "platform/drivers/rgb/MeshFacts.h"
#include "platform/drivers/rgb/Planner.h"
#include "platform/drivers/rgb/Textures.h"
#include "platform/drivers/rgb/TileSort.h"
#include "platform/drivers/rgb/Tiles.h"

#include <atomic>
#include <vector>

namespace lumora::rgb
{

class Pipeline
{
public:
    /// `threads` as Crew::Of takes them.
    Pipeline(int threads, SimdLevel simd, const RgbLimits& limits);

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

    /// As Driver says. A picture that begins with a clear of everything and goes through the stages at once leaves its
    /// depths in the threads' near caches; the recording is kept then, so that they can be had yet.
    void Finish();

    /// As Driver says. For such a picture the target is left behind, too.
    bool FinishAveraged(const PixelView& averages, int factor);

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

    /// Units that are set up together. Those in order come first.
    struct Round
    {
        std::span<const WorkUnit> inOrder;
        std::span<const WorkUnit> sorted;
        KeyRange keys; ///< of sorted triangles, wherever they are

        std::size_t Size() const { return inOrder.size() + sorted.size(); }
        const WorkUnit& operator[](std::size_t number) const
        {
            return number < inOrder.size() ? inOrder[number] : sorted[number - inOrder.size()];
        }
    };

    /// Averages that are taken while the last round of tiles is drawn.
    struct Averages
    {
        enum class State
        {
            None,
            Wanted,
            Taken,
        };
        PixelView view;
        int factor = 1;
        State state = State::None;
    };

    /// What is not there of what was recorded and drawn.
    enum class PutOff
    {
        Nothing,
        Depth,
        Picture, ///< depth and colors: they are in the averages only
    };

    bool IsClearOfAll(ClearParts parts, const PixelRect& area) const;
    void DrawPutOff();
    void DropRecorded();
    void ForgetPasses();
    void CountRecorded();
    void EndPicture();
    void RunRecorded();
    void RunCommand(const Command& command, bool isLast);
    void RunBatch(bool isLast);
    void RequireRoom() const;
    void PlaceAndLight(bool alone);
    void RunTask(const VertexTask& task);
    void RunWhole(std::uint32_t part);
    void AnnounceMesh(std::uint32_t part, std::uint32_t end) const;
    void DrawUnits(bool alone, bool isLast);
    bool DrawInOrder(Round rest, bool alone, bool isLast);
    void DrawByKeys(bool alone, bool isLast);
    double PartsToFit(const Round& round) const;
    void DivideKeys(const Round& round);
    std::size_t SetUpRound(const Round& round, bool alone);
    bool CanSort(const Round& round) const;
    TileOutput OutputOf(bool isLastRound);
    void DrawRound(const TileInput& input, bool alone, bool isLast);
    void TrimBins();
    template<typename Work>
    void Share(std::size_t count, bool alone, Work work);

    std::shared_ptr<Crew> crew_;
    const Kernels& kernels_;
    const averaging::Kernels averagingKernels_;
    const RgbLimits limits_;
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
    PutOff putOff_ = PutOff::Nothing;
    bool mayPutOff_ = false;     ///< nothing is drawn over what is being drawn, as far as known
    bool isDepthWanted_ = false; ///< somebody draws over finished pictures of this target

    Averages averages_;
    bool takesColors_ = true;   ///< the target
    bool isFirstRound_ = false; ///< nothing of what was recorded has been drawn yet

    // Work space.
    Batch batch_;
    Planner planner_;
    std::vector<Bins> bins_;
    std::vector<UnitState> unitStates_; ///< of the round
    std::vector<UnitPlace> unitPlaces_; ///< where each of them stopped
    UnitPlace from_;                    ///< where the next round starts within its first unit
    Buffer<TileScratch> scratch_;       ///< for each thread
    std::vector<TileSort> sorts_;       ///< for each thread
    std::vector<KeyRange> keysLeft_;    ///< the farthest last
    WorkCounts most_;                   ///< so far
};

} // namespace lumora::rgb
