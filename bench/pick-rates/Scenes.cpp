#include "Scenes.h"

#include "platform/drivers/standard/StandardDrivers.h"

#include <cmath>

namespace lumora::bench
{

std::shared_ptr<MeshBuilder> BuilderOf(const Mesh& mesh)
{
    std::vector<Vector> vertices;
    std::vector<std::int32_t> faces;
    for (std::size_t i = 0; i < mesh->VertexCount(); ++i)
        vertices.push_back({mesh->x[i], mesh->y[i], mesh->z[i]});
    for (std::size_t i = 0; i < mesh->indices.size(); i += 3)
    {
        faces.push_back(3);
        for (std::size_t corner = 0; corner < 3; ++corner)
            faces.push_back(static_cast<std::int32_t>(mesh->indices[i + corner]));
    }
    faces.push_back(0);
    auto builder = MeshBuilder::Make();
    builder->AddFaces(vertices, {}, faces);
    builder->Compiled();
    return builder;
}

CubeScene Cubes(std::uint32_t count)
{
    std::mt19937 random{7};
    std::uniform_real_distribution<float> place{-50, 50};
    const float size = 30 / std::cbrt(static_cast<float>(count));
    CubeScene scene{Frame::Make(), {}};
    while (scene.frames.size() < count)
    {
        const Vector at{place(random), place(random), place(random)};
        if (std::abs(at.x) < 8 && std::abs(at.y) < 8 && std::abs(at.z) < 8)
            continue;
        std::vector<Vector> corners;
        for (int i = 0; i < 8; ++i)
            corners.push_back(
                Vector{(i & 1) != 0 ? 0.5F : -0.5F, (i & 2) != 0 ? 0.5F : -0.5F, (i & 4) != 0 ? 0.5F : -0.5F} * size);
        const auto mesh = MeshBuilder::Make();
        mesh->AddFaces(corners, {}, std::vector<std::int32_t>{4, 0, 2, 3, 1, 4, 5, 7, 6, 4, 4, 4, 6, 2, 0, 4,
                                                              1, 3, 7, 5, 4, 2, 6, 7, 3, 4, 0, 1, 5, 4, 0});
        scene.frames.push_back(Frame::Make(scene.root));
        scene.frames.back()->AddVisual(mesh);
        scene.frames.back()->AddRotation(CombineType::After, at, at.x);
        scene.frames.back()->SetPosition(scene.root, at.x, at.y, at.z);
    }
    return scene;
}

std::vector<Ray> RaysThrough(double radius, double from, std::size_t count, std::mt19937& random)
{
    std::normal_distribution<double> number;
    const auto unit = [&] { return Normalized(Double3{number(random), number(random), number(random)}); };
    std::uniform_real_distribution<double> part;
    std::vector<Ray> rays;
    while (rays.size() < count)
    {
        const Double3 origin = unit() * from;
        const Double3 through = unit() * (radius * std::cbrt(part(random)));
        rays.push_back({Normalized(through - origin).ToVector(), origin.ToVector()});
    }
    return rays;
}

std::unique_ptr<headless::HostedViewport> ControlIn(const std::shared_ptr<Frame>& scene)
{
    MemoryPropertyBag bag;
    bag.Set("Enabled", true);
    bag.Set("WaitForVSYNC", false);
    bag.Set("Direct3DDevice", std::int32_t{tdlDirect3DRGBDevice});
    auto hosted = headless::HostedViewport::Live(
        std::make_shared<headless::HeadlessHost>(StandardDrivers(), nullptr, PixelRect{0, 0, 640, 480}), bag);
    Viewport& control = hosted->Control();
    control.SetScene(scene);
    control.SetCollisionDetection(true);
    control.SetCollisionSamples(5);
    control.SetCollisionDistance(0.1F);
    return hosted;
}

} // namespace lumora::bench
