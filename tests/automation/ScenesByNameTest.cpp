// Surfaces, geometry, picks, animations and the kernel by name: what comes back is what C++ callers get.
#include "Session.h"
#include "geometry/modPrimitiveCreation.h"
#include "geometry/modSweep.h"
#include "platform/directdraw/Surface.h"
#include "platform/drivers/standard/StandardDrivers.h"

#include <array>
#include <cstring>
#include <gmock/gmock.h>

namespace lumora::test
{

namespace
{

template<typename List>
NumberBuffer Lent(List&& numbers)
{
    using Number = std::remove_reference_t<decltype(numbers[0])>;
    return {ElementTypeOf<Number>, numbers.data(), numbers.size(), false, {}};
}

template<typename Number>
std::vector<Number> NumbersOf(const Variant& value)
{
    const auto& buffer = std::get<NumberBuffer>(value);
    EXPECT_EQ(buffer.type, ElementTypeOf<Number>);
    const auto* first = static_cast<const Number*>(buffer.data);
    return {first, first + buffer.count};
}

std::vector<float> Flat(std::span<const Vector> vectors)
{
    std::vector<float> numbers;
    for (const Vector v : vectors)
        numbers.insert(numbers.end(), {v.x, v.y, v.z});
    return numbers;
}

class ScenesByName : public testing::Test
{
protected:
    std::shared_ptr<Dispatchable> NewMesh() const
    {
        return AsDispatchable(session_.factory->Call("CreateMeshBuilder"));
    }

    std::shared_ptr<Dispatchable> NewSurface(int width, int height) const
    {
        session_.viewport->Put("ExposeDDSurface", true);
        session_.viewport->Put("Enabled", true);
        session_.viewport->Call("RenderScene");
        const auto directDraw = AsDispatchable(session_.viewport->Get("DirectDraw"));
        return AsDispatchable(directDraw->CallWith("CreateSurface", {width, height, 0}));
    }

