// Triangles anywhere, with numbers that are none or enormous, in every mode: the RGB driver stays within its picture,
// ends in time, draws the same bytes in one round and in many, and what the reference draws where numbers are sane.
#include "fuzz/Fuzzing.h"
#include "platform/drivers/TestCanvas.h"
#include "platform/drivers/TestMeshes.h"
#include "platform/drivers/reference/ReferenceDriver.h"
#include "platform/drivers/rgb/RgbDriver.h"

#include <cmath>

namespace
{

using namespace lumora;
using fuzz::Require;
using namespace lumora::test;

constexpr std::uint32_t Background = 0x102030;

class Numbers : public fuzz::Bytes
{
public:
    using Bytes::Bytes;

    bool AreSane() const { return areSane_; }

    float Coordinate()
    {
        static constexpr float Wild[] = {NAN, INFINITY, -3e38F, 3e38F, 1e9F, -1e20F, 1e-40F, 16385};
        const unsigned byte = Next();
        if (byte < 240)
            return static_cast<float>(byte) / 30 - 4;
        areSane_ = false;
        return Wild[byte % 8];
    }

private:
    bool areSane_ = true;
};

struct Scene
{
    int width;
    int height;
    PassState pass;
    std::vector<DrawItem> items;
    bool isSane = true; ///< so that drivers must agree
};

Scene SceneFrom(Numbers bytes)
{
    Scene scene;
    scene.width = 1 + static_cast<int>(bytes.Below(90));
    scene.height = 1 + static_cast<int>(bytes.Below(70));
    scene.pass = PerspectivePass(scene.width, scene.height, {.eye = {0, 0, -4}, .field = 0.7, .front = 0.5});
    scene.pass.cull = static_cast<CullMode>(1 + bytes.Below(3));
    scene.pass.transparency = static_cast<Transparency>(bytes.Below(3));
    scene.pass.filter = static_cast<TextureFilter>(bytes.Below(6));
    scene.pass.fog = {static_cast<FogMode>(bytes.Below(4)), {0.5F, 0.5F, 0.5F}, 2, 9, 0.2};
    for (unsigned items = 1 + bytes.Below(3); items > 0 && bytes.AreLeft(); --items)
    {
        MeshMaker maker;
        maker.color = bytes.Below(2) == 0 ? 0xFFC08040 : 0x60FFFFFF;
        maker.Group({}, bytes.Below(2) == 0 ? nullptr : Ramp(5, 3, 0x80));
        for (unsigned faces = 1 + bytes.Below(8); faces > 0; --faces)
        {
            std::vector<Corner> corners(3);
            for (Corner& corner : corners)
                corner = {{bytes.Coordinate(), bytes.Coordinate(), bytes.Coordinate()},
                          bytes.Coordinate(),
                          bytes.Coordinate(),
                          Vector{0, 0, -1},
                          std::nullopt};
            maker.Face(corners);
        }
        DrawItem item{maker.Make()};
        item.lit = false;
        item.fill = static_cast<FillStyle>(bytes.Below(3));
        item.gouraud = bytes.Below(2) == 0;
        scene.items.push_back(item);
    }
    // Where translucent faces or ones at the same depth meet, what is in front is anybody's guess.
    scene.isSane = bytes.AreSane();
    return scene;
}

std::vector<std::uint32_t> Drawn(std::unique_ptr<Driver> driver, const Scene& scene)
{
    Canvas canvas{scene.width, scene.height};
    DrawPicture(*driver, canvas, scene.pass, scene.items, Background);
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
    const Scene scene = SceneFrom({data, size});
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
