#include "platform/drivers/rgb/Pipeline.h"

#include "platform/automation/RuntimeError.h"
#include "platform/drivers/rgb/KernelSets.h"
#include "platform/drivers/rgb/Setup.h"

#include <algorithm>
#include <new>
#include <string>
#include <utility>

namespace lumora::rgb
{

namespace
{

constexpr std::uint64_t SmallPrimitiveCount = 12000; ///< below, waking helpers costs more than they save
constexpr std::uint64_t SmallPixelCount = 80000;
constexpr std::size_t UnitsPerRound = 1024;

std::size_t BytesIn(const Bins& bins)
{
    return bins.records.Size() * sizeof(Record) + bins.pairs.Size() * 6 + bins.offsets.Size() * 4 +
           bins.local.positions.Size() * (sizeof(ScreenPosition) + sizeof(CoordinateBlock) + 2 * sizeof(ColorBlock));
}

template<typename T>
std::size_t HeldBy(const std::vector<T>& list)
{
    return list.capacity() * sizeof(T);
}

} // namespace

Pipeline::Pipeline(int threads, SimdLevel simd, const RgbLimits& limits)
    : crew_(Crew::Of(threads)), kernels_(KernelsFor(simd)), averagingKernels_(averaging::KernelsFor(simd)),
      limits_(limits), textures_(limits.textureBytes), planner_(batch_, textures_, limits.batchVertices)
{
    most_.threads = static_cast<std::size_t>(crew_->Size());
    scratch_.Resize(static_cast<std::size_t>(crew_->Size()));
}

void Pipeline::SetTarget(const PixelView& target)
{
    target_ = {};
    DropRecorded();
    isDepthWanted_ = false;
    const auto tiles = [](int side) { return static_cast<std::uint32_t>((side + TileSize - 1) >> TileShift); };
    depth_.Reset(tiles(target.width) * tiles(target.height));
    most_.tiles = std::max(most_.tiles, std::size_t{tiles(target.width)} * tiles(target.height));
    target_ = target;
}

Pass& Pipeline::NewPass()
{
    if (passCount_ == passes_.size())
        passes_.emplace_back();
    return passes_[passCount_++];
}

bool Pipeline::RecordItem(const DrawItem& item)
{
    DrawPutOff(); // lets go of the meshes that were found before
    const MeshFacts* facts = facts_.Find(item.mesh);
    if (facts == nullptr)
        return false;
    const auto pass = static_cast<std::uint32_t>(passCount_ - 1);
    if (!item.isInView && !MayBeSeen(item.world, item.mesh->bounds, passes_[pass]))
        return true;
    const auto number = static_cast<std::uint32_t>(items_.size());
    items_.push_back({item.world, item.mesh.get(), facts, pass, item.fill, item.gouraud, item.lit});
    if (!commands_.empty() && commands_.back().kind == Command::Kind::Items)
        ++commands_.back().count;
    else
        commands_.push_back({Command::Kind::Items, number, 1, {}, {}, 0});
    if (HasWaiting(items_.back(), passes_[pass]))
        waiting_.push_back(items_.back());
    return true;
}

void Pipeline::RecordClear(ClearParts parts, const PixelRect& area, std::uint32_t color)
{
    if (area.IsEmpty())
        return;
    const bool replacesDepth = parts.depth && area == target_.Bounds();
    if (IsClearOfAll(parts, area) || (putOff_ == PutOff::Depth && replacesDepth))
        DropRecorded();
    else
        DrawPutOff();
    commands_.push_back({Command::Kind::Clear, 0, 0, parts, area, color});
}

bool Pipeline::IsClearOfAll(ClearParts parts, const PixelRect& area) const
{
    return parts.color && parts.depth && area == target_.Bounds();
}

void Pipeline::DrawWaiting()
{
    if (waiting_.size() == firstWaiting_)
        return;
    commands_.push_back({Command::Kind::Waiting,
                         static_cast<std::uint32_t>(firstWaiting_),
                         static_cast<std::uint32_t>(waiting_.size() - firstWaiting_),
                         {},
                         {},
                         0});
    firstWaiting_ = waiting_.size();
}

void Pipeline::DrawRecorded()
{
    RunRecorded();
    DropRecorded();
}

/// What comes next needs the target and its depths.
void Pipeline::DrawPutOff()
{
    if (putOff_ == PutOff::Nothing)
        return;
    isDepthWanted_ = true;
    DrawRecorded();
}

void Pipeline::CountRecorded()
{
    WorkCounts counts;
    counts.recorded = std::max(commands_.size() + items_.size(), waiting_.size());
    counts.passes = passCount_;
    for (std::size_t i = 0; i < passCount_; ++i)
        counts.lights += passes_[i].lights.size();
    counts.meshes = facts_.Count();
    counts.meshFaces = facts_.FaceCount();
    counts.meshGroups = facts_.GroupCount();
    counts.meshTriangles = facts_.TriangleCount();
    most_.Include(counts);
}

void Pipeline::Finish()
{
    if (putOff_ == PutOff::Depth) // nothing was recorded since
        return EndPicture();
    DrawWaiting();
    mayPutOff_ = !isDepthWanted_;
    RunRecorded();
    if (putOff_ == PutOff::Nothing)
        DropRecorded();
    EndPicture();
}

bool Pipeline::FinishAveraged(const PixelView& averages, int factor)
{
    if (TileSize % factor != 0 || putOff_ == PutOff::Depth) // the target may have been drawn on
        return false;
    DrawWaiting();
    mayPutOff_ = true;
    averages_ = {averages, factor, Averages::State::Wanted};
    RunRecorded();
    if (putOff_ == PutOff::Nothing)
        DropRecorded();
    EndPicture();
    return std::exchange(averages_, {}).state == Averages::State::Taken;
}

/// All but what waits to be sorted.
void Pipeline::DropRecorded()
{
    commands_.clear();
    items_.clear();
    waiting_.erase(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(firstWaiting_));
    firstWaiting_ = 0;
    putOff_ = PutOff::Nothing;
    if (waiting_.empty())
    {
        facts_.Release();
        ForgetPasses();
    }
}

/// All but the pass that is open, if any, which goes on.
void Pipeline::ForgetPasses()
{
    if (passCount_ > 1)
        std::swap(passes_.front(), passes_[passCount_ - 1]);
    passCount_ = std::min<std::size_t>(passCount_, 1);
}

void Pipeline::EndPicture()
{
    most_.textures = std::max(most_.textures, textures_.Count());
    most_.texels = std::max(most_.texels, textures_.TexelCount());
    textures_.Trim();
    facts_.Sweep();
}

void Pipeline::Forget()
{
    commands_.clear();
    items_.clear();
    waiting_.clear();
    firstWaiting_ = 0;
    facts_.Release();
    passCount_ = 0;
    putOff_ = PutOff::Nothing;
    mayPutOff_ = false;
    averages_ = {};
}

void Pipeline::RunRecorded()
{
    takesColors_ = putOff_ != PutOff::Depth; // else they are there, and may have been drawn on
    putOff_ = PutOff::Nothing;
    isFirstRound_ = true;
    CountRecorded();
    planner_.Start(target_.Bounds(), kernels_);
    for (const Command& command : commands_)
        RunCommand(command, &command == &commands_.back());
    RunBatch(true);
    mayPutOff_ = false;
}

void Pipeline::RunCommand(const Command& command, bool isLast)
{
    if (command.kind == Command::Kind::Clear)
        return planner_.AddClear(command.parts, command.area, command.color);
    if (command.kind == Command::Kind::Waiting)
    {
        for (std::uint32_t i = command.first; i < command.first + command.count; ++i)
            planner_.AddItem(waiting_[i], passes_[waiting_[i].pass], Share::Waiting);
        return RunBatch(isLast);
    }
    for (std::uint32_t i = command.first; i < command.first + command.count; ++i)
    {
        const auto groups = static_cast<std::uint32_t>(items_[i].facts->groups.size());
        std::uint32_t group = 0;
        while ((group = planner_.AddItem(items_[i], passes_[items_[i].pass], Share::AtOnce, group)) < groups)
            RunBatch(false);
        if (planner_.IsFull() && !(isLast && i + 1 == command.first + command.count))
            RunBatch(false);
    }
}

/// What is drawn at once, and then, sorted, what waits.
void Pipeline::RunBatch(bool isLast)
{
    if (planner_.IsEmpty())
        return;
    RequireRoom();
    const Crew::Attention attention{*crew_};
    const bool alone = planner_.PrimitiveCount() < SmallPrimitiveCount;
    const std::uint32_t threads = alone ? 1U : static_cast<std::uint32_t>(crew_->Size());
    PlaceAndLight(alone);
    planner_.PlanUnits(threads);
    if (!batch_.waitingUnits.empty())
    {
        SortWaiting(alone);
        planner_.PlanSortedUnits(threads);
    }
    most_.Include(planner_.Counts());
    DrawUnits(alone, isLast);
    planner_.Start(target_.Bounds(), kernels_);
}

void Pipeline::RequireRoom() const
{
    const WorkCounts counts = planner_.Counts();
    const std::size_t bytes = BatchBytes(counts);
    if (bytes <= limits_.batchBytes)
        return;
    const auto inMebibytes = [](std::size_t size) { return std::to_string((size >> 20) + 1) + " MiB"; };
    const std::string what = counts.waiting != 0
                                 ? "Sorting " + std::to_string(counts.waiting) + " translucent triangles"
                                 : "A mesh of " + std::to_string(counts.vertices) + " vertices";
    throw RuntimeError{error::RMBadAlloc, "RgbDriver",
                       what + " needs " + inMebibytes(bytes) + ", more than the " + inMebibytes(limits_.batchBytes) +
                           " that one picture may take: show less at once, or blend without sorting."};
}

/// Collects what waits, farthest first.
void Pipeline::SortWaiting(bool alone)
{
    const std::size_t units = batch_.waitingUnits.size();
    if (batch_.collected.size() < units)
        batch_.collected.resize(units);
    Share(units, alone,
          [&](std::size_t unit, int) { CollectSorted(batch_, batch_.waitingUnits[unit], batch_.collected[unit]); });
    std::uint32_t least = ~std::uint32_t{0};
    std::uint32_t greatest = 0;
    for (std::size_t unit = 0; unit < units; ++unit)
    {
        least = std::min(least, batch_.collected[unit].leastKey);
        greatest = std::max(greatest, batch_.collected[unit].greatestKey);
    }
    depthSort_.Start(units);
    depthSort_.SetRange(std::min(least, greatest), greatest);
    Share(units, alone,
          [&](std::size_t unit, int) { depthSort_.Count(unit, batch_.collected[unit].triangles.Items()); });
    const std::uint32_t count = depthSort_.Place();
    batch_.order.Resize(count);
    Share(units, alone,
          [&](std::size_t unit, int)
          { depthSort_.Distribute(unit, batch_.collected[unit].triangles.Items(), batch_.order.Data()); });
    Share(DepthSort::Buckets / DepthSort::BucketsPerTask, alone,
          [&](std::size_t task, int)
          {
              const auto first = static_cast<std::uint32_t>(task) * DepthSort::BucketsPerTask;
              depthSort_.SortBuckets(first, batch_.order.Data());
          });
}

template<typename Work>
void Pipeline::Share(std::size_t count, bool alone, Work work)
{
    std::atomic<bool> failed{false};
    auto guarded = [&](std::size_t unit, int worker)
    {
        try
        {
            work(unit, worker);
        }
        catch (const std::bad_alloc&)
        {
            failed.store(true);
        }
    };
    crew_->Run(count, alone, guarded);
    if (failed.load())
        throw std::bad_alloc{};
}

void Pipeline::PlaceAndLight(bool alone)
{
    planner_.ReserveVertices();
    Share(batch_.vertexTasks.size(), alone, [&](std::size_t number, int) { RunTask(batch_.vertexTasks[number]); });
}

void Pipeline::RunTask(const VertexTask& task)
{
    const Range& range = task.range;
    const Part& part = batch_.parts[task.part];
    switch (task.kind)
    {
    case VertexTask::Kind::PlaceAndLight:
        kernels_.light(part, range.first, range.count, range.first + part.vertexBase, batch_.vertices);
        [[fallthrough]];
    case VertexTask::Kind::Place:
        return kernels_.place(part, range.first, range.count, range.first + part.vertexBase, batch_.vertices);
    case VertexTask::Kind::LightFaces:
        return kernels_.lightFaces(part, range.first, range.count, range.first + part.faceBase, batch_.faces);
    case VertexTask::Kind::FindFacing:
        return kernels_.findFacing(part, range.first, range.count,
                                   batch_.isCulled.Data() + range.first + part.facingBase);
    case VertexTask::Kind::WholeParts:
        for (std::uint32_t i = task.part; i < task.part + range.count; ++i)
        {
            AnnounceMesh(i + 2, task.part + range.count);
            RunWhole(i);
        }
    }
}

/// Has the memory fetch a small part's mesh, unless it is another one's, too.
void Pipeline::AnnounceMesh(std::uint32_t number, std::uint32_t end) const
{
    if (number + 2 < end)
        __builtin_prefetch(batch_.parts[number + 2].mesh);
    if (number >= end || batch_.parts[number].mesh == batch_.parts[number - 1].mesh)
        return;
    const DrawMesh& mesh = *batch_.parts[number].mesh;
    constexpr std::size_t LineFloats = 16;
    for (const std::vector<float>* list : {&mesh.x, &mesh.y, &mesh.z, &mesh.normalX, &mesh.normalY, &mesh.normalZ})
        for (std::size_t i = 0; i < std::min(list->size(), 4 * LineFloats); i += LineFloats)
            __builtin_prefetch(list->data() + i);
    __builtin_prefetch(mesh.color.data());
    __builtin_prefetch(mesh.color.data() + LineFloats);
}

void Pipeline::RunWhole(std::uint32_t number)
{
    using enum VertexTask::Kind;
    Part& part = batch_.parts[number];
    part.Prepare();
    RunTask({part.lightsFaces ? Place : PlaceAndLight, number, part.vertices});
    if (part.faces.count != 0)
        RunTask({LightFaces, number, part.faces});
    if (part.triangles.count != 0)
        RunTask({FindFacing, number, part.triangles});
}

void Pipeline::DrawUnits(bool alone, bool isLast)
{
    std::size_t done = 0;
    from_ = {};
    while (done < batch_.units.size())
    {
        const std::size_t count = std::min(UnitsPerRound, batch_.units.size() - done);
        const std::size_t whole = SetUpRound(done, count, alone);
        const bool hasPart = whole < count && unitStates_[whole] == UnitState::Begun;
        from_ = hasPart ? unitPlaces_[whole] : UnitPlace{};
        done += whole;
        DrawRound(whole + (hasPart ? 1 : 0), alone, isLast && done == batch_.units.size());
        TrimBins();
    }
}

/// Sets up units until the bins are full. Answers how many from the first on are set up as a whole; the next one may
/// have begun.
std::size_t Pipeline::SetUpRound(std::size_t first, std::size_t count, bool alone)
{
    if (bins_.size() < count)
        bins_.resize(count);
    unitStates_.assign(count, UnitState::LeftOut);
    unitPlaces_.resize(std::max(unitPlaces_.size(), count));
    const std::size_t mostPairs = MostPairs(limits_);
    std::atomic<std::size_t> bytes{0};
    Share(count, alone,
          [&](std::size_t unit, int)
          {
              // Threads pass here in any order, so that a unit behind one that was left out may be set up in vain.
              if (unit != 0 && bytes.load(std::memory_order_relaxed) > limits_.roundBytes)
                  return;
              const WorkUnit& work = batch_.units[first + unit];
              unitPlaces_[unit] = SetUpUnit(batch_, work, unit == 0 ? from_ : UnitPlace{}, mostPairs, bins_[unit]);
              const bool isWhole = unitPlaces_[unit].segment == work.segmentCount;
              unitStates_[unit] = isWhole ? UnitState::Whole : UnitState::Begun;
              bytes.fetch_add(isWhole ? BytesIn(bins_[unit]) : limits_.roundBytes + 1, std::memory_order_relaxed);
          });
    return static_cast<std::size_t>(
        std::ranges::find_if(unitStates_, [](UnitState state) { return state != UnitState::Whole; }) -
        unitStates_.begin());
}

/// Gives back the memory of bins once all together have more than a round fills.
void Pipeline::TrimBins()
{
    const std::size_t most = limits_.roundBytes + limits_.roundBytes / 2;
    std::size_t kept = 0;
    for (Bins& bins : bins_)
    {
        kept += bins.HeldBytes();
        if (kept <= most)
            continue;
        kept -= bins.HeldBytes();
        bins = {};
    }
}

DriverMemory Pipeline::Memory() const
{
    std::size_t held = depth_.HeldBytes() + textures_.HeldBytes() + facts_.HeldBytes() + scratch_.CapacityInBytes();
    held += HeldBy(passes_) + HeldBy(items_) + HeldBy(waiting_) + HeldBy(commands_);
    for (const Pass& pass : passes_)
        held += HeldBy(pass.lights);
    held += planner_.HeldBytes() + depthSort_.HeldBytes();
    held += HeldBy(bins_) + HeldBy(unitStates_) + HeldBy(unitPlaces_) + HeldBy(batch_.collected);
    for (const Bins& bins : bins_)
        held += bins.HeldBytes();
    for (const CollectedTriangles& collected : batch_.collected)
        held += collected.triangles.CapacityInBytes();
    return {held, MostBytes(most_, limits_)};
}

TileOutput Pipeline::OutputOf(bool isLastRound)
{
    const Command& first = commands_.front();
    const bool isWholePicture = std::exchange(isFirstRound_, false) && isLastRound && mayPutOff_ &&
                                first.kind == Command::Kind::Clear && IsClearOfAll(first.parts, first.area);
    TileOutput output;
    output.target = target_;
    output.takesColors = takesColors_;
    output.depth = isWholePicture ? nullptr : &depth_;
    putOff_ = isWholePicture ? PutOff::Depth : PutOff::Nothing;
    if (!isLastRound || averages_.state != Averages::State::Wanted)
        return output;
    averages_.state = Averages::State::Taken;
    output.averages = averages_.view;
    output.factor = averages_.factor;
    output.averagingKernels = averagingKernels_;
    if (isWholePicture)
    {
        output.takesColors = false;
        putOff_ = PutOff::Picture;
    }
    return output;
}

void Pipeline::DrawRound(std::size_t count, bool alone, bool isLast)
{
    const TileOutput output = OutputOf(isLast);
    const std::span<Bins> ready{bins_.data(), count};
    std::uint64_t pixels = 0;
    for (const Bins& bins : ready)
        pixels += bins.coveredPixels;
    Share(batch_.tileCount, alone && pixels < SmallPixelCount,
          [&](std::size_t tile, int worker) {
              DrawTile(batch_, ready, static_cast<std::uint32_t>(tile), output,
                       scratch_[static_cast<std::size_t>(worker)]);
          });
}

} // namespace lumora::rgb
