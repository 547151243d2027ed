// Surfaces of the built-in scene: their faces look where their normals say.
#include "stage/Shapes.h"

#include "geometry/Kernel.h"

#include <cmath>

namespace lumora::tests
{

namespace
{

double EnclosedVolume(const stage::Shape& shape)
{
    const auto mesh = MeshBuilder::Make();
    mesh->AddFaces(shape.positions, shape.normals, shape.faceList);
    return test::VolumeOf(*mesh);
}

TEST(Shapes, enclose_the_volume_that_geometry_says)
{
    const double edge = 1 / std::sin(2 * M_PI / 5); // of an icosahedron within the unit sphere
    EXPECT_NEAR(EnclosedVolume(stage::MakeIcosahedron(1)), 5 * (3 + std::sqrt(5.0)) / 12 * edge * edge * edge, 1e-5);
    EXPECT_NEAR(EnclosedVolume(stage::MakeSphere(2, 96, 64)), 4.0 / 3 * M_PI * 8, 0.1);
    const auto circle = [](double t) {
        return Vector{static_cast<float>(3 * std::cos(2 * M_PI * t)), 0,
                      static_cast<float>(3 * std::sin(2 * M_PI * t))};
    };
    EXPECT_NEAR(EnclosedVolume(stage::MakeTube(circle, 0.5F, 48, 192)), 2 * M_PI * M_PI * 3 * 0.25, 0.1);
    // A prism of hexagons from 0.8 to 1 with a pyramid on it: frustum and cone over hexagonal areas.
    const double hexagon = 1.5 * std::sqrt(3.0);
    const double frustum = hexagon * (0.64 + 0.8 + 1) / 3 * 3.0;
    EXPECT_NEAR(EnclosedVolume(stage::MakeCrystal(1, 2, 1)), frustum + hexagon / 3, 1e-4);
}

TEST(Shapes, have_a_mirror_image_that_keeps_its_light)
{
    const stage::Shape shape = stage::Moved(stage::MakeSphere(1, 24, 16), {0, 3, 0});
    const stage::Shape image = stage::MirroredBelow(shape);
    EXPECT_EQ(image.normals, shape.normals);
    for (std::size_t i = 0; i < shape.positions.size(); ++i)
        EXPECT_EQ(image.positions[i].y, -shape.positions[i].y);
}

} // namespace

} // namespace lumora::tests
