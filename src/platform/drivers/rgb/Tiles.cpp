#include "platform/drivers/rgb/Tiles.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace lumora::rgb
{

void DepthStore::Reset(std::uint32_t tileCount)
{
    depths_.Renew(std::size_t{tileCount} * TilePixels);
    blocks_.Renew(std::size_t{tileCount} * BlocksPerTile);
    isClear_.Renew(tileCount);
    std::fill_n(isClear_.Data(), tileCount, std::uint8_t{1});
}

namespace
{

/// One tile while it is drawn. A clear of the whole tile costs nothing until something is drawn over it.
class TilePainter
{
public:
    TilePainter(const Batch& batch, std::uint32_t tile, const TileOutput& output, TileScratch& scratch)
        : batch_(batch), output_(output),
          isDepthClear_(output.depth != nullptr ? output.depth->IsClear(tile) : scratch.isDepthClear),
          view_{scratch.colors, output.depth != nullptr ? output.depth->Depths(tile) : scratch.depths,
                output.depth != nullptr ? output.depth->BlockFarthest(tile) : scratch.blockFarthest,
                static_cast<int>(tile) % batch.tilesPerRow * TileSize,
                static_cast<int>(tile) / batch.tilesPerRow * TileSize},
          bounds_(Intersection(output.target.Bounds(),
                               {view_.left, view_.top, view_.left + TileSize, view_.top + TileSize}))
    {
    }

    void Draw(const Bins& bins, std::uint32_t first, std::uint32_t end)
    {
        const std::uint16_t* references = bins.references.Data();
        while (first < end)
        {
            const std::uint32_t number = bins.records[references[first]].state;
            const std::uint32_t last = bins.hasOneState ? end : EndOfRun(bins, first, end);
            const DrawState& state = batch_.states[number];
            if (state.primitive == Primitive::Clear)
            {
                Clear(state);
            }
            else
            {
                Draw({bins.local, bins.records.Data()}, number, references + first, last - first);
            }
            first = last;
        }
    }

    void DrawSorted(std::span<const Bins> bins, std::span<const SortedRecord> order)
    {
        Record together[MostTogether];
        std::size_t count = 0;
        const VertexBlocks* blocks = nullptr;
        for (std::size_t i = 0; i < order.size(); ++i)
        {
            constexpr std::size_t Ahead = 24; // they lie all over the bins
            if (i + Ahead < order.size())
                __builtin_prefetch(&bins[order[i + Ahead].Bins()].records[order[i + Ahead].Record()]);
            const SortedRecord& next = order[i];
            const Bins& from = bins[next.Bins()];
            const Record& record = from.records[next.Record()];
            const VertexBlocks* its = record.IsLocal() ? &from.local : &batch_.vertices;
            if (count == MostTogether || (count != 0 && (blocks != its || record.state != together[0].state)))
            {
                Draw({*blocks, together}, together[0].state, InOrder.data(), count);
                count = 0;
            }
            blocks = its;
            together[count++] = record;
        }
        if (count != 0)
            Draw({*blocks, together}, together[0].state, InOrder.data(), count);
    }

    void Finish() const
    {
        if (output_.takesColors)
            Store();
        if (output_.averages.pixels != nullptr)
            Average();
    }

private:
    static constexpr std::size_t MostTogether = 256; ///< sorted primitives
    static constexpr auto InOrder = []
    {
        std::array<std::uint16_t, MostTogether> numbers{};
        std::iota(numbers.begin(), numbers.end(), std::uint16_t{0});
        return numbers;
    }();

    void Draw(const Primitives& primitives, std::uint32_t number, const std::uint16_t* references, std::size_t count)
    {
        LoadColors();
        FillDepth();
        const DrawState& state = batch_.states[number];
        state.drawRun(view_, batch_, primitives, state, references, count);
    }

    static std::uint32_t EndOfRun(const Bins& bins, std::uint32_t first, std::uint32_t end)
    {
        const std::uint32_t state = bins.records[bins.references[first]].state;
        std::uint32_t last = first + 1;
        while (last < end && bins.records[bins.references[last]].state == state)
            ++last;
        return last;
    }

    enum class Colors
    {
        Untouched, ///< in the target
        Cleared,   ///< all clearColor_
        Loaded,    ///< in the tile
    };

    void Store() const
    {
        if (colors_ == Colors::Untouched)
            return;
        for (int y = bounds_.top; y < bounds_.bottom; ++y)
        {
            std::uint32_t* row = output_.target.Row(y) + bounds_.left;
            if (colors_ == Colors::Cleared)
                std::fill_n(row, bounds_.Width(), clearColor_);
            else
                std::copy_n(view_.colors + (y - view_.top) * TileSize, bounds_.Width(), row);
        }
    }

    /// Tiles begin and end between blocks, so that none needs its neighbours.
    void Average() const
    {
        const int factor = output_.factor;
        const int left = bounds_.left / factor;
        const int count = std::min(bounds_.right / factor, output_.averages.width) - left;
        const int bottom = std::min(bounds_.bottom / factor, output_.averages.height);
        if (count < 1)
            return;
        const bool isLoaded = colors_ == Colors::Loaded;
        const std::uint32_t* source = isLoaded ? view_.colors : output_.target.Row(bounds_.top) + bounds_.left;
        const std::ptrdiff_t pitch = isLoaded ? TileSize : output_.target.pitch;
        for (int y = bounds_.top / factor; y < bottom; ++y, source += factor * pitch)
        {
            std::uint32_t* const row = output_.averages.Row(y) + left;
            if (colors_ == Colors::Cleared)
                std::fill_n(row, count, clearColor_ & 0xFFFFFF);
            else
                output_.averagingKernels.Average(factor, source, pitch, count, row);
        }
    }

    void Clear(const DrawState& state)
    {
        const PixelRect area = Intersection(state.area, bounds_);
        const bool isAll = area == bounds_;
        if (state.clear.color && isAll)
        {
            colors_ = Colors::Cleared;
            clearColor_ = state.clearColor;
        }
        else if (state.clear.color)
        {
            LoadColors();
            FillRows(view_.colors, area, state.clearColor);
        }
        if (state.clear.depth && isAll)
            isDepthClear_ = 1;
        else if (state.clear.depth && isDepthClear_ == 0)
            ClearDepthPart(area);
    }

    void ClearDepthPart(const PixelRect& area)
    {
        FillRows(view_.depths, area, FarthestDepth);
        for (int y = (area.top - view_.top) >> BlockShift; y <= (area.bottom - 1 - view_.top) >> BlockShift; ++y)
            for (int x = (area.left - view_.left) >> BlockShift; x <= (area.right - 1 - view_.left) >> BlockShift; ++x)
                view_.blockFarthest[y * BlocksPerRow + x] = FarthestDepth;
    }

    template<typename T>
    void FillRows(T* tile, const PixelRect& area, T value) const
    {
        for (int y = area.top; y < area.bottom; ++y)
            std::fill_n(tile + (y - view_.top) * TileSize + area.left - view_.left, area.Width(), value);
    }

    void LoadColors()
    {
        if (colors_ == Colors::Cleared)
            std::fill_n(view_.colors, TilePixels, clearColor_);
        else if (colors_ == Colors::Untouched)
            for (int y = bounds_.top; y < bounds_.bottom; ++y)
                std::copy_n(output_.target.Row(y) + bounds_.left, bounds_.Width(),
                            view_.colors + (y - view_.top) * TileSize);
        colors_ = Colors::Loaded;
    }

    void FillDepth()
    {
        if (isDepthClear_ == 0)
            return;
        std::fill_n(view_.depths, TilePixels, FarthestDepth);
        std::fill_n(view_.blockFarthest, BlocksPerTile, FarthestDepth);
        isDepthClear_ = 0;
    }

    const Batch& batch_;
    const TileOutput& output_;
    std::uint8_t& isDepthClear_;
    TileView view_;
    PixelRect bounds_;
    Colors colors_ = Colors::Untouched;
    std::uint32_t clearColor_ = 0;
};

} // namespace

void DrawTile(const Batch& batch, const TileInput& input, std::uint32_t tile, const TileOutput& output,
              TileScratch& scratch, TileSort& sort)
{
    TilePainter painter{batch, tile, output, scratch};
    for (const Bins& bins : input.inOrder)
        painter.Draw(bins, bins.offsets[tile], bins.offsets[tile + 1]);
    if (!input.sorted.empty())
        painter.DrawSorted(input.sorted, sort.Sort(input.sorted, tile));
    painter.Finish();
}

} // namespace lumora::rgb
