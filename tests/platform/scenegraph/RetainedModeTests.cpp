// The root object: vectors, colours, and what it hands out.
#include "platform/scenegraph/RetainedMode.h"
#include "platform/scenegraph/SceneDoubles.h"

#include <limits>
#include <random>

namespace lumora
{

using test::IsNear;
using test::Raises;

namespace
{

RetainedMode MakeRoot()
{
    return RetainedMode{std::make_shared<DriverList>()};
}

struct Quaternion
{
    double w, x, y, z;
    friend Quaternion operator*(Quaternion a, Quaternion b)
    {
        return {a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z, a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
                a.w * b.y - a.x * b.z + a.y * b.w + a.z * b.x, a.w * b.z + a.x * b.y - a.y * b.x + a.z * b.w};
    }
};

} // namespace

TEST(VectorOperations, rotate_as_the_product_of_quaternions_does)
{
    RetainedMode root = MakeRoot();
    std::mt19937 random{11};
    std::uniform_real_distribution<float> number{-2, 2};
    for (int i = 0; i < 200; ++i)
    {
        const Vector v{number(random), number(random), number(random)};
        const Vector axis{number(random), number(random), number(random)};
        const float angle = 3 * number(random);
        const Double3 unit = Normalized(Double3{axis});
        const double s = std::sin(angle / 2.0);
        const double c = std::cos(angle / 2.0);
        const Quaternion turned = Quaternion{c, s * unit.x, s * unit.y, s * unit.z} * Quaternion{0, v.x, v.y, v.z} *
                                  Quaternion{c, -s * unit.x, -s * unit.y, -s * unit.z};
        const Vector expected = Normalized(Double3{turned.x, turned.y, turned.z}).ToVector();
        EXPECT_TRUE(IsNear(root.VectorRotate(v, axis, angle), expected, 1e-6));

        const auto frame = Frame::Make();
        frame->SetOrientation(nullptr, v, v.x == 0 ? Vector{1, 0, 0} : Vector{v.y, -v.x, 0});
        frame->AddRotation(CombineType::After, axis, angle);
        EXPECT_TRUE(IsNear(frame->GetOrientation(nullptr).direction, expected, 1e-6)) << "frames turn the same way";
    }
}

TEST(VectorOperations, have_an_answer_for_zero_and_refuse_overflow)
{
    RetainedMode root = MakeRoot();
    EXPECT_EQ(root.VectorRotate({0, 0, 0}, {0, 1, 0}, 1), (Vector{0, 0, 0}));
    EXPECT_EQ(root.VectorRotate({0, 0, 4}, {0, 0, 0}, 1), (Vector{0, 0, 1}));
    EXPECT_EQ(root.VectorNormalize({0, 0, 0}), (Vector{0, 0, 0}));
    const float tiny = std::numeric_limits<float>::denorm_min();
    const float huge = std::numeric_limits<float>::max();
    EXPECT_TRUE(IsNear(root.VectorNormalize({tiny, tiny, 0}), {0.70710678F, 0.70710678F, 0}, 1e-6));
    EXPECT_TRUE(IsNear(root.VectorNormalize({huge, 0, -huge}), {0.70710678F, 0, -0.70710678F}, 1e-6));
    EXPECT_EQ(root.VectorModulus({2, 3, 6}), 7);
    EXPECT_EQ(root.VectorCrossProduct({1, 2, 3}, {4, 5, 6}), (Vector{-3, 6, -3}));
    EXPECT_TRUE(Raises(error::RMBadValue, [&] { root.VectorModulus({huge, huge, 0}); }));
    EXPECT_TRUE(Raises(error::RMBadValue, [&] { root.VectorScale({1, 0, 0}, INFINITY); }));
    EXPECT_TRUE(Raises(error::RMBadValue, [&] { root.VectorNormalize({NAN, 0, 0}); }));
    EXPECT_TRUE(Raises(error::RMBadValue, [&] { root.VectorDotProduct({huge, 0, 0}, {2, 0, 0}); }));
}

TEST(Colors, are_packed_by_nearest_byte_and_clamped)
{
    EXPECT_EQ(CreateColorRGBA(1, 0.5F, 0, 0.99F), 0xFCFF8000U);
    EXPECT_EQ(CreateColorRGBA(-1, 2, NAN, INFINITY), 0xFF00FF00U);
}

TEST(Lights, stand_where_their_frame_stands_and_shine_along_it)
{
    const auto frame = Frame::Make();
    frame->SetPosition(nullptr, 1, 2, 3);
    frame->SetOrientation(nullptr, {1, 0, 0}, {0, 1, 0});
    frame->AddScale(CombineType::Before, 5, 5, 5);
    Light light{LightKind::Spot, {1, 2, 3}};
    light.SetAttenuation(1, 2, 3);
    const LightState state = light.In(frame->WorldTransform());
    EXPECT_TRUE(IsNear(state.position.ToVector(), {1, 2, 3}, 1e-6));
    EXPECT_TRUE(IsNear(state.direction.ToVector(), {1, 0, 0}, 1e-6));
    EXPECT_EQ(state.quadraticAttenuation, 3);
    EXPECT_EQ(state.range, std::numeric_limits<float>::max());
    EXPECT_TRUE(Raises(error::RMBadValue, [&] { light.SetRange(-1); }));
    EXPECT_TRUE(Raises(error::RMBadValue, [&] { light.SetCone(0.1F, NAN); }));
}

TEST(Textures, refuse_pictures_that_do_not_fit_their_size)
{
    const std::vector<std::uint32_t> pixels(6, 0xFF000000);
    EXPECT_EQ(Texture(3, 2, pixels).Image()->pixels, pixels);
    EXPECT_NE(Texture(3, 2, pixels).Image()->identity, Texture(3, 2, pixels).Image()->identity);
    EXPECT_FALSE(Texture(3, 2, pixels).Image()->hasTranslucency);
    for (const auto& [width, height] : {std::pair{3, 3}, {0, 0}, {-2, -3}, {16385, 1}})
        EXPECT_TRUE(Raises(error::RMBadValue, [&, w = width, h = height] { Texture(w, h, pixels); }));
}

} // namespace lumora
