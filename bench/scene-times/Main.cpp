// What scenes of many frames cost from the host's change to the finished picture, and how that grows.
//
// Usage: scene-times [--threads n] [--frames n] [--only text] [--most n]
#include "Scenes.h"
#include "platform/drivers/rgb/RgbDriver.h"
#include "platform/scenegraph/RMViewport.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

namespace
{

using namespace lumora;
using namespace lumora::bench;

constexpr int Width = 1280;
constexpr int Height = 720;

struct Options
{
    int threads = 0;
    int frames = 15; ///< measured for each line
    int most = 100000;
    std::string only;
};

double Now()
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// Passes everything on and keeps the time from Begin to End, which is what the driver takes to record a pass.
class TimedDriver final : public Driver
{
public:
    struct Seen
    {
        double recording = 0;
        PixelView target;
    };

    TimedDriver(std::unique_ptr<Driver> driver, Seen& seen) : driver_(std::move(driver)), seen_(seen) {}

    void SetTarget(const PixelView& target) override
    {
        seen_.target = target;
        driver_->SetTarget(target);
    }
    void Clear(ClearParts parts, const PixelRect& area, std::uint32_t color) override
    {
        driver_->Clear(parts, area, color);
    }
    void Begin(const PassState& pass) override
    {
        seen_.recording -= Now();
        driver_->Begin(pass);
    }
    void Draw(const DrawItem& item) override { driver_->Draw(item); }
    void End() override
    {
        driver_->End();
        seen_.recording += Now();
    }
    void Finish() override { driver_->Finish(); }

private:
    std::unique_ptr<Driver> driver_;
    Seen& seen_;
};

/// The stages of a frame, milliseconds.
enum Stage
{
    Moving,    ///< the host's calls
    Culling,   ///< world transforms, culling, lights, items: Render without the driver's part
    Recording, ///< the driver's part of Render
    Drawing,   ///< plan, place, light, set up and fill
    StageCount
};
using Times = std::array<double, StageCount>;

struct Load
{
    const char* name;
    SceneKind kind;
    bool (*moves)(int i) = nullptr; ///< which frames the host moves before each picture
    bool isUnseen = false;
};

class Stand
{
public:
    Stand(const Load& load, int threads) : load_(load), scene_(MakeScene(load.kind))
    {
        auto driver = std::make_unique<TimedDriver>(MakeRgbDriver({.threads = threads}), seen_);
        device_ = Device::FromClipper(std::move(driver), std::make_shared<Clipper>(), Width, Height);
        device_->SetRenderMode(load.kind.isGlass ? rendermode::BlendedTransparency | rendermode::SortedTransparency
                                                 : 0);
        const auto camera = Frame::Make(scene_.root);
        if (load.isUnseen)
            camera->SetOrientation(nullptr, {0, 0, -1}, {0, 1, 0});
        viewport_ = std::make_shared<RMViewport>(device_, camera, 0, 0, Width, Height);
        viewport_->SetField(0.4F);
    }

    Times Draw(int frame)
    {
        seen_.recording = 0;
        const double start = Now();
        Move(frame);
        const double moved = Now();
        viewport_->Clear(clearflags::Target | clearflags::Depth);
        viewport_->Render(scene_.root);
        const double rendered = Now();
        device_->Update();
        return {moved - start, rendered - moved - seen_.recording, seen_.recording, Now() - rendered};
    }

    /// Of the last picture: the same for any number of threads and any version that draws the same.
    std::uint32_t Checksum() const
    {
        std::uint32_t sum = 2166136261U;
        for (int y = 0; y < seen_.target.height; ++y)
            for (int x = 0; x < seen_.target.width; ++x)
                sum = (sum ^ seen_.target.Row(y)[x]) * 16777619U;
        return sum;
    }

private:
    // To and fro, so that the scene stays where it is.
    void Move(int frame)
    {
        const float way = frame % 2 == 0 ? 1e-4F : -1e-4F;
        for (int i = 0; i < load_.kind.visuals; ++i)
            if (load_.moves != nullptr && load_.moves(i))
                scene_.frames[static_cast<std::size_t>(i)]->AddTranslation(CombineType::After, way, 0, 0);
    }

