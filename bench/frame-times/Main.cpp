// Frame times of the RGB driver beside those of Mesa's llvmpipe, and how they grow with triangles, pixels, visuals,
// threads and instruction sets.
//
// Usage: frame-times [--threads n] [--seconds s] [--only text] [--alone] [--no-growth] [file.obj ...]
#include "Painters.h"
#include "platform/drivers/rgb/RgbDriver.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

using namespace lumora::bench;

struct Options
{
    int threads = 0;
    double seconds = 3; ///< for each load
    bool growth = true;
    bool comparison = true;
    std::string only; ///< loads whose names hold this
    std::vector<std::string> files;
};

struct Load
{
    std::string name;
    Mesh mesh;
    View view;
};

double Milliseconds(Painter& painter, const View& view)
{
    const auto start = std::chrono::steady_clock::now();
    painter.Draw(view);
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double> times)
{
    std::ranges::nth_element(times, times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2));
    return times[times.size() / 2];
}

/// The part of pixels in which some channel differs by more than a rounding does.
double DifferentPart(Painter& a, Painter& b, const View& view)
{
    a.Draw(view);
    b.Draw(view);
    const std::vector<std::uint32_t> first = a.Pixels(view);
    const std::vector<std::uint32_t> second = b.Pixels(view);
    std::size_t different = 0;
    for (std::size_t i = 0; i < first.size(); ++i)
        for (int shift = 0; shift < 24; shift += 8)
        {
            const int difference =
                static_cast<int>((first[i] >> shift) & 0xFF) - static_cast<int>((second[i] >> shift) & 0xFF);
            if (std::abs(difference) > 8)
            {
                ++different;
                break;
            }
        }
    return static_cast<double>(different) / static_cast<double>(first.size());
}

/// Both draw the same turning mesh by turns, frame by frame.
void Compare(Painter& rgb, Painter* openGl, const Load& load, double seconds)
{
    View view = load.view;
    rgb.Load(load.mesh);
    if (openGl != nullptr)
        openGl->Load(load.mesh);
    std::vector<double> ours;
    std::vector<double> theirs;
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    for (int frame = 0; frame < 10 || std::chrono::steady_clock::now() < end; ++frame)
    {
        view.angle = 0.3 + 0.01 * frame;
        const double their = openGl != nullptr ? Milliseconds(*openGl, view) : 0;
        const double our = Milliseconds(rgb, view);
        if (frame < 3)
            continue; // buffers grow, shaders are compiled
        ours.push_back(our);
        theirs.push_back(their);
    }
    if (openGl == nullptr)
        std::printf("%-20s %9u %10.3f\n", load.name.c_str(), load.mesh->TriangleCount(), Median(ours));
    else
        std::printf("%-20s %9u %10.3f %10.3f %8.2f %10.3f%%\n", load.name.c_str(), load.mesh->TriangleCount(),
                    Median(theirs), Median(ours), Median(theirs) / Median(ours),
                    100 * DifferentPart(rgb, *openGl, view));
    std::fflush(stdout);
}

double Alone(Painter& rgb, View view, double seconds)
{
    std::vector<double> times;
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    for (int frame = 0; frame < 10 || std::chrono::steady_clock::now() < end; ++frame)
    {
        view.angle = 0.3 + 0.01 * frame;
        const double time = Milliseconds(rgb, view);
        if (frame >= 3)
            times.push_back(time);
    }
    return Median(times);
}

void PrintTriangles(Painter& rgb, double seconds)
{
    std::printf("\nrgb against triangles, 1280x720\n%12s %10s %16s\n", "triangles", "ms", "M triangles/s");
    for (const std::uint32_t triangles : {1000U, 3000U, 10000U, 30000U, 100000U, 300000U, 1000000U, 4000000U})
    {
        const Mesh mesh = Ring(triangles);
        rgb.Load(mesh);
        const double time = Alone(rgb, {}, seconds);
        std::printf("%12u %10.3f %16.1f\n", mesh->TriangleCount(), time, mesh->TriangleCount() / time / 1000);
    }
}

void PrintPixels(Painter& rgb, double seconds)
{
    std::printf("\nrgb against pixels, 48k triangles\n%12s %10s %16s\n", "size", "ms", "M pixels/s");
    rgb.Load(Ring(48000));
    constexpr int Sizes[][2] = {{320, 240}, {640, 480}, {1280, 720}, {1920, 1080}, {2560, 1440}, {3840, 2160}};
    for (const auto& [width, height] : Sizes)
    {
        const double time = Alone(rgb, {.width = width, .height = height}, seconds);
        std::printf("%6dx%-5d %10.3f %16.0f\n", width, height, time, width * height / time / 1000);
    }
}

void PrintVisuals(Painter& rgb, double seconds)
{
    std::printf("\nrgb against visuals, boxes of 12 triangles, and the same out of view\n%12s %10s %16s %10s\n",
                "visuals", "ms", "ns a visual", "unseen ms");
    rgb.Load(BoxGrid(1));
    for (const int visuals : {1, 10, 100, 1000, 10000, 100000})
    {
        const double time = Alone(rgb, {.visuals = visuals}, seconds);
        const double unseen = Alone(rgb, {.visuals = visuals, .isUnseen = true}, seconds);
        std::printf("%12d %10.3f %16.1f %10.3f\n", visuals, time, time / visuals * 1e6, unseen);
    }
}

