#include "Scenes.h"

#include <cmath>

namespace lumora::bench
{

namespace
{

constexpr double PlaneSide = 3;
constexpr double PlaneDepth = 4;
constexpr int TextureSide = 16;

// Numbers in no order, the same in every run.
int Scattered(int i, int count)
{
    return static_cast<int>((static_cast<std::uint32_t>(i) * 2654435761U >> 8) % static_cast<std::uint32_t>(count));
}

std::shared_ptr<MeshBuilder> MakeBox(float half, int number, bool isGlass)
{
    std::vector<Vector> corners;
    for (int i = 0; i < 8; ++i)
        corners.push_back({(i & 1) != 0 ? half : -half, (i & 2) != 0 ? half : -half, (i & 4) != 0 ? half : -half});
    const std::vector<std::int32_t> faces{4, 0, 2, 3, 1, 4, 5, 7, 6, 4, 4, 4, 6, 2, 0, 4,
                                          1, 3, 7, 5, 4, 2, 6, 7, 3, 4, 0, 1, 5, 4, 0};
    auto mesh = MeshBuilder::Make();
    mesh->AddFaces(corners, {}, faces);
    const auto channel = [&](int step) { return static_cast<float>(64 + number * step % 192) / 255; };
    mesh->SetColor(CreateColorRGBA(channel(37), channel(59), channel(83), isGlass ? 0.5F : 1.0F));
    mesh->SetMaterial(std::make_shared<Material>(static_cast<float>(number % 20)));
    return mesh;
}

std::shared_ptr<Texture> MakeTexture(int number)
{
    std::vector<std::uint32_t> pixels;
    for (int i = 0; i < TextureSide * TextureSide; ++i)
        pixels.push_back(0xFF000000U | static_cast<std::uint32_t>(Scattered(number * 331 + i, 0xFFFFFF)));
    return std::make_shared<Texture>(TextureSide, TextureSide, pixels);
}

std::vector<std::shared_ptr<MeshBuilder>> MakeMeshes(const SceneKind& kind, float half)
{
    std::vector<std::shared_ptr<Texture>> textures;
    for (int i = 0; i < kind.textures; ++i)
        textures.push_back(MakeTexture(i));
    std::vector<std::shared_ptr<MeshBuilder>> meshes;
    for (int i = 0; i < kind.meshes; ++i)
    {
        meshes.push_back(MakeBox(half, i, kind.isGlass));
        if (kind.textures > 0)
            meshes.back()->SetTexture(textures[Scattered(i, kind.textures)]);
    }
    return meshes;
}

} // namespace

BoxScene MakeScene(const SceneKind& kind)
{
    const int perRow = static_cast<int>(std::ceil(std::sqrt(kind.visuals)));
    const double step = PlaneSide / perRow;
    const auto meshes = MakeMeshes(kind, static_cast<float>(step * 0.3));
    BoxScene scene{Frame::Make(), {}};
    for (int i = 0; i < kind.visuals; ++i)
    {
        const bool isTop = kind.shape == Shape::Flat || i == 0;
        const int above = kind.shape == Shape::Chain ? i - 1 : (i - 1) / 10;
        const auto parent = isTop ? scene.root : scene.frames[static_cast<std::size_t>(above)];
        const auto frame = Frame::Make(parent);
        const auto column = [&](int number)
        { return static_cast<float>((number % perRow + 0.5) * step - PlaneSide / 2); };
        const auto row = [&](int number) { return static_cast<float>((number / perRow + 0.5) * step - PlaneSide / 2); };
        if (isTop)
            frame->SetPosition(parent, column(i), row(i), PlaneDepth);
        else
            frame->SetPosition(parent, column(i) - column(above), row(i) - row(above), 0);
        frame->AddVisual(meshes[static_cast<std::size_t>(Scattered(i, kind.meshes))]);
        scene.frames.push_back(frame);
    }
    return scene;
}

} // namespace lumora::bench
