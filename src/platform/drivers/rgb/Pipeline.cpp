#include "platform/drivers/rgb/Pipeline.h"

#include "base/RuntimeError.h"
#include "platform/drivers/rgb/KernelSets.h"
#include "platform/drivers/rgb/Setup.h"

#include <algorithm>
#include <array>
#include <bit>
#include <new>
#include <numeric>
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
    return bins.records.Size() * sizeof(Record) + bins.keys.Size() * 4 + bins.pairs.Size() * 6 +
           bins.local.positions.Size() * (sizeof(ScreenPosition) + sizeof(CoordinateBlock) + 2 * sizeof(ColorBlock));
}

/// At least as many as any tile has of them.
std::size_t MostToSort(std::span<const Bins> sorted)
{
    std::size_t count = 0;
    for (const Bins& bins : sorted)
        count += bins.mostInTile;
    return count;
}

/// How much of a unit was set up: above 0.
double DonePart(std::span<const Segment> segments, const UnitPlace& place)
{
    double all = 0;
    double done = place.primitive;
    for (std::size_t i = 0; i < segments.size(); ++i)
    {
        all += segments[i].count;
        done += i < place.segment ? segments[i].count : 0;
    }
    return std::max(done, 1.0) / std::max(all, 1.0);
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
    sorts_.resize(static_cast<std::size_t>(crew_->Size()));
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
    const auto inMebibytes = [](std::size_t size)
    { return std::to_string((size >> 20) + (size % (1U << 20) != 0 ? 1 : 0)) + " MiB"; };
    const bool hasSorted = planner_.HasSorted();
    throw RuntimeError{error::RMBadAlloc, "RgbDriver",
                       (hasSorted ? "Sorting translucent triangles of " : "A mesh of ") +
                           std::to_string(counts.vertices) + " vertices needs " + inMebibytes(bytes) +
                           ", more than the " + inMebibytes(limits_.batchBytes) + " that one picture may take: " +
                           (hasSorted ? "show less of them at once, or blend without sorting."
                                      : "show less of it, or divide it into several meshes.")};
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

/// What is drawn in order, then what is sorted: mostly all in one round.
void Pipeline::DrawUnits(bool alone, bool isLast)
{
    keysLeft_.clear(); // of a picture for which memory did not last
    if (!DrawInOrder({batch_.units, batch_.sortedUnits, {}}, alone, isLast))
        DrawByKeys(alone, isLast);
}

/// Draws what is in order, in rounds, and with the last of them what is sorted. False when that did not fit: it is yet
/// to be drawn, by keysLeft_.
bool Pipeline::DrawInOrder(Round rest, bool alone, bool isLast)
{
    from_ = {};
    while (true)
    {
        const bool isRest = rest.inOrder.size() <= UnitsPerRound;
        const Round round = isRest ? rest : Round{rest.inOrder.first(UnitsPerRound), {}, rest.keys};
        const std::size_t whole = SetUpRound(round, alone);
        const bool isAll = isRest && whole == round.Size() && CanSort(round);
        const std::size_t done = std::min(whole, round.inOrder.size());
        const bool hasPart = done < round.inOrder.size() && unitStates_[done] == UnitState::Begun;
        from_ = hasPart ? unitPlaces_[done] : UnitPlace{};
        rest.inOrder = rest.inOrder.subspan(done);
        if (rest.inOrder.empty() && !isAll)
            DivideKeys(round);
        const std::span<const Bins> ready{bins_.data(), round.Size()};
        DrawRound({ready.first(done + (hasPart ? 1 : 0)), isAll ? ready.subspan(done) : std::span<const Bins>{}}, alone,
                  isLast && isAll);
        if (rest.inOrder.empty())
            return isAll;
    }
}

/// Draws what is sorted, the farthest first, in as many rounds as it takes.
void Pipeline::DrawByKeys(bool alone, bool isLast)
{
    while (!keysLeft_.empty())
    {
        const Round round{{}, batch_.sortedUnits, keysLeft_.back()};
        keysLeft_.pop_back();
        const bool isLastRound = isLast && keysLeft_.empty();
        if (round.keys.IsOne()) // drawn in order of submission
            DrawInOrder({round.sorted, {}, round.keys}, alone, isLastRound);
        else if (SetUpRound(round, alone) == round.Size() && CanSort(round))
            DrawRound({{}, std::span{bins_}.first(round.Size())}, alone, isLastRound);
        else
            DivideKeys(round);
    }
}

/// How many parts of about equal size a round that did not fit would fit, going by the sorted units that were set up.
double Pipeline::PartsToFit(const Round& round) const
{
    constexpr double Spare = 1.2; // no part is quite like another
    constexpr double Most = 64;
    double parts = 2;
    double bytes = 0; // of these units, had there been room
    double units = 0;
    for (std::size_t unit = round.inOrder.size(); unit < round.Size(); ++unit)
    {
        if (unitStates_[unit] == UnitState::LeftOut)
            continue;
        const double done = DonePart(batch_.SegmentsOf(round[unit]), unitPlaces_[unit]);
        parts = std::max(parts, Spare / done);
        bytes += static_cast<double>(BytesIn(bins_[unit])) / done;
        ++units;
    }
    const double bytesOfAll = bytes / std::max(units, 1.0) * static_cast<double>(round.sorted.size());
    return std::min(std::max(parts, Spare * bytesOfAll / static_cast<double>(limits_.roundBytes)), Most);
}

/// Divides the keys of a round that did not fit, so that parts of it may, going by those that were set up.
void Pipeline::DivideKeys(const Round& round)
{
    constexpr int BucketBits = 10;
    KeyRange seen{round.keys.greatest, round.keys.least};
    double count = 0;
    const auto forKeys = [&](auto use)
    {
        for (std::size_t unit = round.inOrder.size(); unit < round.Size(); ++unit)
            if (unitStates_[unit] != UnitState::LeftOut)
                std::ranges::for_each(bins_[unit].keys.Items(), use);
    };
    forKeys([&](std::uint32_t key) { seen = {std::min(seen.least, key), std::max(seen.greatest, key)}; });
    if (seen.least > seen.greatest)
        seen = round.keys;
    const int shift = std::max(0, static_cast<int>(std::bit_width(seen.greatest - seen.least)) - BucketBits);
    std::array<std::uint32_t, 1U << BucketBits> counts{};
    forKeys(
        [&](std::uint32_t key)
        {
            ++counts[(key - seen.least) >> shift];
            ++count;
        });

    const double share = std::max(1.0, count / PartsToFit(round));
    const auto before = static_cast<std::ptrdiff_t>(keysLeft_.size());
    std::uint32_t least = round.keys.least;
    double passed = 0;
    for (std::uint32_t bucket = 0; bucket < counts.size(); ++bucket)
    {
        passed += counts[bucket];
        const std::uint64_t last = seen.least + (std::uint64_t{bucket + 1} << shift) - 1;
        if (passed < share || last >= round.keys.greatest)
            continue;
        keysLeft_.push_back({least, static_cast<std::uint32_t>(last)});
        least = static_cast<std::uint32_t>(last) + 1;
        passed = 0;
    }
    if (least == round.keys.least) // all at the end
    {
        least = std::min(std::midpoint(seen.least, seen.greatest), round.keys.greatest - 1) + 1;
        keysLeft_.push_back({round.keys.least, least - 1});
    }
    keysLeft_.push_back({least, round.keys.greatest});
    std::reverse(keysLeft_.begin() + before, keysLeft_.end());
}

/// Sets up units until the bins are full. Answers how many from the first on are set up as a whole; the next one may
/// have begun.
std::size_t Pipeline::SetUpRound(const Round& round, bool alone)
{
    const std::size_t count = round.Size();
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
              const WorkUnit& work = round[unit];
              unitPlaces_[unit] =
                  SetUpUnit(batch_, work, unit == 0 ? from_ : UnitPlace{}, round.keys, mostPairs, bins_[unit]);
              const bool isWhole = unitPlaces_[unit].segment == work.segmentCount;
              unitStates_[unit] = isWhole ? UnitState::Whole : UnitState::Begun;
              const std::size_t offsets = work.isSorted ? 0 : bins_[unit].offsets.Size() * sizeof(std::uint32_t);
              bytes.fetch_add(isWhole ? BytesIn(bins_[unit]) + offsets : limits_.roundBytes + 1,
                              std::memory_order_relaxed);
          });
    return static_cast<std::size_t>(
        std::ranges::find_if(unitStates_, [](UnitState state) { return state != UnitState::Whole; }) -
        unitStates_.begin());
}

