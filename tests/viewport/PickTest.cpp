// What a host finds under a point of the control.
#include "base/Faults.h"
#include "camera/Space.h"
#include "viewport/LiveControl.h"
#include "viewport/PickResult.h"

#include <limits>

namespace lumora::test
{

namespace
{

// The world point under a pixel on a plane at this depth, of a camera at the origin that looks along z: `field` is half
// the front plane's extent along the larger side, and whole numbers are pixel centres.
Vector UnderPixel(int x, int y, int width, int height, float z, bool perspective)
{
    const double unitsPerPixel = 2.0 * 0.5 / std::max(width, height) * (perspective ? z : 1.0);
    return {static_cast<float>((x - width / 2.0) * unitsPerPixel),
            static_cast<float>((height / 2.0 - y) * unitsPerPixel), z};
}

struct PickScene : ::testing::Test
{
    PickScene()
    {
        control->SetScene(scene);
        control->SetCameraPosition(0, 0, 0);
    }

    std::shared_ptr<MeshBuilder> Show(const std::shared_ptr<Frame>& frame, float z, std::int32_t appData = 1)
    {
        const auto mesh = Square(0, 0, z, 2, 0xFFFF0000);
        mesh->SetAppData(appData);
        frame->AddVisual(mesh);
        return mesh;
    }

    std::shared_ptr<Frame> CameraParent() { return control->Camera()->Parent(); }