    const Session session_;
    std::array<float, 12> corners_{-1, -1, 2, -1, 1, 2, 1, 1, 2, 1, -1, 2};
    std::array<std::int32_t, 6> square_{4, 0, 1, 2, 3, 0};
};

} // namespace

TEST_F(ScenesByName, faces_come_in_as_any_numbers_and_go_out_as_they_came)
{
    std::vector<double> wide(corners_.begin(), corners_.end());
    std::vector<std::uint32_t> indices(square_.begin(), square_.end());
    std::array<char, sizeof corners_ + 1> bytes{};
    std::memcpy(bytes.data() + 1, corners_.data(), sizeof corners_);
    NumberBuffer odd = Lent(corners_);
    odd.data = bytes.data() + 1;
    const Variant text{std::string{"-1,-1,2, -1 1 2  1 1 2  1 -1 2"}};
    for (const Variant& vertices : {Variant{Lent(corners_)}, Variant{Lent(wide)}, Variant{odd}, text})
    {
        const auto mesh = NewMesh();
        mesh->CallWith("AddFaces", {vertices, Variant{}, Lent(indices)});
        std::vector<Variant> read(3);
        mesh->Call("GetGeometry", read);
        EXPECT_THAT(NumbersOf<float>(read[0]), testing::ElementsAreArray(corners_));
        EXPECT_THAT(NumbersOf<float>(read[1]), testing::IsEmpty());
        EXPECT_THAT(NumbersOf<std::int32_t>(read[2]), testing::ElementsAreArray(square_));
    }
    wide[4] = 1e300;
    indices[1] = 0x80000000;
    const auto mesh = NewMesh();
    const auto adding = [&](const Variant& vertices, const Variant& faces) {
        return NumberOf([&] { mesh->CallWith("AddFaces", {vertices, Variant{}, faces}); });
    };
    EXPECT_EQ(adding(Lent(wide), Lent(square_)), error::Overflow);
    EXPECT_EQ(adding(text, Lent(indices)), error::Overflow);
    EXPECT_EQ(adding(Lent(std::span{corners_}.first(10)), Lent(square_)), error::TypeMismatch);
    EXPECT_EQ(adding(ObjectReference{mesh}, Lent(square_)), error::TypeMismatch);
    EXPECT_EQ(VariantToLong(mesh->Get("FaceCount")), 0);
}

TEST_F(ScenesByName, what_is_kept_is_no_longer_the_callers)
{
    const auto bag = AsDispatchable(session_.host->Call("CreateBag"));
    bag->CallWith("Write", {std::string{"face"}, Lent(square_)});
    square_.fill(7);
    EXPECT_THAT(NumbersOf<std::int32_t>(bag->CallWith("Read", {std::string{"face"}, Variant{}})),
                testing::ElementsAre(4, 0, 1, 2, 3, 0));
}

TEST_F(ScenesByName, a_lock_ends_with_its_pixels_and_its_pixels_outlive_the_surface)
{
    NewSurface(1, 1);
    auto surface = AsDispatchable(session_.viewport->Get("DirectDrawSurface"));
    const auto drawing = [&] { return NumberOf([&] { session_.viewport->Call("RenderScene"); }); };
    for (const char* access : {"Lock", "GetDC"})
    {
        Variant held = surface->Call(access);
        EXPECT_EQ(drawing(), error::DDSurfaceBusy) << access; // and says so, for as long as it is forgotten
        EXPECT_EQ(NumberOf([&] { surface->CallWith("PixelAt", {0, 0}); }), error::DDSurfaceBusy) << access;
        held = {};
        EXPECT_EQ(drawing(), 0) << access;
    }
    surface = NewSurface(3, 2);
    const Variant held = surface->Call("Lock");
    surface->Call("Unlock");
    EXPECT_EQ(NumberOf([&] { surface->Call("Unlock"); }), error::DDInvalidParams);
    surface->CallWith("SetPixel", {2, 1, 0x123456});
    surface.reset();
    EXPECT_EQ(NumbersOf<std::uint32_t>(held).back(), 0x123456U);
}

TEST_F(ScenesByName, surfaces_are_drawn_on_filled_copied_and_read)
{
    const auto surface = NewSurface(40, 20);
    const auto other = NewSurface(40, 20);
    surface->CallWith("Fill", {0, 0, 0, 0, 0x0000FF});
    const auto context = AsDispatchable(surface->Call("GetDC"));
    context->CallWith("WriteText", {4, 2, std::string{"\n-"}, 0x0000FF, 1}); // a dash: five pixels in the fourth row
    context->CallWith("FrameRectangle", {20, 4, 23, 7, 0x00FF00});
    const Variant picture = session_.host->CallWith("CreatePicture", {1, 1, static_cast<std::int32_t>(0xFFFFFFFF)});
    context->CallWith("DrawPicture", {39, 19, picture});
    surface->CallWith("ReleaseDC", {ObjectReference{context}});
    context->CallWith("SetPixel", {0, 0, 0xFFFFFF}); // given back: nothing
    other->CallWith("Blt", {0, 0, 0, 0, ObjectReference{surface}, 0, 0, 0, 0, 0});

    std::vector<std::uint32_t> expected(800, 0x0000FF);
    for (int x = 4; x < 9; ++x)
        expected[static_cast<std::size_t>((2 + 10 + 3) * 40 + x)] = 0xFF0000;
    for (int y = 4; y < 7; ++y)
        for (int x = 20; x < 23; ++x)
            if (x != 21 || y != 5)
                expected[static_cast<std::size_t>(y * 40 + x)] = 0x00FF00;
    expected.back() = 0xFFFFFF;
    auto pixels = NumbersOf<std::uint32_t>(other->CallWith("ReadPixels", {0, 0, 40, 20}));
    for (std::uint32_t& pixel : pixels)
        pixel &= 0xFFFFFF;
    EXPECT_EQ(pixels, expected);
    other->CallWith("WritePixels", {1, 0, 39, 20, surface->CallWith("ReadPixels", {0, 0, 39, 20})});
    EXPECT_EQ(other->CallWith("PixelAt", {5, 15}), Variant{0xFF0000});
    EXPECT_EQ(other->CallWith("PixelAt", {4, 15}), Variant{0x0000FF});

    const struct
    {
        const char* what;
        const std::shared_ptr<Dispatchable>& object;
        const char* name;
        std::vector<Variant> arguments;
        std::int32_t number;
    } rows[] = {
        {"a block outside", surface, "ReadPixels", {39, 0, 2, 1}, error::SubscriptOutOfRange},
        {"a width beyond numbers", surface, "ReadPixels", {1, 0, 0x7FFFFFFF, 1}, error::SubscriptOutOfRange},
        {"too few pixels", surface, "WritePixels", {0, 0, 2, 2, std::string{"1 2 3"}}, error::SubscriptOutOfRange},
        {"a fill outside", surface, "Fill", {0, 0, 41, 1, 0}, error::DDInvalidRect},
        {"a text too large", context, "WriteText", {0, 0, std::string{"x"}, 0, 65}, error::DDInvalidParams},
        {"nothing to copy", surface, "Blt", {0, 0, 0, 0, Variant{}, 0, 0, 0, 0, 0}, error::ObjectNotSet},
    };
    for (const auto& row : rows)
    {
        auto arguments = row.arguments;
        EXPECT_EQ(NumberOf([&] { row.object->Call(row.name, arguments); }), row.number) << row.what;
    }
}

TEST_F(ScenesByName, picks_transforms_and_animations_are_those_of_the_scene)
{
    const auto moved = AsDispatchable(session_.factory->CallWith("CreateFrame", {ObjectReference{session_.scene}}));
    const auto mesh = NewMesh();
    mesh->CallWith("AddFaces", {Lent(corners_), Variant{}, Lent(square_)});
    moved->CallWith("AddVisual", {ObjectReference{mesh}});
    const auto animation = AsDispatchable(session_.factory->Call("CreateAnimation"));
    animation->Put("Options", 1 + 4 + 32);
    animation->Put("Frame", ObjectReference{moved});
    animation->CallWith("AddPositionKey", {2, 10, 0, 4});
    animation->CallWith("AddPositionKey", {0, 0, 0, 0});
    animation->CallWith("SetTime", {1});
    EXPECT_THAT(NumbersOf<float>(animation->Get("Keys")), testing::ElementsAre(0, 0, 0, 0, 2, 10, 0, 4));
    EXPECT_THAT(NumbersOf<double>(moved->CallWith("TransformTo", {Variant{}})),
                testing::ElementsAre(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 5, 0, 2, 1));

    std::vector<Variant> box(6);
    mesh->Call("GetBox", box);
    EXPECT_THAT(box, testing::ElementsAre(Variant{-1.0F}, Variant{-1.0F}, Variant{2.0F}, Variant{1.0F}, Variant{1.0F},
                                          Variant{2.0F}));
    const auto twin = AsDispatchable(session_.factory->CallWith("CreateFrame", {Variant{}}));
    twin->CallWith("AddScale", {0, 2, 3, 4});
    EXPECT_THAT(NumbersOf<double>(twin->Get("LocalTransform")),
                testing::ElementsAre(2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1));
    twin->CallWith("AddTransform", {0, moved->Get("LocalTransform")});
    std::vector<Variant> place{{}, {}, {}, {}};
    twin->Call("GetPosition", place);
    EXPECT_THAT(place, testing::ElementsAre(Variant{}, Variant{5.0F}, Variant{0.0F}, Variant{2.0F}));
    EXPECT_EQ(NumberOf([&] { twin->CallWith("AddTransform", {0, Lent(corners_)}); }), error::TypeMismatch);

    const auto hits = AsDispatchable(session_.scene->CallWith("RayPick", {Variant{}, 0, 0, 3, 5.5F, 0.25F, -1, 0}));
    ASSERT_EQ(hits->Get("Count"), Variant{1});
    std::vector<Variant> hit(7);
    hit[0] = 0;
    hits->Call("GetPick", hit);
    EXPECT_THAT(hit, testing::ElementsAre(Variant{0}, Variant{ObjectReference{mesh}}, Variant{ObjectReference{moved}},
                                          Variant{0}, Variant{5.5F}, Variant{0.25F}, Variant{4.0F}));
    EXPECT_EQ(hits->CallWith("PathLength", {0}), Variant{2});
    EXPECT_EQ(hits->CallWith("PathFrame", {0, 0}), Variant{ObjectReference{session_.scene}});
    EXPECT_EQ(NumberOf([&] { hits->CallWith("PathFrame", {0, 2}); }), error::SubscriptOutOfRange);
}

TEST_F(ScenesByName, the_kernel_makes_what_it_makes_for_cpp)
{
    RetainedMode root{StandardDrivers()};
    root.Initialise();
    const auto kernel = AsDispatchable(session_.factory->Get("Geometry"));
    const auto vertices = [](const Variant& mesh) { return NumbersOf<float>(AsDispatchable(mesh)->Get("Vertices")); };
    EXPECT_EQ(vertices(kernel->CallWith("CreateSphere", {5, 7})), Flat(CreateSphere(root, 5, 7)->GetVertices()));

    // Every argument matters: the times bend the key-framed path.
    Sweep sweep;
    sweep.profile = {{1, 0, 0}, {0, 1, 0}, {-1, 0, 0}, {0, -1, 0}};
    sweep.turnFraction = 0.25F;
    sweep.axis = {0.5F, 1, 0.25F};
    sweep.path = {{0, 0, 0}, {0, 1, 4}, {3, 0, 9}};
    sweep.steps = 6;
    sweep.reverse = true;
    sweep.endScale = 0.5F;
    sweep.curveMethod = CurveMethod::KeyFramed;
    sweep.caps = sweep.wrap = true;
    sweep.curve = {false, true, true, {0, 1, 5}};
    const auto expected = CreateSweptMesh(root, sweep)->GetGeometry();
    std::vector<float> profile = Flat(sweep.profile);
    std::vector<float> path = Flat(sweep.path);
    const auto swept = AsDispatchable(
        kernel->CallWith("CreateSweptMesh", {Lent(profile), false, 0.25F, 0.5F, 1, 0.25F, Lent(path), 6, true, 0.5F, 1,
                                             true, false, true, true, std::string{"0 1 5"}, true, false}));
    std::vector<Variant> read(3);
    swept->Call("GetGeometry", read);
    EXPECT_EQ(NumbersOf<float>(read[0]), Flat(expected.vertices));
    EXPECT_EQ(NumbersOf<std::int32_t>(read[2]), expected.faceList);

    std::vector<Variant> turned{2, 0, 0, 0, 0, 3, 1.5707964F, {}, {}, {}};
    session_.factory->Call("VectorRotate", turned);
    EXPECT_NEAR(VariantToSingle(turned[8]), 1, 1e-6); // x to y about z, of length 1
    EXPECT_EQ(session_.factory->CallWith("VectorDotProduct", {1, 2, 3, 4, 5, 6}), Variant{32.0F});
    EXPECT_EQ(NumberOf([&] { kernel->CallWith("OptimizeMesh", {Variant{}, true, true}); }), error::RMBadObject);
    EXPECT_EQ(NumberOf([&] { kernel->CallWith("IsColinear", {std::string{"0 0 0 1 0 0"}}); }),
              error::SubscriptOutOfRange);
}

} // namespace lumora::test
