// Averages that a driver takes while it draws, against a whole picture that is averaged afterwards.
#include "platform/drivers/Averaging.h"
#include "platform/drivers/TestCanvas.h"
#include "platform/drivers/TestMeshes.h"
#include "platform/drivers/rgb/RgbDriver.h"

#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace lumora::test
{

namespace
{

constexpr std::uint32_t Unwritten = 0x00ABCDEF;

/// One of two drivers that are told the same. The other one draws everything at once and has its target averaged.
struct Drawing
{
    Drawing(const RgbOptions& options, int width, int height, int factor)
        : driver(MakeRgbDriver(options)), canvas(width, height, Unwritten),
          averages(width / factor + 1, height / factor + 1, Unwritten)
    {
        driver->SetTarget(canvas.View());
    }

    std::unique_ptr<Driver> driver;
    Canvas canvas;
    Canvas averages;
};

class Pair
{
public:
    Pair(const RgbOptions& options, int width, int height, int factor)
        : bounds_{0, 0, width, height}, factor_(factor), tested_(options, width, height, factor),
          whole_({1, false, SimdLevel::Plain}, width, height, factor)
    {
    }

    const PixelRect& Bounds() const { return bounds_; }

    void Clear(ClearParts parts, const PixelRect& area, std::uint32_t color)
    {
        tested_.driver->Clear(parts, area, color);
        whole_.driver->Clear(parts, area, color);
    }

    void Draw(const std::vector<DrawItem>& items, Transparency transparency)
    {
        PassState pass = PerspectivePass(bounds_.right, bounds_.bottom, {.eye = {0, 0.5, -4}, .field = 0.7});
        pass.transparency = transparency;
        const std::vector<LightState> lights{AmbientLight(0.2F), DirectionalLight({0, 0, 1})};
        pass.lights = lights;
        for (Driver* driver : {tested_.driver.get(), whole_.driver.get()})
        {
            driver->Begin(pass);
            for (const DrawItem& item : items)
                driver->Draw(item);
            driver->End();
        }
    }

    void EndPicture()
    {
        tested_.driver->FinishLater();
        whole_.driver->Finish();
    }

    void ExpectSameAverages()
    {
        const bool isDone = tested_.driver->FinishAveraged(tested_.averages.View(), factor_);
        BlockAverager averager{Crew::Of(1), SimdLevel::Plain};
        if (!isDone)
        {
            tested_.driver->Finish();
            averager.Average(tested_.canvas.View(), factor_, tested_.averages.View());
        }
        whole_.driver->Finish();
        averager.Average(whole_.canvas.View(), factor_, whole_.averages.View());
        EXPECT_EQ(CountDifferent(tested_.averages, whole_.averages), 0);
        EXPECT_FALSE(tested_.averages.IsMarginTouched());
    }

    /// What a host draws by hand the drivers know nothing of: they may not take averages from before.
    void PaintByHand(std::uint32_t color)
    {
        ExpectSameTarget();
        for (Drawing* drawing : {&tested_, &whole_})
            drawing->canvas.View().Row(0)[0] = color;
        EXPECT_FALSE(tested_.driver->FinishAveraged(tested_.averages.View(), factor_));
    }

    void ExpectSameTarget()
    {
        tested_.driver->Finish();
        whole_.driver->Finish();
        EXPECT_EQ(CountDifferent(tested_.canvas, whole_.canvas), 0);
    }

    bool IsTargetUntouched() const { return tested_.canvas.CountNot(Unwritten) == 0; }

private:
    PixelRect bounds_;
    int factor_;
    Drawing tested_;
    Drawing whole_;
};

constexpr Transparency AnyTransparency[] = {Transparency::Stippled, Transparency::Blended, Transparency::Sorted};

/// Anything that a caller may do next.
void TakeRandomStep(Pair& pair, const std::vector<DrawItem>& items, std::mt19937& random)
{
    const auto below = [&](int end) { return static_cast<int>(random() % static_cast<unsigned>(end)); };
    const PixelRect part{below(100), below(100), 40 + below(200), 40 + below(200)};
    const std::uint32_t color = static_cast<std::uint32_t>(random());
    switch (below(11))
    {
    case 0:
    case 1:
        return pair.Clear({true, true}, pair.Bounds(), color);
    case 2:
        return pair.Clear({below(2) == 0, below(2) == 0}, below(2) == 0 ? part : pair.Bounds(), color);
    case 3:
        return pair.EndPicture();
    case 4:
        return pair.ExpectSameTarget();
    case 5:
    case 6:
        return pair.ExpectSameAverages();
    case 7:
        return pair.PaintByHand(color);
    default:
        const std::size_t first = static_cast<std::size_t>(below(3));
        return pair.Draw({items.begin() + static_cast<std::ptrdiff_t>(first), items.end()}, AnyTransparency[below(3)]);
    }
}

TEST(AveragedFrames, are_those_of_the_whole_picture_whatever_was_done_before)
{
    const std::vector<DrawItem> items{Item(Confetti(1000, 3, 0.6F, 0xFF, 1)), Item(Confetti(300, 2, 1.2F, 0x70, 2)),
                                      Item(Sphere(1, 20, 20, 0xFFB09070)), Item(Sphere(1.3F, 20, 20, 0x80FFFFFF))};
    std::mt19937 random{11}; // NOLINT: the same steps every time
    for (const SimdLevel level : AvailableSimdLevels())
        for (const int threads : {1, 3})
            for (const int factor : level == SimdLevel::Plain ? std::vector{1, 2, 3, 4, 8, 16} : std::vector{2, 4})
            {
                const int width = 150 + static_cast<int>(random() % 150);
                const int height = 130 + static_cast<int>(random() % 130);
                SCOPED_TRACE(testing::Message() << "level " << static_cast<int>(level) << ", threads " << threads
                                                << ", factor " << factor << ", " << width << " by " << height);
                Pair pair{{threads, false, level}, width, height, factor};
                for (int step = 0; step < 30 && !testing::Test::HasFailure(); ++step)
                    TakeRandomStep(pair, items, random);
                pair.ExpectSameAverages();
                pair.ExpectSameTarget();
            }
}

TEST(AveragedFrames, leave_the_target_alone_until_it_is_asked_for)
{
    Pair pair{{}, 300, 200, 4};
    for (const std::uint32_t alpha : {0x80U, 0xFFU})
    {
        pair.Clear({true, true}, pair.Bounds(), 0x102030);
        pair.Draw({Item(Cube(0.8F)), Item(Cube(1, alpha))}, Transparency::Sorted);
        pair.EndPicture();
        pair.ExpectSameAverages();
        EXPECT_TRUE(pair.IsTargetUntouched());
    }
    // Otherwise pictures that are drawn over each other would be kept for ever.
    pair.Draw({Item(Cube(0.5F))}, Transparency::Sorted);
    pair.ExpectSameAverages();
    EXPECT_FALSE(pair.IsTargetUntouched());
    pair.ExpectSameTarget();
}

TEST(AveragedFrames, let_go_of_their_own_meshes_only_when_something_is_drawn_over_them)
{
    Canvas canvas{128, 128};
    Canvas averages{32, 32};
    const std::unique_ptr<Driver> driver = MakeRgbDriver();
    const PassState pass = PerspectivePass(128, 128, {.eye = {0, 0.5, -4}, .field = 0.7});
    const auto draw = [&](DrawItem item)
    {
        driver->Begin(pass);
        driver->Draw(item);
        driver->End();
        return std::weak_ptr{std::exchange(item.mesh, nullptr)};
    };
    driver->SetTarget(canvas.View());
    driver->Clear({true, true}, canvas.View().Bounds(), 0);
    const auto below = draw(Item(Cube(1)));
    ASSERT_TRUE(driver->FinishAveraged(averages.View(), 4));
    EXPECT_FALSE(below.expired());
    const auto above = draw(Item(Cube(0.5F)));
    EXPECT_TRUE(below.expired());
    EXPECT_FALSE(above.expired());
    driver->Finish();
    EXPECT_TRUE(above.expired());
}

TEST(AveragedFrames, may_be_too_large_to_be_drawn_at_once)
{
    // More vertices than one batch takes.
    const DrawItem heavy = Item(Confetti(360000, 3, 0.02F, 0xFF, 3));
    const DrawItem glass = Item(Cube(1, 0x80));
    for (const std::vector<DrawItem>& items : {std::vector{heavy, heavy}, {heavy, glass}})
    {
        Pair pair{{}, 150, 130, 2};
        pair.Clear({true, true}, pair.Bounds(), 0x102030);
        pair.Draw(items, Transparency::Sorted);
        pair.ExpectSameAverages();
        pair.ExpectSameTarget();
    }
}

} // namespace

} // namespace lumora::test