/// Whether the threads' room to sort stays within a round's bytes.
bool Pipeline::CanSort(const Round& round) const
{
    const auto sorted = std::span{bins_}.subspan(round.inOrder.size(), round.sorted.size());
    return MostToSort(sorted) * TileSort::BytesPerPrimitive * sorts_.size() <= limits_.roundBytes;
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
    held += planner_.HeldBytes();
    held += HeldBy(bins_) + HeldBy(unitStates_) + HeldBy(unitPlaces_) + HeldBy(sorts_) + HeldBy(keysLeft_);
    for (const Bins& bins : bins_)
        held += bins.HeldBytes();
    for (const TileSort& sort : sorts_)
        held += sort.HeldBytes();
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

void Pipeline::DrawRound(const TileInput& input, bool alone, bool isLast)
{
    if (input.inOrder.empty() && input.sorted.empty())
        return;
    const TileOutput output = OutputOf(isLast);
    std::uint64_t pixels = 0;
    for (const std::span<const Bins> list : {input.inOrder, input.sorted})
        for (const Bins& bins : list)
            pixels += bins.coveredPixels;
    for (TileSort& sort : sorts_)
        sort.Reserve(MostToSort(input.sorted));
    Share(batch_.tileCount, alone && pixels < SmallPixelCount,
          [&](std::size_t tile, int worker)
          {
              const auto thread = static_cast<std::size_t>(worker);
              DrawTile(batch_, input, static_cast<std::uint32_t>(tile), output, scratch_[thread], sorts_[thread]);
          });
    TrimBins();
}

} // namespace lumora::rgb
