// Which pixels a primitive covers: fill rule, clipping, culling, depth, scissor, lines and points.
#include "base/RuntimeError.h"
#include "fuzz/StrangeDrawing.h"
#include "platform/drivers/DriversUnderTest.h"
#include "platform/drivers/TestCanvas.h"
#include "platform/drivers/TestMeshes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace lumora::test
{

namespace
{

constexpr std::uint32_t White = 0xFFFFFFFF;
constexpr std::uint32_t HalfWhite = 0x80FFFFFF;
constexpr float Infinite = std::numeric_limits<float>::infinity();
constexpr float NotANumber = std::numeric_limits<float>::quiet_NaN();

DrawItem UnlitItem(std::shared_ptr<const DrawMesh> mesh, FillStyle fill = FillStyle::Solid)
{
    return Filled(Unlit(Item(std::move(mesh))), fill);
}

void AppendVertex(DrawMesh& mesh, const Vector& position)
{
    mesh.x.push_back(position.x);
    mesh.y.push_back(position.y);
    mesh.z.push_back(position.z);
    for (auto* column : {&mesh.normalX, &mesh.normalY, &mesh.normalZ, &mesh.u, &mesh.v})
        column->push_back(0);
    mesh.color.push_back(White);
}

class Coverage : public EveryDriver
{
protected:
    static constexpr int Side = 64;

    Canvas Draw(const PassState& pass, const std::vector<DrawItem>& items)
    {
        Canvas canvas{Side, Side};
        DrawPicture(*driver_, canvas, pass, items);
        EXPECT_FALSE(canvas.IsMarginTouched());
        return canvas;
    }

    Canvas DrawFaces(const std::vector<std::vector<Vector>>& faces, FillStyle fill = FillStyle::Solid)
    {
        MeshMaker maker;
        for (const std::vector<Vector>& face : faces)
            maker.Polygon(face);
        return Draw(PixelPass(Side, Side), {UnlitItem(maker.Make(), fill)});
    }

    /// Draws over all of a target that was set before, and finishes.
    void Cover(float z, std::uint32_t color = White)
    {
        driver_->Begin(PixelPass(Side, Side));
        driver_->Draw(UnlitItem(Quad(-10, 80, 80, -10, z, color)));
        driver_->End();
        driver_->Finish();
    }
};
LUMORA_FOR_EVERY_DRIVER(Coverage);

TEST_P(Coverage, takes_pixels_on_top_and_left_edges_of_positions_rounded_to_a_256th)
{
    // 1/600 rounds to 0 and keeps the pixel at 10; 1/400 rounds to 1/256 and loses it.
    for (const auto& [left, first] : {std::pair{10.0F, 10}, {10 + 1.0F / 600, 10}, {10 + 1.0F / 400, 11}})
    {
        const Canvas canvas = DrawFaces({{{left, 20, 0}, {30, 20, 0}, {30, 40, 0}, {left, 40, 0}}});
        EXPECT_EQ(canvas.CountNot(0), (30 - first) * 20) << left;
        EXPECT_NE(canvas.At(first, 20), 0U) << left;
        EXPECT_NE(canvas.At(29, 39), 0U) << left;
    }
}

TEST_P(Coverage, draws_shared_edges_exactly_once)
{
    // A blend that happens twice, or not at all, shows. Sorted triangles leave the depth alone, so none hides another.
    PassState pass = PixelPass(Side, Side);
    std::mt19937 engine{4};
    const auto jitter = [&] { return static_cast<float>(engine() % 4096) / 512.0F - 4; };
    for (int round = 0; round < 20; ++round)
    {
        constexpr int Cells = 6;
        std::array<std::array<Vector, Cells + 1>, Cells + 1> grid;
        for (int row = 0; row <= Cells; ++row)
            for (int column = 0; column <= Cells; ++column)
            {
                const bool isInner = row % Cells != 0 && column % Cells != 0;
                grid[row][column] = {static_cast<float>(column * 12 - 4) + (isInner ? jitter() : 0),
                                     static_cast<float>(row * 12 - 4) + (isInner ? jitter() : 0), 0.5F};
            }
        MeshMaker maker;
        maker.color = HalfWhite;
        for (int row = 0; row < Cells; ++row)
            for (int column = 0; column < Cells; ++column)
            {
                const Vector middle =
                    (grid[row][column] + grid[row][column + 1] + grid[row + 1][column] + grid[row + 1][column + 1]) *
                    0.25F;
                const Vector around[] = {grid[row][column], grid[row][column + 1], grid[row + 1][column + 1],
                                         grid[row + 1][column]};
                for (int side = 0; side < 4; ++side)
                    maker.Polygon({around[side], around[(side + 1) % 4], middle});
            }
        // Triangles may fold over each other, but a fold covers by winding: two ways forth and one back.
        pass.cull = CullMode::CounterClockwise;
        const Canvas canvas = Draw(pass, {UnlitItem(maker.Make())});
        EXPECT_EQ(canvas.CountNot(0x808080), 0) << "round " << round;
    }
}

TEST_P(Coverage, leaves_out_the_winding_that_is_culled)
{
    // Clockwise on the screen, whose y goes down.
    const auto clockwise = OneFace({{10, 10, 0.5F}, {30, 10, 0.5F}, {10, 30, 0.5F}});
    const auto counter = OneFace({{10, 10, 0.5F}, {10, 30, 0.5F}, {30, 10, 0.5F}});
    PassState pass = PixelPass(Side, Side);
    for (const CullMode cull : {CullMode::None, CullMode::Clockwise, CullMode::CounterClockwise})
        for (const FillStyle fill : {FillStyle::Solid, FillStyle::Wireframe, FillStyle::Points})
        {
            pass.cull = cull;
            EXPECT_EQ(Draw(pass, {UnlitItem(clockwise, fill)}).CountNot(0) > 0, cull != CullMode::Clockwise);
            EXPECT_EQ(Draw(pass, {UnlitItem(counter, fill)}).CountNot(0) > 0, cull != CullMode::CounterClockwise);
        }
}

TEST_P(Coverage, shows_the_nearer_surface_and_the_later_of_equal_ones)
{
    const auto quad = [](float z, std::uint32_t color) { return UnlitItem(Quad(10, 30, 30, 10, z, color)); };
    const PassState pass = PixelPass(Side, Side);
    EXPECT_EQ(Draw(pass, {quad(0.25F, 0xFFFF0000), quad(0.75F, 0xFF00FF00)}).At(20, 20), 0xFF0000U);
    EXPECT_EQ(Draw(pass, {quad(0.75F, 0xFF00FF00), quad(0.25F, 0xFFFF0000)}).At(20, 20), 0xFF0000U);
    EXPECT_EQ(Draw(pass, {quad(0.5F, 0xFF00FF00), quad(0.5F, 0xFF0000FF)}).At(20, 20), 0x0000FFU);
    EXPECT_EQ(Draw(pass, {quad(1, 0xFF00FF00)}).At(20, 20), 0x00FF00U) << "the far plane itself is visible";
    EXPECT_EQ(Draw(pass, {quad(1.01F, 0xFF00FF00)}).CountNot(0), 0);
    EXPECT_EQ(Draw(pass, {quad(-0.01F, 0xFF00FF00)}).CountNot(0), 0);
}

TEST_P(Coverage, clears_color_and_depth_apart_and_only_inside_the_area)
{
    Canvas canvas{Side, Side};
    driver_->SetTarget(canvas.View());
    driver_->Clear({true, true}, canvas.View().Bounds(), 0);
    Cover(0.25F, 0xFFFF0000);
    driver_->Clear({false, true}, {-100, -100, 20, 20}, 0x123456);
    driver_->Clear({true, false}, {40, 40, 1000, 1000}, 0x123456);
    driver_->Finish();
    EXPECT_EQ(canvas.At(10, 10), 0xFF0000U);
    EXPECT_EQ(canvas.At(50, 50), 0x123456U);
    Cover(0.75F, 0xFF00FF00);
    EXPECT_EQ(canvas.At(10, 10), 0x00FF00U) << "the depth was cleared here";
    EXPECT_EQ(canvas.At(30, 30), 0xFF0000U);
    EXPECT_EQ(canvas.At(50, 50), 0x123456U) << "the depth was kept here";
    EXPECT_FALSE(canvas.IsMarginTouched());
}

TEST_P(Coverage, starts_a_new_target_with_the_farthest_depth)
{
    Draw(PixelPass(Side, Side), {UnlitItem(Quad(-10, 80, 80, -10, 0.1F, White))});
    Canvas other{Side + 9, Side + 3};
    driver_->SetTarget(other.View());
    driver_->Clear({true, false}, other.View().Bounds(), 0);
    Cover(0.9F);
    EXPECT_EQ(other.CountNot(0), Side * Side);
}

// --- numbers that no caller should pass ---

TEST_P(Coverage, draws_nothing_for_faces_without_area_or_with_numbers_that_are_none)
{
    const Vector seconds[] = {{10, 10, 0.5F},       {25, 10, 0.5F},        {NotANumber, 20, 0.5F}, {30, 20, NotANumber},
                              {Infinite, 20, 0.5F}, {30, -Infinite, 0.5F}, {30, 20, Infinite}};
    for (const Vector& second : seconds)
        EXPECT_EQ(DrawFaces({{{10, 10, 0.5F}, second, {40, 10, 0.5F}}}).CountNot(0), 0) << second.x << ' ' << second.z;
}

TEST_P(Coverage, refuses_a_target_without_pixels_or_memory_and_keeps_the_old_one)
{
    Canvas canvas{Side, Side};
    const PixelView whole = canvas.View();
    driver_->SetTarget(whole);
    constexpr int Huge = std::numeric_limits<int>::max();
    for (const PixelView& bad :
         {PixelView{whole.pixels, Huge, Huge, Huge}, {nullptr, 4, 4, 4}, {whole.pixels, -4, 4, 4}})
        EXPECT_THROW(driver_->SetTarget(bad), RuntimeError);
    driver_->Clear({true, true}, whole.Bounds(), 0);
    Cover(0.5F);
    EXPECT_EQ(canvas.CountNot(0), Side * Side);
    driver_->SetTarget({whole.pixels, 0, 5, 1}); // has no area, which is no fault
    driver_->Clear({true, true}, {0, 0, 5, 5}, 0);
    Cover(0.5F);
    EXPECT_EQ(canvas.CountNot(0), Side * Side);
}

TEST_P(Coverage, survives_arbitrary_numbers)
{
    std::mt19937 engine{99};
    for (int round = 0; round < 600; ++round)
    {
        std::vector<std::uint8_t> bytes(600);
        for (std::uint8_t& byte : bytes)
            byte = static_cast<std::uint8_t>(engine());
        auto drawing = fuzz::StrangeDrawing::From({bytes.data(), bytes.size()});
        drawing.pass.lights = drawing.lights;
        Canvas canvas{drawing.width, drawing.height};
        DrawPicture(*driver_, canvas, drawing.pass, drawing.items);
        EXPECT_FALSE(canvas.IsMarginTouched());
    }
}

// --- perspective ---

/// The place on a triangle that a ray from the eye through a pixel hits, as weights of the corners.
struct Hit
{
    bool isHit = false;
    std::array<double, 3> weights{};
};

Hit Cast(const std::array<Double3, 3>& corners, const CameraPlace& place, int side, double x, double y)
{
    // The camera stands at the origin and looks along z in these tests.
    const Double3 ray{place.field * (2 * (x + 0.5) / side - 1), place.field * (1 - 2 * (y + 0.5) / side), place.front};
    const Double3 normal = Cross(corners[1] - corners[0], corners[2] - corners[0]);
    const double t = Dot(normal, corners[0]) / Dot(normal, ray);
    const Double3 point = ray * t;
    Hit hit{point.z >= place.front && point.z <= place.back, {}};
    for (int i = 0; i < 3; ++i)
    {
        const Double3& a = corners[(i + 1) % 3];
        const Double3& b = corners[(i + 2) % 3];
        hit.weights[i] = Dot(Cross(b - a, point - a), normal) / Dot(normal, normal);
        hit.isHit = hit.isHit && hit.weights[i] >= 0;
    }
    return hit;
}

TEST_P(Coverage, sees_what_rays_from_the_eye_hit_however_triangles_are_clipped)
{
    const CameraPlace place{{0, 0, 0}, {0, 0, 1}, 0.5, 1, 20};
    PassState pass = PerspectivePass(Side, Side, place);
    std::mt19937 engine{77};
    const auto number = [&](double limit) { return limit * (static_cast<double>(engine() >> 8) / (1 << 23) - 1); };
    int compared = 0;
    int seen = 0;
    for (int round = 0; round < 150; ++round)
    {
        // Many pass through the near plane, the eye's own plane and the sides.
        std::array<Double3, 3> corners;
        MeshMaker maker;
        std::vector<Corner> face;
        for (int i = 0; i < 3; ++i)
        {
            const Vector corner = Double3{number(6), number(6), number(6) + 4}.ToVector();
            corners[i] = corner;
            face.push_back({corner, 0, 0, {}, 0xFF000000U | 0xFFU << (8 * i)});
        }
        const Canvas canvas = Draw(pass, {UnlitItem(maker.Face(face).Make())});
        for (int y = 0; y < Side; y += 3)
            for (int x = 0; x < Side; x += 3)
            {
                const Hit hit = Cast(corners, place, Side, x, y);
                const auto agrees = [&](double dx, double dy)
                { return Cast(corners, place, Side, x + dx, y + dy).isHit == hit.isHit; };
                constexpr double Near = 0.02;
                if (!agrees(Near, Near) || !agrees(-Near, Near) || !agrees(Near, -Near) || !agrees(-Near, -Near))
                    continue; // an edge passes by
                ++compared;
                seen += hit.isHit ? 1 : 0;
                const Channels color = ChannelsOf(canvas.At(x, y));
                const auto expected = [&](int i) { return hit.isHit ? 255 * hit.weights[i] : 0; };
                const int actual[] = {color.blue, color.green, color.red};
                for (int i = 0; i < 3; ++i)
                    ASSERT_NEAR(actual[i], expected(i), 2) << "round " << round << " at " << x << ", " << y;
            }
    }
    EXPECT_GT(compared, 50000);
    EXPECT_GT(seen, 3000);
}

// --- lines and points ---

TEST_P(Coverage, draws_lines_of_any_length_where_exact_arithmetic_puts_them)
{
    // Short ones, and such as run through many tiles, in all directions; a scissor cuts them on all sides.
    constexpr int Width = 700;
    constexpr int Height = 150;
    constexpr int Scale = 256; // positions are whole numbers of 1/256 pixel
    PassState pass = PixelPass(Width, Height);
    pass.scissor = {37, 9, 650, 141};
    std::mt19937 engine{31};
    const auto below = [&](int limit) { return static_cast<std::int64_t>(engine() % (limit * Scale)); };
    auto mesh = std::make_shared<DrawMesh>(*OneFace({{0, 0, 0.5F}, {Width, 0, 0.5F}, {0, Height, 0.5F}}));
    mesh->edges.clear();
    std::vector<int> expected(Width * Height);
    for (int i = 0; i < 90; ++i)
    {
        const bool isShort = i % 3 != 0;
        const std::int64_t startX = below(Width - 20);
        const std::int64_t startY = below(Height - 20);
        const std::int64_t x[2] = {startX, isShort ? startX + below(20) : below(Width - 1)};
        const std::int64_t diagonal = startY + x[1] - startX; // as wide as high counts as wide
        const std::int64_t y[2] = {startY, isShort ? (i % 5 == 0 ? diagonal : startY + below(20)) : below(Height - 1)};
        const int first = i % 2;
        for (const int end : {first, 1 - first})
            AppendVertex(*mesh, {static_cast<float>(x[end]) / Scale, static_cast<float>(y[end]) / Scale, 0.5F});
        mesh->edges.push_back({mesh->VertexCount() - 2, mesh->VertexCount() - 1, 0, DrawMesh::NoFace});
        const bool isWide = std::abs(x[1] - x[0]) >= std::abs(y[1] - y[0]);
        const auto* major = isWide ? x : y;
        const auto* minor = isWide ? y : x;
        const int low = major[0] < major[1] ? 0 : 1;
        const std::int64_t length = major[1 - low] - major[low];
        bool isPoint = true;
        for (std::int64_t m = (major[low] + Scale - 1) / Scale; m * Scale < major[1 - low]; ++m)
        {
            isPoint = false;
            const std::int64_t rounded =
                ((minor[low] + Scale / 2) * length + (minor[1 - low] - minor[low]) * (m * Scale - major[low])) /
                (length * Scale);
            expected[static_cast<std::size_t>(isWide ? rounded * Width + m : m * Width + rounded)] = 1;
        }
        if (isPoint)
            expected[static_cast<std::size_t>((y[first] + Scale / 2) / Scale * Width +
                                              (x[first] + Scale / 2) / Scale)] = 1;
    }
    mesh->groups[0].edgeCount = static_cast<std::uint32_t>(mesh->edges.size());
    mesh->identity += 1U << 30;
    Canvas canvas{Width, Height};
    DrawPicture(*driver_, canvas, pass, {UnlitItem(mesh, FillStyle::Wireframe)});
    int different = 0;
    for (int row = 0; row < Height; ++row)
        for (int column = 0; column < Width; ++column)
        {
            const bool isInside = column >= pass.scissor.left && column < pass.scissor.right &&
                                  row >= pass.scissor.top && row < pass.scissor.bottom;
            const bool isExpected = isInside && expected[static_cast<std::size_t>(row * Width + column)] != 0;
            different += (canvas.At(column, row) != 0) != isExpected ? 1 : 0;
        }
    EXPECT_EQ(different, 0);
}

TEST_P(Coverage, draws_each_side_of_faces_once_and_no_diagonal)
{
    // A fold in the middle of a sheet, translucent: drawn twice it would be brighter than the other sides.
    MeshMaker maker;
    maker.color = HalfWhite;
    for (const auto& [left, right] : {std::pair{10.0F, 30.0F}, {30.0F, 50.0F}})
        maker.Polygon({{left, 10, 0.5F}, {right, 10, 0.5F}, {right, 50, 0.5F}, {left, 50, 0.5F}});
    PassState pass = PixelPass(Side, Side);
    pass.transparency = Transparency::Blended;
    const Canvas canvas = Draw(pass, {UnlitItem(maker.Make(), FillStyle::Wireframe)});
    EXPECT_EQ(canvas.CountNot(0), 40 * 5 - 2) << "the upper run shares two pixels with the upright ones";
    for (const int x : {10, 30, 50})
        EXPECT_EQ(canvas.At(x, 20), 0x808080U) << x;
}

TEST_P(Coverage, flat_lines_take_the_color_of_their_face_and_smooth_ones_blend_their_ends)
{
    MeshMaker maker;
    maker.Face({{{10, 10, 0.5F}, 0, 0, {}, 0xFFFF0000},
                {{50, 10, 0.5F}, 0, 0, {}, 0xFF0000FF},
                {{50, 50, 0.5F}, 0, 0, {}, 0xFF0000FF}});
    DrawItem item = UnlitItem(maker.Make(), FillStyle::Wireframe);
    EXPECT_EQ(Draw(PixelPass(Side, Side), {item}).At(50, 30), 0x0000FFU);
    const Channels middle = ChannelsOf(Draw(PixelPass(Side, Side), {item}).At(30, 10));
    EXPECT_NEAR(middle.red, 127.5, 1);
    EXPECT_NEAR(middle.blue, 127.5, 1);
    item.gouraud = false;
    EXPECT_EQ(Draw(PixelPass(Side, Side), {item}).At(50, 30), 0xFF0000U) << "of the face's first vertex";
}

TEST_P(Coverage, draws_the_pixel_nearest_to_a_point)
{
    const Canvas canvas =
        DrawFaces({{{10.4F, 10.4F, 0.5F}, {20.5F, 10.6F, 0.5F}, {30.6F, 40.5F, 0.5F}}}, FillStyle::Points);
    EXPECT_EQ(canvas.CountNot(0), 3);
    EXPECT_EQ(canvas.At(10, 10), 0xFFFFFFU);
    EXPECT_EQ(canvas.At(21, 11), 0xFFFFFFU);
    EXPECT_EQ(canvas.At(31, 41), 0xFFFFFFU);
}

} // namespace

} // namespace lumora::test
