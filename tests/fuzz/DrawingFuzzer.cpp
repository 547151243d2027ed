// Triangles anywhere, with numbers that are none or enormous, in every mode: the RGB driver stays within its picture,
// ends in time, draws the same bytes in one round and in many, and what the reference draws where numbers are sane.
#include "fuzz/Fuzzing.h"
#include "fuzz/StrangeDrawing.h"
#include "platform/drivers/reference/ReferenceDriver.h"
#include "platform/drivers/rgb/RgbDriver.h"

namespace
{

using namespace lumora;
using fuzz::Require;
using fuzz::StrangeDrawing;
using namespace lumora::test;

constexpr std::uint32_t Background = 0x102030;

std::vector<std::uint32_t> Drawn(std::unique_ptr<Driver> driver, const StrangeDrawing& scene)
{
    Canvas canvas{scene.width, scene.height};
    PassState pass = scene.pass;
    pass.lights = scene.lights;
    DrawPicture(*driver, canvas, pass, scene.items, Background);
    Require(!canvas.IsMarginTouched());
    const DriverMemory memory = driver->Memory();
    Require(memory.held <= memory.bound);
    std::vector<std::uint32_t> pixels;
    for (int y = 0; y < scene.height; ++y)
        for (int x = 0; x < scene.width; ++x)
            pixels.push_back(canvas.At(x, y));
    return pixels;
}

std::size_t CountCovered(const std::vector<std::uint32_t>& picture, const std::vector<std::uint32_t>& other)
{
    std::size_t count = 0;
    for (std::size_t i = 0; i < picture.size(); ++i)
        count += (picture[i] == Background) != (other[i] == Background) ? 1 : 0;
    return count;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto scene = StrangeDrawing::From({data, size});
    RgbOptions plain;
    plain.threads = 1;
    plain.simd = SimdLevel::Plain;
    RgbOptions tight;
    tight.threads = 1;
    tight.limits = {2, std::size_t{1} << 30, 64, 0};
    const auto picture = Drawn(MakeRgbDriver(plain), scene);
    Require(Drawn(MakeRgbDriver(tight), scene) == picture);
    if (!scene.isSane)
        return 0;
    // Which pixels anything is drawn on; rounding moves an edge by a pixel now and then.
    Require(CountCovered(Drawn(MakeReferenceDriver(), scene), picture) <= 6 + picture.size() / 50);
    return 0;
}
