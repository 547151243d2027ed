// The exposed picture: what lies behind it, what a host draws on it, how it gets to the screen, and what changes under
// it.
#include "platform/directdraw/DeviceContext.h"
#include "platform/drivers/Averaging.h"
#include "support/TemporaryFolder.h"
#include "viewport/LiveControl.h"

#include <chrono>
#include <filesystem>
#include <thread>

using namespace lumora;
using namespace lumora::test;

namespace
{

constexpr std::uint32_t FullRed = 0xFF0000;

// A red square that covers 30 to 70 each way.
std::shared_ptr<Frame> RedSquareScene()
{
    const auto scene = AmbientScene(1);
    scene->AddVisual(Square(0, 0, 10, 2, 0xFFFF0000));
    return scene;
}

bool IsInSquare(int x, int y)
{
    return x > 30 && x < 70 && y > 30 && y < 70;
}

/// A colour for each place.
std::uint32_t Numbered(int x, int y)
{
    return static_cast<std::uint32_t>((x * 5 & 255) << 8 | (y * 3 & 255));
}

std::shared_ptr<Picture> NumberedPicture(int width, int height)
{
    const auto bitmap = std::make_shared<Bitmap>(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            bitmap->Pixels().Row(y)[x] = 0xFF000000 | Numbered(x, y);
    return std::make_shared<Picture>(bitmap);
}

/// How many of the window's pixels are not as `expected(x, y)` says.
int CountWrong(LiveControl& control, const std::function<std::uint32_t(int, int)>& expected)
{
    int wrong = 0;
    for (int y = 0; y < Side; ++y)
        for (int x = 0; x < Side; ++x)
            wrong += control.PixelAt(x, y) != expected(x, y);
    return wrong;
}

#ifdef LUMORA_PICTURES

class Background : public testing::Test
{
protected:
    Background() { SavePicture(path, NumberedPicture(40, 25)->Handle()->Pixels()); }

    tests::TemporaryFolder folder;
    const std::string path = folder / "background.png";
};

TEST_F(Background, lies_behind_the_scene_at_every_sampling)
{
    for (const auto antiAlias : {tdlNone, tdl2X, tdl4X})
        for (const bool stretched : {true, false})
        {
            auto bag = ExposedSettings(antiAlias);
            bag.Set("BackgroundTexture", path);
            bag.Set("BackgroundTextureStretch", stretched);
            LiveControl control{bag};
            control->SetScene(RedSquareScene());
            const auto expected = [&](int x, int y) -> std::uint32_t
            {
                if (IsInSquare(x, y))
                    return FullRed;
                if (x >= 30 && x <= 70 && y >= 30 && y <= 70)
                    return control.PixelAt(x, y); // edges of the square
                if (stretched)
                    return Numbered((2 * x + 1) * 40 / (2 * Side), (2 * y + 1) * 25 / (2 * Side));
                return x < 40 && y < 25 ? Numbered(x, y) : 0;
            };
            for (const bool accumulate : {false, true, true}) // which it covers
            {
                control->SetAccumulate(accumulate);
                control->RenderScene();
                EXPECT_EQ(CountWrong(control, expected), 0) << antiAlias << stretched << accumulate;
            }
            control->SetAccumulate(false);
            control->SetCoolMode(1);
            control->RenderScene();
            EXPECT_EQ(control.PixelAt(5, 5), 0U) << "cool modes have none";
            control->SetCoolMode(0);
            control->SetBackgroundTexture("");
            control->RenderScene();
            EXPECT_EQ(control.PixelAt(5, 5), 0U);
        }
}

TEST_F(Background, that_cannot_be_loaded_is_none_and_no_error)
{
    folder.Write("broken.png", folder.Read("background.png").substr(0, 60));
    LiveControl control{ExposedSettings()};
    control->SetScene(RedSquareScene());
    for (const std::string& name : {folder / "missing.png", folder / "broken.png", folder / ""})
    {
        control->SetBackgroundTexture(path);
        control->RenderScene();
        EXPECT_EQ(control.PixelAt(99, 99), Numbered(39, 24));
        control->SetBackgroundTexture(name);
        control->RenderScene();
        EXPECT_EQ(control->BackgroundTexture(), name);
        EXPECT_EQ(
            CountWrong(control, [](int x, int y) { return x >= 30 && x < 70 && y >= 30 && y < 70 ? FullRed : 0; }), 0);
    }
}

#endif

TEST(PreRenderedImage, stands_in_place_of_the_scene_without_an_event)
{
    for (const auto antiAlias : {tdlNone, tdl2X, tdl4X})
    {
        LiveControl control{ExposedSettings(antiAlias)};
        control->SetScene(RedSquareScene());
        control->RenderScene();
        int events = 0;
        control->UpdatePositions.Connect([&] { ++events; });
        control->DDSurfaceAvailable.Connect([&] { ++events; });
        control->DisplayPreRenderedImage(NumberedPicture(60, 140)); // narrower and higher than the control
        EXPECT_EQ(events, 0);
        EXPECT_EQ(CountWrong(control, [](int x, int y) { return x < 60 ? Numbered(x, y) : 0; }), 0) << antiAlias;
        control->SetScene(AmbientScene(1));
        control->SetAccumulate(true); // clears
        control->DisplayPreRenderedImage(NumberedPicture(Side, Side));
        control->RenderScene();
        EXPECT_EQ(CountWrong(control, Numbered), 0) << "with nothing drawn over it, at " << antiAlias;
    }
}

TEST(PreRenderedImage, that_cannot_be_shown_changes_nothing)
{
    for (const char* const why : {"window mode", "nothing", "no pixels", "locked", "no surface to be had", "halted"})
    {
        const std::string reason{why};
        LiveControl control{reason == "window mode" ? UsualSettings() : ExposedSettings()};
        control->SetScene(RedSquareScene());
        control->RenderScene();
        const auto before = control.Picture();
        auto picture = NumberedPicture(50, 50);
        if (reason == "nothing")
            picture = nullptr;
        if (reason == "no pixels")
            picture = std::make_shared<Picture>(nullptr);
        if (reason == "locked")
            control->DirectDrawSurface()->Lock();
        if (reason == "no surface to be had")
            control.Host().FailNext("DirectDraw.CreateSurface", 1, error::OutOfMemory);
        if (reason == "halted")
            control->Terminate();
        EXPECT_NO_THROW(control->DisplayPreRenderedImage(picture)) << why;
        EXPECT_EQ(control.Picture(), before) << why;
        if (reason == "locked")
            control->DirectDrawSurface()->Unlock();
    }
}

TEST(ExposedSurface, changes_the_visible_part_of_its_window_and_nothing_else)
{
    const auto screen = std::make_shared<headless::VirtualScreen>(300, 200);
    const auto host =
        std::make_shared<headless::HeadlessHost>(StandardDrivers(), screen, PixelRect{20, 20, 20 + Side, 20 + Side});
    const PixelRect above{90, 60, 130, 110};
    const auto cover = headless::VirtualWindow::Create(screen, above);
    for (const auto antiAlias : {tdlNone, tdl2X})
    {
        LiveControl control{ExposedSettings(antiAlias), host};
        int averages = 0;
        control->AntiAliasSurfaceAvailable.Connect([&] { ++averages; });
        control->DDSurfaceAvailable.Connect(
            [&]
            {
                const auto surface = control->DirectDrawSurface();
                const auto context = surface->GetDC();
                for (int y = 0; y < Side; ++y)
                    for (int x = 0; x < Side; ++x)
                        context->FillRectangle({x * antiAlias, y * antiAlias, (x + 1) * antiAlias, (y + 1) * antiAlias},
                                               (Numbered(x, y) & 0xFF00) | (Numbered(x, y) & 255) << 16);
                surface->ReleaseDC(context);
            });
        for (const auto& [left, top] : {std::pair{20, 20}, {60, 40}, {-45, 120}, {250, -60}, {-100, 10}, {500, 500}})
        {
            host->MoveWindow(left, top);
            const auto before = screen->Pixels();
            const std::vector<std::uint32_t> old(before.pixels, before.pixels + 300 * 200);
            control->RenderScene();
            int wrong = 0;
            for (int y = 0; y < 200; ++y)
                for (int x = 0; x < 300; ++x)
                {
                    const bool covered = x >= above.left && x < above.right && y >= above.top && y < above.bottom;
                    const bool inside = x >= left && x < left + Side && y >= top && y < top + Side;
                    wrong += screen->PixelAt(x, y) != (inside && !covered
                                                           ? Numbered(x - left, y - top)
                                                           : old[static_cast<std::size_t>(y * 300 + x)] & 0xFFFFFF);
                }
            EXPECT_EQ(wrong, 0) << "at " << left << ", " << top;
        }
        EXPECT_EQ(averages, antiAlias == tdlNone ? 0 : 6);
        host->MoveWindow(20, 20);
    }
}

// Everything that may be done to the surfaces at a bad moment.
struct Change
{
    const char* name;
    std::function<void(LiveControl&)> make;
};

std::vector<Change> Changes(const std::string& background)
{
    return {
        {"cover", [](LiveControl& c) { c->SetExposeDDSurface(false); }},
        {"expose", [](LiveControl& c) { c->SetExposeDDSurface(true); }},
        {"AntiAlias 1", [](LiveControl& c) { c->SetAntiAlias(tdlNone); }},
        {"AntiAlias 2", [](LiveControl& c) { c->SetAntiAlias(tdl2X); }},
        {"background", [background](LiveControl& c) { c->SetBackgroundTexture(background); }},
        {"no background", [](LiveControl& c) { c->SetBackgroundTexture(""); }},
        {"resize", [](LiveControl& c) { c.Host().ResizeWindow(80, 60); }},
        {"border",
         [](LiveControl& c)
         {
             c->SetBorderStyle(tdlFixedSingle);
             c->OnResize();
         }},
        {"accumulate", [](LiveControl& c) { c->SetAccumulate(true); }},
        {"picture", [](LiveControl& c) { c->DisplayPreRenderedImage(NumberedPicture(9, 9)); }},
        {"cull", [](LiveControl& c) { c->SetCullMethod(D3DCULL_CW); }},
        {"draw again", [](LiveControl& c) { c->RenderScene(); }},
    };
}

// Whatever was done and whenever: once drawn again, the picture is that of a control that was made so from the start.
TEST(ExposedSurface, may_be_changed_from_within_any_event_of_the_picture)
{
    const tests::TemporaryFolder folder;
    const std::string background = folder / "background.png";
#ifdef LUMORA_PICTURES
    SavePicture(background, NumberedPicture(40, 25)->Handle()->Pixels());
#endif
    const auto connect = [](LiveControl& control, int event, const std::function<void()>& handler)
    {
        if (event == 0)
            control->UpdatePositions.Connect(handler);
        if (event == 1)
            control->CameraMoved.Connect([handler](auto&...) { handler(); });
        if (event == 2)
            control->DDSurfaceAvailable.Connect(handler);
        if (event == 3)
            control->AntiAliasSurfaceAvailable.Connect(handler);
    };
    for (const Change& change : Changes(background))
        for (const auto antiAlias : {tdlNone, tdl2X})
            for (int event = 0; event < 4; ++event)
            {
                SCOPED_TRACE(testing::Message() << change.name << " in event " << event << " at " << antiAlias);
                LiveControl control{ExposedSettings(antiAlias)};
                control->SetScene(RedSquareScene());
                bool once = true;
                connect(control, event,
                        [&]
                        {
                            if (std::exchange(once, false))
                                change.make(control);
                        });
                control->OnResize(); // so that CameraMoved is raised
                ASSERT_NO_THROW(control->RenderScene());
                control->SetAccumulate(false);
                ASSERT_NO_THROW(control->RenderScene());

                auto bag = ExposedSettings(control->AntiAlias());
                bag.Set("ExposeDDSurface", control->ExposeDDSurface());
                bag.Set("BackgroundTexture", control->BackgroundTexture());
                bag.Set("CullMethod", std::int32_t{control->CullMethod()});
                bag.Set("BorderStyle", std::int32_t{control->BorderStyle()});
                const PixelRect client = control.Host().ControlArea().ClientRect();
                LiveControl fresh{bag, MakeHost(client.Width(), client.Height())};
                fresh->SetScene(RedSquareScene());
                fresh->OnResize();
                fresh->RenderScene();
                EXPECT_EQ(control.Picture(), fresh.Picture());
                EXPECT_EQ(control->DirectDrawSurface() == nullptr, fresh->DirectDrawSurface() == nullptr);
                EXPECT_EQ(control->AntiAliasSurface() == nullptr, control->AntiAlias() == tdlNone);
            }
}

// How many averages of the large surface are not those of the scene with the red square.
int CountWrongAverages(const PixelView& large, int factor)
{
    std::vector<std::uint32_t> averages(Side * Side);
    BlockAverager{}.Average(large, factor, {averages.data(), Side, Side, Side});
    int wrong = 0;
    for (int y = 0; y < Side; ++y)
        for (int x = 0; x < Side; ++x)
        {
            const std::uint32_t color = averages[static_cast<std::size_t>(y * Side + x)];
            const bool outside = x < 30 || x > 70 || y < 30 || y > 70;
            wrong += (IsInSquare(x, y) && color != FullRed) || (outside && color != 0);
        }
    return wrong;
}

TEST(ExposedSurface, whose_pixels_somebody_holds_is_not_taken_away)
{
    for (const auto& [locked, antiAlias] : {std::pair{true, tdlNone}, {false, tdlNone}, {true, tdl2X}, {false, tdl4X}})
    {
        LiveControl control{ExposedSettings(antiAlias)};
        control->SetScene(AmbientScene(1));
        control->RenderScene();
        const auto surface = control->DirectDrawSurface();
        std::shared_ptr<DeviceContext> context;
        if (locked)
            surface->Lock();
        else
            context = surface->GetDC();
        control->SetScene(RedSquareScene());
        EXPECT_EQ(FailureOf([&] { control->RenderScene(); }).Number(), error::DDSurfaceBusy);
        EXPECT_EQ(CountWrongAverages(surface->Pixels(), antiAlias), 0) << "who holds the pixels has the picture";
        EXPECT_EQ(FailureOf([&] { control->SetExposeDDSurface(false); }).Number(), error::DDSurfaceBusy);
        control.Host().ResizeWindow(60, 60);
        EXPECT_EQ(FailureOf([&] { control->RenderScene(); }).Number(), error::DDSurfaceBusy);
        EXPECT_EQ(control->DirectDrawSurface(), surface);
        if (locked)
            surface->Unlock();
        else
            surface->ReleaseDC(context);
        control->RenderScene();
        EXPECT_EQ(control->DirectDrawSurface()->Width(), 60 * antiAlias) << "the resize was only put off";
        EXPECT_TRUE(control->ExposeDDSurface());
    }
}

TEST(ExposedSurface, that_is_locked_outlives_its_control)
{
    PixelView pixels;
    std::weak_ptr<Surface> surface;
    {
        LiveControl control{ExposedSettings()};
        control->SetScene(RedSquareScene());
        control->DDSurfaceAvailable.Connect(
            [&]
            {
                surface = control->DirectDrawSurface();
                pixels = control->DirectDrawSurface()->Lock();
                control->Terminate();
            });
        EXPECT_EQ(FailureOf([&] { control->RenderScene(); }).Number(), error::Halted);
    }
    pixels.Row(pixels.height - 1)[pixels.width - 1] = FullRed;
    ASSERT_FALSE(surface.expired());
    surface.lock()->Unlock();
    EXPECT_TRUE(surface.expired());
}

TEST(ExposedSurface, that_is_averaged_is_whole_for_whoever_looks_whenever_that_is)
{
    using Look = std::function<void()>;
    const std::pair<const char*, std::function<void(LiveControl&, const Look&)>> moments[] = {
        {"its event", [](LiveControl& c, const Look& look) { c->DDSurfaceAvailable.Connect(look); }},
        {"the averages' event", [](LiveControl& c, const Look& look) { c->AntiAliasSurfaceAvailable.Connect(look); }},
        {"the next picture",
         [](LiveControl& c, const Look& look)
         {
             c->RenderScene();
             c->SetScene(AmbientScene(1));
             c->UpdatePositions.Connect(look);
         }},
        {"after accumulating",
         [](LiveControl& c, const Look& look)
         {
             c->RenderScene();
             c->SetAccumulate(true);
             c->RenderScene();
             c->SetScene(AmbientScene(1));
             c->RenderScene();
             look();
         }},
        {"after it was replaced",
         [](LiveControl& c, const Look& look)
         {
             c->RenderScene();
             c->SetAntiAlias(tdlNone);
             c->DDSurfaceAvailable.Connect(look);
         }},
        {"after the control",
         [](LiveControl& c, const Look& look)
         {
             c->RenderScene();
             c->Terminate();
             look();
         }},
    };
    for (const auto antiAlias : {tdl2X, tdl4X})
        for (const auto& [name, lookAt] : moments)
        {
            SCOPED_TRACE(testing::Message() << name << " at " << antiAlias);
            LiveControl control{ExposedSettings(antiAlias)};
            control->SetScene(RedSquareScene());
            const auto surface = control->DirectDrawSurface();
            control->RenderScene();
            EXPECT_EQ(
                CountWrong(control, [&](int x, int y) { return IsInSquare(x, y) ? FullRed : control.PixelAt(x, y); }),
                0);
            const PixelView unseen = surface->Pixels();
            EXPECT_TRUE(std::all_of(unseen.pixels, unseen.pixels + unseen.pitch * unseen.height,
                                    [](auto p) { return p == 0; }));
            int looks = 0;
            lookAt(control,
                   [&]
                   {
                       ++looks;
                       EXPECT_EQ(CountWrongAverages(surface->Lock(), antiAlias), 0);
                       surface->Unlock();
                   });
            if (control->ViewportState() != tdlHalted)
                control->RenderScene();
            EXPECT_EQ(looks, 1);
        }
}

std::ptrdiff_t CountEntries(const char* folder)
{
    const std::filesystem::directory_iterator entries{folder};
    return std::distance(begin(entries), end(entries));
}

TEST(ExposedSurface, a_hundred_rebuilds_leave_nothing_behind)
{
    LiveControl control{ExposedSettings(tdl2X)};
    control->SetScene(RedSquareScene());
    std::vector<std::weak_ptr<Object>> made;
    const auto rebuild = [&](int i)
    {
        control.Host().ResizeWindow(300 + i, 300);
        control->SetAntiAlias(i % 2 == 0 ? tdl2X : tdl4X);
        control->SetExposeDDSurface(i % 7 != 0);
        control->RenderScene();
        made.insert(made.end(), {control->DirectDraw(), control->DirectDrawSurface(), control->AntiAliasSurface()});
    };
    rebuild(1);
    rebuild(2); // the helper threads have started
    const auto threads = CountEntries("/proc/self/task");
    const auto files = CountEntries("/proc/self/fd");
    for (int i = 1; i <= 100; ++i)
        rebuild(i);
    // Helpers of a driver that has ended are joined before its successor's start; the system lists them a moment
    // longer.
    for (int i = 0; i < 10000 && CountEntries("/proc/self/task") > threads; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_LE(CountEntries("/proc/self/task"), threads);
    EXPECT_EQ(CountEntries("/proc/self/fd"), files);
    const auto alive = std::ranges::count_if(made, [](const auto& object) { return !object.expired(); });
    EXPECT_EQ(alive, 3);
    control->Terminate();
    for (const auto& object : made)
        EXPECT_TRUE(object.expired());
}

} // namespace