    const Load& load_;
    BoxScene scene_;
    TimedDriver::Seen seen_;
    std::shared_ptr<Device> device_;
    std::shared_ptr<RMViewport> viewport_;
};

double Median(std::vector<double> times)
{
    std::ranges::nth_element(times, times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2));
    return times[times.size() / 2];
}

void Measure(const Load& load, const Options& options)
{
    Stand stand{load, options.threads};
    constexpr int WarmUp = 3;
    std::array<std::vector<double>, StageCount + 1> times;
    for (int frame = 0; frame < WarmUp + options.frames; ++frame)
    {
        const Times measured = stand.Draw(frame);
        if (frame < WarmUp)
            continue;
        double whole = 0;
        for (std::size_t stage = 0; stage < StageCount; ++stage)
        {
            times[stage].push_back(measured[stage]);
            whole += measured[stage];
        }
        times[StageCount].push_back(whole);
    }
    std::printf("%-26s %8d %8d", load.name, load.kind.visuals, load.kind.meshes);
    for (const auto& stage : times)
        std::printf(" %9.3f", Median(stage));
    std::printf(" %9.1f  %08x\n", Median(times[StageCount]) / load.kind.visuals * 1e6, stand.Checksum());
    std::fflush(stdout);
}

bool Always(int)
{
    return true;
}

bool OneOfThem(int i)
{
    return i == 7;
}

std::vector<Load> StandardLoads(int most)
{
    std::vector<Load> loads;
    for (int visuals = 10; visuals <= most; visuals *= 10)
    {
        loads.push_back({"flat seen", {.visuals = visuals}});
        loads.push_back({"flat seen, one moves", {.visuals = visuals}, OneOfThem});
        loads.push_back({"flat seen, all move", {.visuals = visuals}, Always});
        loads.push_back({"flat seen, own meshes", {.visuals = visuals, .meshes = visuals}});
        loads.push_back({"flat unseen", {.visuals = visuals}, nullptr, true});
        loads.push_back({"flat unseen, one moves", {.visuals = visuals}, OneOfThem, true});
        loads.push_back({"flat unseen, all move", {.visuals = visuals}, Always, true});
    }
    for (const Shape shape : {Shape::Tree, Shape::Chain})
    {
        const bool isTree = shape == Shape::Tree;
        loads.push_back({isTree ? "tree seen" : "chain seen", {shape, most}});
        loads.push_back({isTree ? "tree seen, root moves" : "chain seen, first moves", {shape, most}, [](int i) {
                             return i == 0;
                         }});
        loads.push_back({isTree ? "tree seen, all move" : "chain seen, all move", {shape, most}, Always});
    }
    for (const int looks : {10, 1000, 100000})
    {
        const int meshes = std::min(looks, most);
        loads.push_back({"materials", {.visuals = most, .meshes = meshes}});
        loads.push_back({"textures", {.visuals = most, .meshes = meshes, .textures = std::min(looks, 10000)}});
        loads.push_back({"glass", {.visuals = most, .meshes = meshes, .isGlass = true}});
    }
    return loads;
}

Options Parsed(int count, char** words)
{
    Options options;
    for (int i = 1; i + 1 < count; i += 2)
    {
        if (std::strcmp(words[i], "--threads") == 0)
            options.threads = std::atoi(words[i + 1]);
        else if (std::strcmp(words[i], "--frames") == 0)
            options.frames = std::max(1, std::atoi(words[i + 1]));
        else if (std::strcmp(words[i], "--most") == 0)
            options.most = std::max(10, std::atoi(words[i + 1]));
        else if (std::strcmp(words[i], "--only") == 0)
            options.only = words[i + 1];
    }
    return options;
}

} // namespace

int main(int count, char** words)
try
{
    const Options options = Parsed(count, words);
    std::printf("boxes of 12 triangles, 1280x720, medians, ms\n%-26s %8s %8s %9s %9s %9s %9s %9s %9s  %s\n", "scene",
                "visuals", "meshes", "move", "cull", "record", "draw", "whole", "ns each", "picture");
    for (const Load& load : StandardLoads(options.most))
        if (std::strstr(load.name, options.only.c_str()) != nullptr)
            Measure(load, options);
    return EXIT_SUCCESS;
}
catch (const std::exception& error)
{
    std::fprintf(stderr, "%s\n", error.what());
    return EXIT_FAILURE;
}
