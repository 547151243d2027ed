// What a person sees after RenderScene: passes, fog, overlay.
#include "viewport/LiveControl.h"

using namespace lumora;
using namespace lumora::test;

namespace
{

constexpr Color Red = 0xFFFF0000;
constexpr Color Green = 0xFF00FF00;
constexpr std::uint32_t HalfRed = 0x800000; // floor(255 * 0.5 + 0.5)
constexpr std::uint32_t FullRed = 0xFF0000;
constexpr std::uint32_t FullGreen = 0x00FF00;

// Two red squares side by side, sharing the edge x = 0, at depth 10, in half-strength ambient light.
std::shared_ptr<Frame> HalfLitScene()
{
    const auto scene = AmbientScene(0.5F);
    const auto mesh = MeshBuilder::Make();
    const Vector corners[] = {{-2, -2, 10}, {-2, 2, 10}, {0, 2, 10}, {0, -2, 10}, {2, 2, 10}, {2, -2, 10}};
    const std::int32_t faces[] = {4, 0, 1, 2, 3, 4, 3, 2, 4, 5, 0};
    mesh->AddFaces(corners, {}, faces);
    mesh->SetColor(Red);
    scene->AddVisual(mesh);
    return scene;
}

// A green square of half a unit in full light.
std::shared_ptr<Frame> GreenOverlay(float depth)
{
    const auto overlay = AmbientScene(1);
    overlay->AddVisual(Square(0, 0.5F, depth, 0.5F, Green));
    return overlay;
}

TEST(FrameStep, each_cool_mode_draws_its_passes_in_their_order)
{
    // Pixels: inside a face, on the shared edge, and where the overlay lies (on the edge and beside it).
    struct Row
    {
        int coolMode;
        float overlayDepth;
        std::uint32_t face;
        std::uint32_t edge;
        std::uint32_t overlayOnEdge;
        std::uint32_t overlayBeside;
    };
    const Row rows[] = {
        // Overlay, then scene: the nearer wins.
        {0, 5, HalfRed, HalfRed, FullGreen, FullGreen},
        {0, 20, HalfRed, HalfRed, HalfRed, HalfRed},
        // Flat scene, overlay, then all edges over a cleared depth buffer, unlit.
        {1, 5, HalfRed, FullRed, FullRed, FullGreen},
        {1, 20, HalfRed, FullRed, FullRed, HalfRed},
        // Edges, overlay, then the flat scene over its own edges.
        {2, 5, HalfRed, HalfRed, FullGreen, FullGreen},
        {-3, 20, HalfRed, HalfRed, HalfRed, HalfRed},
    };
    for (const Row& row : rows)
    {
        LiveControl control;
        control->SetScene(HalfLitScene());
        control->SetSceneOverlay(GreenOverlay(row.overlayDepth));
        control->SetCoolMode(row.coolMode);
        control->RenderScene();
        SCOPED_TRACE(testing::Message() << "CoolMode " << row.coolMode << ", overlay at " << row.overlayDepth);
        EXPECT_EQ(control.PixelAt(35, 60), row.face);
        EXPECT_EQ(control.PixelAt(50, 60), row.edge);
        const int overlayY = row.overlayDepth == 5 ? 40 : 47; // its centre on the screen
        EXPECT_EQ(control.PixelAt(50, overlayY), row.overlayOnEdge);
        EXPECT_EQ(control.PixelAt(51, overlayY), row.overlayBeside);
        EXPECT_EQ(control.PixelAt(5, 5), 0U);
        control->SetRenderOverlay(false);
        control->RenderScene();
        EXPECT_EQ(control.PixelAt(51, overlayY), row.face) << "without the overlay";
    }
}

TEST(FrameStep, fog_is_off_in_an_orthographic_picture_and_on_again_after_it)
{
    LiveControl control;
    const auto scene = AmbientScene(1);
    scene->AddVisual(Square(0, 0, 10, 100, Red));
    scene->SetSceneFogColor(0, 0, 1);
    scene->SetSceneFogMode(FogMode::Linear);
    scene->SetSceneFogParams(0, 20, 1);
    scene->SetSceneFogEnable(1);
    control->SetScene(scene);
    control->RenderScene();
    EXPECT_EQ(control.PixelAt(50, 50), 0x800080U) << "half way into the fog";
    control->SetProjectionType(D3DRMPROJECT_ORTHOGRAPHIC);
    control->RenderScene();
    EXPECT_EQ(control.PixelAt(50, 50), FullRed);
    EXPECT_EQ(scene->GetSceneFogEnable(), 1);
    control.Host().FailNext("RMViewport.Render", 1, error::ObjectNotSet);
    FailureOf([&] { control->RenderScene(); });
    EXPECT_EQ(scene->GetSceneFogEnable(), 1) << "whatever happens between";
}

TEST(FrameStep, a_scene_that_update_positions_shows_is_in_the_same_picture_even_when_it_drew_another_first)
{
    LiveControl control;
    control->SetScene(HalfLitScene());
    bool again = true;
    control->UpdatePositions.Connect(
        [&]
        {
            if (std::exchange(again, false))
                control->RenderScene();
            control->SetScene(GreenOverlay(10));
        });
    control->RenderScene();
    EXPECT_EQ(control.PixelAt(35, 60), 0U);
    EXPECT_EQ(control.PixelAt(50, 45), FullGreen);
}

TEST(FrameStep, waiting_for_the_blank_waits_once_a_picture)
{
    LiveControl control;
    control->SetWaitForVSYNC(true);
    const int before = control.Host().Display().VerticalBlankCount();
    control->RenderScene();
    control->RenderScene();
    EXPECT_EQ(control.Host().Display().VerticalBlankCount(), before + 2);
}

} // namespace