void PrintThreadsAndLevels(double seconds)
{
    constexpr const char* LevelNames[] = {"best", "plain", "sse4", "avx2", "avx512", "neon"};
    std::printf("\nrgb against threads and instruction sets, 48k and 871k triangles\n%12s %8s %10s %10s\n", "set",
                "threads", "48k ms", "871k ms");
    const Mesh small = Ring(48000);
    const Mesh large = Ring(871000);
    for (const lumora::SimdLevel level : lumora::AvailableSimdLevels())
        for (const int threads : {1, 2})
        {
            const std::unique_ptr<Painter> rgb = MakeRgbPainter(threads, level);
            rgb->Load(small);
            const double smallTime = Alone(*rgb, {}, seconds);
            rgb->Load(large);
            std::printf("%12s %8d %10.3f %10.3f\n", LevelNames[static_cast<int>(level)], threads, smallTime,
                        Alone(*rgb, {}, seconds));
        }
}

void PrintGrowth(Painter& rgb, double seconds)
{
    PrintTriangles(rgb, seconds);
    PrintPixels(rgb, seconds);
    PrintVisuals(rgb, seconds);
    PrintThreadsAndLevels(seconds);
}

Options Parsed(int count, char** words)
{
    Options options;
    for (int i = 1; i < count; ++i)
    {
        if (std::strcmp(words[i], "--threads") == 0 && i + 1 < count)
            options.threads = std::atoi(words[++i]);
        else if (std::strcmp(words[i], "--seconds") == 0 && i + 1 < count)
            options.seconds = std::atof(words[++i]);
        else if (std::strcmp(words[i], "--only") == 0 && i + 1 < count)
            options.only = words[++i];
        else if (std::strcmp(words[i], "--alone") == 0)
            options.comparison = false;
        else if (std::strcmp(words[i], "--no-growth") == 0)
            options.growth = false;
        else
            options.files.emplace_back(words[i]);
    }
    return options;
}

/// A mesh in the modes that are compared.
void AddModes(std::vector<Load>& loads, const std::string& name, const Mesh& mesh)
{
    loads.push_back({name + " wireframe", WithEdges(mesh), {.mode = Mode::Wireframe}});
    loads.push_back({name + " sorted", Translucent(mesh), {.mode = Mode::Sorted}});
    loads.push_back({name + " textured", Textured(mesh), {.mode = Mode::Textured}});
    loads.push_back({name + " 4x4", mesh, {.samples = 4}});
}

std::vector<Load> StandardLoads()
{
    std::vector<Load> loads{{"3.7k 640x480", Ring(3700), {.width = 640, .height = 480}},
                            {"ring 3.7k", Ring(3700), {}},
                            {"ring 48k", Ring(48000), {}},
                            {"ring 871k", Ring(871000), {}},
                            {"boxes 96k", BoxGrid(20), {}},
                            {"nested boxes", NestedBoxes(64), {}}};
    AddModes(loads, "48k", Ring(48000));
    return loads;
}

void AddFile(std::vector<Load>& loads, const std::string& path)
{
    const std::string name = path.substr(path.find_last_of('/') + 1);
    loads.push_back({name, ReadObj(path), {}});
}

std::unique_ptr<Painter> OpenGlIfThere()
{
    setenv("LIBGL_ALWAYS_SOFTWARE", "1", 1);
    try
    {
        return MakeOpenGlPainter();
    }
    catch (const std::exception& error)
    {
        std::printf("no comparison: %s\n", error.what());
        return nullptr;
    }
}

} // namespace

int main(int count, char** words)
try
{
    const Options options = Parsed(count, words);
    const std::unique_ptr<Painter> openGl = options.comparison ? OpenGlIfThere() : nullptr;
    const std::unique_ptr<Painter> rgb = MakeRgbPainter(options.threads, lumora::SimdLevel::Best);
    std::vector<Load> loads = StandardLoads();
    for (const std::string& file : options.files)
        AddFile(loads, file);
    std::erase_if(loads, [&](const Load& load) { return load.name.find(options.only) == std::string::npos; });
    if (openGl != nullptr)
        std::printf(
            "1280x720, medians of alternating frames, ms; OpenGL is %s, up to glFinish\n%-20s %9s %10s %10s %8s %11s\n",
            openGl->Name().c_str(), "load", "triangles", "llvmpipe", "rgb", "ratio", "different");
    for (const Load& load : loads)
        Compare(*rgb, openGl.get(), load, options.seconds);
    if (options.growth)
        PrintGrowth(*rgb, std::min(1.0, options.seconds / 2));
    return EXIT_SUCCESS;
}
catch (const std::exception& error)
{
    std::fprintf(stderr, "%s\n", error.what());
    return EXIT_FAILURE;
}