    LiveControl control;
    std::shared_ptr<Frame> scene = AmbientScene(1);
};

} // namespace

TEST(Pick, finds_the_place_under_the_pixel_in_every_window_projection_and_unit)
{
    for (const auto& [width, height] : {std::pair{100, 100}, {64, 200}, {301, 57}})
        for (const bool perspective : {true, false})
            for (const auto unit : {headless::PositionUnit::Pixels, headless::PositionUnit::Twips})
            {
                SCOPED_TRACE(::testing::Message() << width << 'x' << height << " perspective " << perspective);
                LiveControl control{UsualSettings(), MakeHost(width, height)};
                control.Host().SetPositionUnit(unit);
                control->SetBorderStyle(tdlBSNone);
                control->RenderScene();
                const auto scene = Frame::Make();
                const auto holder = Frame::Make(scene);
                const auto wall = Square(0, 0, 8, 100, 0xFFFFFFFF);
                holder->AddVisual(wall);
                control->SetProjectionType(perspective ? D3DRMPROJECT_PERSPECTIVE : D3DRMPROJECT_ORTHOGRAPHIC);
                control->SetScene(scene);
                control->SetCameraPosition(0, 0, 0);
                const float scale = unit == headless::PositionUnit::Twips ? 15.0F : 1.0F;
                const int x = width / 3;
                const int y = height / 4;
                const auto expected = UnderPixel(x, y, width, height, 8, perspective);
                const PickResult ray = control->Pick(tdlScene, x * scale, y * scale);
                EXPECT_EQ(ray.PickedFrame, holder);
                EXPECT_EQ(ray.PickedMeshbuilder, wall);
                ExpectNear(ray.PickedWorld, expected, "place", 1e-4F);

                const auto overlay = Frame::Make();
                overlay->AddVisual(wall);
                control->SetSceneOverlay(overlay);
                const PickResult byViewport = control->Pick(tdlSceneOverlay, x * scale, y * scale);
                EXPECT_EQ(byViewport.PickedFrame, overlay);
                ExpectNear(byViewport.PickedWorld, expected, "place", 2e-3F); // depth is stored near 1 there
            }
}

TEST_F(PickScene, rounds_positions_to_the_pixel_they_lie_in_or_to_the_nearest)
{
    Show(scene, 10);
    const auto pixelOf = [](float worldX) { return std::lround(worldX / 10 * 100 + 50); };
    for (const auto [position, within, nearest] :
         {std::array{40.5F, 40.0F, 40.0F}, {41.5F, 41.0F, 42.0F}, {40.9F, 40.0F, 41.0F}})
    {
        EXPECT_EQ(pixelOf(control->Pick(tdlScene, position, 50).PickedWorld.x), within) << position;
        PickResult fixed;
        control->PickFixScrewyD3DBug(tdlScene, position, 50, true, true, fixed.PickedFrame, fixed.PickedMeshbuilder,
                                     fixed.PickedFaceID, fixed.PickedWorld.x, fixed.PickedWorld.y, fixed.PickedWorld.z);
        EXPECT_EQ(pixelOf(fixed.PickedWorld.x), nearest) << position;
    }
}

TEST_F(PickScene, passes_over_what_does_not_count)
{
    const auto hidden = Frame::Make(scene);
    const auto wire = Frame::Make(scene);
    const auto solid = Frame::Make(scene);
    Show(hidden, 5, 300);
    Show(wire, 6, 7)->SetQuality(quality::Wireframe);
    Show(solid, 7, -101);
    const auto frameOf = [&](bool wireframe, bool zero) { return control->Pick(tdlScene, 50, 50, wireframe, zero); };
    EXPECT_EQ(frameOf(false, false).PickedFrame, solid);
    EXPECT_EQ(frameOf(true, false).PickedFrame, wire);
    EXPECT_EQ(frameOf(false, true).PickedFrame, hidden);

    // Nothing accepted: no frame, but the place of the last that counted is told.
    solid->SetPosition(nullptr, 0, 0, -100);
    const PickResult refused = frameOf(false, false);
    EXPECT_EQ(refused.PickedFrame, nullptr);
    EXPECT_EQ(refused.PickedMeshbuilder, nullptr);
    EXPECT_NEAR(refused.PickedWorld.z, 6, 1e-3);
}

TEST_F(PickScene, searches_scene_and_overlay_as_asked_and_leaves_both_as_they_were)
{
    const auto thing = Frame::Make(scene);
    Show(thing, 10);
    EXPECT_EQ(FailureOf([&] { control->Pick(tdlAll, 50, 50); }).Source(), "Viewport");
    const auto overlay = Frame::Make();
    Show(overlay, 5);
    control->SetSceneOverlay(overlay);
    EXPECT_EQ(control->Pick(tdlScene, 50, 50).PickedFrame, thing);
    EXPECT_EQ(control->Pick(tdlAll, 50, 50).PickedFrame, overlay);
    EXPECT_EQ(control->Pick(tdlSceneOverlay, 50, 50).PickedFrame, overlay);
    EXPECT_EQ(overlay->Parent(), nullptr);
    EXPECT_EQ(CameraParent(), scene);

    PickResult kept{thing, nullptr, 12, {1, 2, 3}};
    control->Pick(static_cast<tdlPickMethod>(3), 50, 50, true, true, kept.PickedFrame, kept.PickedMeshbuilder,
                  kept.PickedFaceID, kept.PickedWorld.x, kept.PickedWorld.y, kept.PickedWorld.z);
    EXPECT_EQ(kept.PickedFrame, thing);
    EXPECT_EQ(kept.PickedFaceID, 12);
    EXPECT_EQ(kept.PickedWorld, (Vector{1, 2, 3}));

    for (const char* operation : {"Frame.RayPick", "RMViewport.Pick"})
    {
        faults::FailNext(operation, 1, error::RMBadValue);
        const auto method = operation[0] == 'F' ? tdlAll : tdlSceneOverlay;
        EXPECT_EQ(FailureOf([&] { control->Pick(method, 50, 50); }).Number(), error::RMBadValue);
        EXPECT_EQ(overlay->Parent(), nullptr);
        EXPECT_EQ(CameraParent(), scene);
    }
}

TEST_F(PickScene, a_miss_beside_a_box_leaves_objects_alone_and_one_within_a_box_makes_a_flat_pass)
{
    control->SetExposeDDSurface(true);
    const auto triangle = MeshBuilder::Make();
    const Vector corners[] = {{-4, -4, 10}, {-4, 4, 10}, {4, 4, 10}};
    const std::int32_t faces[] = {3, 0, 1, 2, 0};
    triangle->AddFaces(corners, {}, faces);
    scene->AddVisual(triangle);
    control->RenderScene();
    const auto passesOfNextPicture = [&]
    {
        faults::Record();
        control->RenderSceneCorrectTranslucency();
        const auto calls = faults::Recorded();
        return std::ranges::count(calls, "RMViewport.Render");
    };
    const auto usual = passesOfNextPicture();
    PickResult kept{scene, triangle, 3, {1, 1, 1}};
    const auto pick = [&](float x, float y)
    {
        control->Pick(tdlScene, x, y, true, true, kept.PickedFrame, kept.PickedMeshbuilder, kept.PickedFaceID,
                      kept.PickedWorld.x, kept.PickedWorld.y, kept.PickedWorld.z);
    };
    pick(2, 2); // beside everything
    EXPECT_EQ(kept.PickedFrame, scene);
    EXPECT_EQ(kept.PickedWorld, Vector{});
    EXPECT_EQ(passesOfNextPicture(), usual);
    kept = {};
    pick(75, 75); // in the triangle's box, beside its face
    EXPECT_EQ(kept.PickedFrame, nullptr);
    EXPECT_EQ(passesOfNextPicture(), usual + 1);
    EXPECT_EQ(passesOfNextPicture(), usual);
    control->PickFixScrewyD3DBug(tdlScene, 75, 75, true, true, kept.PickedFrame, kept.PickedMeshbuilder,
                                 kept.PickedFaceID, kept.PickedWorld.x, kept.PickedWorld.y, kept.PickedWorld.z);
    EXPECT_EQ(passesOfNextPicture(), usual); // by the ray alone
}

TEST_F(PickScene, a_scene_below_frames_that_move_it_is_searched_like_a_root)
{
    Show(Frame::Make(scene), 3);
    control->SetCollisionDetection(true);
    control->SetCollisionSamples(3);
    const auto root = Frame::Make();
    const auto above = Frame::Make(root);
    std::optional<std::pair<Vector, Vector>> ofRoot;
    for (const auto& change :
         std::vector<std::function<void()>>{[] {}, [&] { above->AddChild(scene); },
                                            [&] { above->SetPosition(nullptr, 5, -2, 40); },
                                            [&] {
                                                above->AddRotation(CombineType::Before, {1, 2, 3}, 0.7F);
                                            },
                                            [&] { above->AddScale(CombineType::Before, 2, 2, 2); }})
    {
        change();
        control->SetCameraPosition(0, 0, 0);
        const PickResult picked = control->Pick(tdlScene, 60, 45);
        EXPECT_TRUE(picked.PickedFrame);
        const Vector left = control->AddCameraMovement({0, 0, 20}, tdlAdvance);
        EXPECT_LT(left.z, 3) << "stopped by the square";
        if (!ofRoot)
            ofRoot = {picked.PickedWorld, left};
        ExpectNear(picked.PickedWorld, ofRoot->first, "place", 1e-4F);
        ExpectNear(left, ofRoot->second, "place", 1e-4F);
    }
}

TEST(Pick, says_of_a_hit_without_a_face_that_there_is_one_and_takes_the_next)
{
    struct Hits : HitSource
    {
        std::optional<PickHit> Next() override
        {
            if (next == 2)
                return std::nullopt;
            return PickHit{mesh, {Frame::Make()}, {next++ == 0 ? -1 : 4, {}}};
        }
        std::shared_ptr<MeshBuilder> mesh = Square(0, 0, 5, 1, 0);
        std::int32_t next = 0;
    };
    const auto host = MakeHost();
    PickResult picked;
    EXPECT_TRUE(ChooseHit(PickedArray{std::make_unique<Hits>()}, {true, true}, picked, host->Display()).accepted);
    EXPECT_EQ(picked.PickedFaceID, 4);
    ASSERT_EQ(host->Display().Messages().size(), 1U);
    EXPECT_EQ(host->Display().Messages()[0].text, "got a negative face element");
    EXPECT_EQ(host->Display().Messages()[0].title, "");
}

TEST_F(PickScene, answers_odd_questions_with_nothing_or_a_clear_error)
{
    EXPECT_EQ(control->Pick(tdlScene, 50, 50).PickedFrame, nullptr); // an empty scene
    const auto thing = Frame::Make(scene);
    Show(thing, 10);
    for (const float outside : {-500.0F, 5000.0F})
        EXPECT_EQ(control->Pick(tdlScene, outside, 50).PickedFrame, nullptr);
    for (const float bad : {std::numeric_limits<float>::quiet_NaN(), 1e20F})
        EXPECT_EQ(FailureOf([&] { control->Pick(tdlScene, bad, 50); }).Number(), error::Overflow);
    thing->AddScale(CombineType::Before, 0, 1, 1);
    EXPECT_EQ(control->Pick(tdlScene, 50, 50).PickedFrame, nullptr);

    // A camera inside an object sees, and picks, its far wall from within.
    const auto room = Frame::Make(scene);
    for (const float z : {-3.0F, 3.0F})
        Show(room, z);
    EXPECT_NEAR(control->Pick(tdlScene, 50, 50).PickedWorld.z, 3, 1e-4);

    control->SetScene(nullptr);
    EXPECT_EQ(FailureOf([&] { control->Pick(tdlScene, 50, 50); }).Number(), error::ObjectNotSet);
    control->Terminate();
    EXPECT_EQ(FailureOf([&] { control->Pick(tdlScene, 50, 50); }).Source(), "vptVantixViewport");
}

} // namespace lumora::test
