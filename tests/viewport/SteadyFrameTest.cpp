// A scene that stays as it is is drawn again and again without taking memory.
#include "properties/PropertyTable.h"
#include "support/Allocations.h"
#include "viewport/LiveControl.h"

using namespace lumora;
using namespace lumora::test;

namespace
{

std::shared_ptr<MeshBuilder> Terrain(int cells, Color color)
{
    const auto mesh = MeshBuilder::Make();
    std::vector<Vector> points;
    std::vector<std::int32_t> faces;
    const auto at = [&](int x, int y) { return y * (cells + 1) + x; };
    for (int y = 0; y <= cells; ++y)
        for (int x = 0; x <= cells; ++x)
            points.push_back({4.0F * static_cast<float>(x) / static_cast<float>(cells) - 2,
                              4.0F * static_cast<float>(y) / static_cast<float>(cells) - 2,
                              10 + static_cast<float>((x * 7 + y * 3) % 5) / 10});
    for (int y = 0; y < cells; ++y)
        for (int x = 0; x < cells; ++x)
            faces.insert(faces.end(), {4, at(x, y), at(x, y + 1), at(x + 1, y + 1), at(x + 1, y)});
    faces.push_back(0);
    mesh->AddFaces(points, {}, faces);
    mesh->SetColor(color);
    return mesh;
}

// Opaque, translucent and textured meshes, and fog.
std::shared_ptr<Frame> RichScene()
{
    const auto scene = AmbientScene(0.5F);
    scene->AddLight(std::make_shared<Light>(LightKind::Directional, Vector{0.5F, 0.5F, 0.5F}));
    scene->AddVisual(Terrain(60, 0xFF8090A0));
    const auto child = Frame::Make(scene);
    child->AddVisual(Terrain(40, 0x60FF8040));
    const auto textured = Terrain(30, 0xFFFFFFFF);
    const std::vector<std::uint32_t> pixels(16 * 16, 0x80C0FFC0);
    textured->SetTextureCoordinates(std::vector<float>(2 * 31 * 31, 0.25F));
    textured->SetTexture(std::make_shared<Texture>(16, 16, pixels));
    Frame::Make(child)->AddVisual(textured);
    scene->SetSceneFogEnable(1);
    return scene;
}

struct Mode
{
    const char* what;
    std::vector<std::pair<const char*, Variant>> settings;
};

const Mode modes[] = {
    {"smooth", {}},
    {"flat", {{"ShadeMode", 0}}},
    {"wireframe", {{"FillMode", 64}}},
    {"points", {{"FillMode", 0}}},
    {"exposed", {{"ExposeDDSurface", true}}},
    {"averaged", {{"ExposeDDSurface", true}, {"AntiAlias", 2}}},
    {"edges over faces", {{"ExposeDDSurface", true}, {"CoolMode", 1}}},
    {"faces over edges", {{"ExposeDDSurface", true}, {"CoolMode", 2}}},
    {"widgets", {{"NavControlPrimary", true}, {"NavControlGlide", true}}},
    {"from afar", {{"ProjectionType", 2}}},
};

} // namespace

TEST(SteadyFrames, take_no_memory_in_any_mode)
{
    for (const auto& [what, settings] : modes)
    {
        MemoryPropertyBag bag = UsualSettings();
        for (const auto& [name, value] : settings)
            bag.Set(name, value);
        LiveControl control{bag, MakeHost(400, 300)};
        control->SetScene(RichScene());
        for (int frame = 0; frame < 4; ++frame)
            control->RenderScene();
        const std::size_t before = CountedAllocations().count;
        for (int frame = 0; frame < 8; ++frame)
            control->RenderScene();
        EXPECT_EQ(CountedAllocations().count - before, 0U) << what;
    }
}
