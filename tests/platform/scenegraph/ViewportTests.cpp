// Devices and viewports: the projection, what is handed to the driver, and picking through pixels.
#include "base/Faults.h"
#include "platform/scenegraph/SceneDoubles.h"

namespace lumora
{

using test::DriverLog;
using test::IsNear;
using test::MakeCube;
using test::MakeDevice;
using test::Raises;

namespace
{

// A camera at the origin of a scene, on a device of its own.
struct Stage
{
    DriverLog log;
    std::shared_ptr<Frame> scene = Frame::Make();
    std::shared_ptr<Frame> camera = Frame::Make(scene);
    std::shared_ptr<Device> device;
    std::shared_ptr<RMViewport> viewport;

    Stage(int width, int height) : device(MakeDevice(log, width, height))
    {
        viewport = std::make_shared<RMViewport>(device, camera, 0, 0, width, height);
    }

    std::shared_ptr<MeshBuilder> AddCubeAt(float x, float y, float z)
    {
        const auto frame = Frame::Make(scene);
        frame->SetPosition(scene, x, y, z);
        auto cube = MakeCube(-1, 1);
        frame->AddVisual(cube);
        return cube;
    }

    const DriverLog::Drawn& Render()
    {
        viewport->Render(scene);
        return log.passes.back();
    }
};

Vector Divided(const Vector4& v)
{
    return {v.x / v.w, v.y / v.w, v.z / v.w};
}

// Where a driver of this pass puts a world point, by the driver's own equations.
Vector DeviceOf(const PassState& pass, Double3 world)
{
    const Double4 clip = Transform({world.x, world.y, world.z, 1}, pass.worldToCamera * pass.cameraToClip);
    return {static_cast<float>(pass.centreX + pass.halfWidth * clip.x / clip.w),
            static_cast<float>(pass.centreY - pass.halfHeight * clip.y / clip.w), static_cast<float>(clip.z / clip.w)};
}

} // namespace

TEST(Viewports, map_the_field_to_the_larger_side_with_square_pixels)
{
    for (const auto& [width, height] : {std::pair{200, 100}, {100, 200}})
    {
        Stage stage{width, height};
        stage.viewport->SetFront(2);
        stage.viewport->SetBack(50);
        stage.viewport->SetField(0.5F);
        const float x = static_cast<float>(width);
        const float y = static_cast<float>(height);
        EXPECT_TRUE(IsNear(Divided(stage.viewport->Transform({0, 0, 2})), {x / 2, y / 2, 0}, 1e-4));
        // 200 pixels over two fields of 0.5: a hundredth of a unit is two pixels, right and upwards.
        EXPECT_TRUE(IsNear(Divided(stage.viewport->Transform({0.01F, 0.02F, 2})), {x / 2 + 2, y / 2 - 4, 0}, 1e-4));
        EXPECT_TRUE(IsNear(Divided(stage.viewport->Transform({0, 0, 50})), {x / 2, y / 2, 1}, 1e-4));
        // Twice as deep, half as large; w is the depth along the look.
        const Vector4 deeper = stage.viewport->Transform({0.02F, 0, 4});
        EXPECT_EQ(deeper.w, 4);
        EXPECT_NEAR(deeper.x / deeper.w, x / 2 + 2, 1e-4);
    }
}

TEST(Viewports, transform_there_and_back_whatever_the_projection_and_sampling)
{
    for (int projection = 0; projection < 4; ++projection)
        for (const int factor : {1, 2, 4})
        {
            SCOPED_TRACE(testing::Message() << "projection " << projection << " sampled " << factor);
            Stage stage{640, 480};
            stage.device->SetSamplingFactor(factor);
            stage.viewport->SetProjection(projection);
            stage.viewport->SetField(projection % 2 == 0 ? 0.5F : 20);
            stage.camera->SetPosition(stage.scene, 3, -4, 5);
            stage.camera->SetOrientation(stage.scene, {1, 2, 3}, {0, 1, 0});
            const float ahead = projection < 2 ? 1.0F : -1.0F;
            for (const float depth : {1.5F, 20.0F, 90.0F})
            {
                const Vector world =
                    TransformPoint({0.2F * depth, -0.1F * depth, ahead * depth}, stage.camera->WorldTransform())
                        .ToVector();
                const Vector4 screen = stage.viewport->Transform(world);
                EXPECT_GE(screen.z / screen.w, 0);
                EXPECT_LE(screen.z / screen.w, 1);
                EXPECT_TRUE(IsNear(stage.viewport->InverseTransform(screen), world, 2e-3 * depth));
                // The second route: the driver's equations, and the place of a shown pixel among device pixels.
                const Vector device = DeviceOf(stage.Render().pass, world);
                const auto f = static_cast<float>(factor);
                EXPECT_TRUE(IsNear(
                    device,
                    {f * screen.x / screen.w + (f - 1) / 2, f * screen.y / screen.w + (f - 1) / 2, screen.z / screen.w},
                    1e-2));
            }
        }
}

TEST(Viewports, undo_the_weight_of_a_screen_vector)
{
    Stage stage{100, 100};
    const Vector once = stage.viewport->InverseTransform({30, 40, 0.25F, 1});
    EXPECT_TRUE(IsNear(stage.viewport->InverseTransform({90, 120, 0.75F, 3}), once, 1e-5));
    const auto refused = [&](Vector4 v)
    { return Raises(error::RMBadValue, [&] { stage.viewport->InverseTransform(v); }); };
    EXPECT_TRUE(refused({1, 1, 0, 0}));
    EXPECT_TRUE(refused({NAN, 1, 0, 1}));
    stage.viewport->SetBack(0.5F);
    EXPECT_TRUE(refused({1, 1, 0, 1})) << "the planes are the wrong way round";
    stage.viewport->Render(stage.scene);
    EXPECT_TRUE(stage.log.passes.empty()) << "and nothing is drawn";
}

TEST(Viewports, refuse_settings_without_meaning_and_are_cut_to_their_device)
{
    Stage stage{100, 80};
    for (const float value : {0.0F, -1.0F, INFINITY, NAN})
    {
        EXPECT_TRUE(Raises(error::RMBadValue, [&] { stage.viewport->SetFront(value); }));
        EXPECT_TRUE(Raises(error::RMBadValue, [&] { stage.viewport->SetBack(value); }));
        EXPECT_TRUE(Raises(error::RMBadValue, [&] { stage.viewport->SetField(value); }));
    }
    EXPECT_TRUE(Raises(error::RMBadValue, [&] { stage.viewport->SetProjection(4); }));
    const RMViewport cut{stage.device, stage.camera, 90, 70, 1000, 1000};
    EXPECT_EQ(cut.Width(), 10);
    EXPECT_EQ(cut.Height(), 10);
    EXPECT_TRUE(Raises(error::RMBadValue, [&] { RMViewport(stage.device, stage.camera, 100, 0, 1, 1); }));
    EXPECT_TRUE(Raises(error::RMBadValue, [&] { RMViewport(stage.device, stage.camera, 0, -1, 1, 1); }));
    EXPECT_TRUE(Raises(error::RMBadObject, [&] { RMViewport(stage.device, nullptr, 0, 0, 1, 1); }));
}

TEST(Viewports, draw_at_most_what_device_and_mesh_both_allow)
{
    struct Case
    {
        std::uint32_t device, mesh;
        FillStyle fill;
        bool gouraud, lit;
    };
    for (const Case& c :
         {Case{0x89, 0x89, FillStyle::Solid, true, true}, Case{0x88, 0x89, FillStyle::Solid, false, true},
          Case{0x40, 0x89, FillStyle::Wireframe, false, false}, Case{0x89, 0x40, FillStyle::Wireframe, false, false},
          Case{0x89, 0x09, FillStyle::Points, true, true}, Case{0x8A, 0x81, FillStyle::Solid, true, false}})
    {
        SCOPED_TRACE(testing::Message() << std::hex << c.device << ' ' << c.mesh);
        Stage stage{100, 100};
        stage.AddCubeAt(0, 0, 10)->SetQuality(c.mesh);
        stage.device->SetQuality(c.device);
        const DrawItem item = stage.Render().items.at(0);
        EXPECT_EQ(item.fill, c.fill);
        EXPECT_EQ(item.gouraud, c.gouraud);
        EXPECT_EQ(item.lit, c.lit);
    }
}

TEST(Viewports, light_a_scene_without_lights_from_the_camera)
{
    Stage stage{100, 100};
    stage.AddCubeAt(0, 0, 10);
    stage.camera->SetOrientation(stage.scene, {1, 0, 1}, {0, 1, 0});
    const auto& lights = stage.Render().lights;
    ASSERT_EQ(lights.size(), 2U);
    EXPECT_EQ(lights[0].kind, LightKind::Ambient);
    EXPECT_GT(lights[0].color.x, 0) << "nothing is ever black";
    EXPECT_EQ(lights[1].kind, LightKind::Directional);
    EXPECT_TRUE(IsNear(lights[1].direction.ToVector(), {0.70710678F, 0, 0.70710678F}, 1e-6));
    EXPECT_LE(lights[0].color.x + lights[1].color.x, 1);

    stage.scene->AddLight(std::make_shared<Light>(LightKind::Point, Vector{1, 0, 0}));
    EXPECT_EQ(stage.Render().lights.size(), 1U);
    stage.viewport->Render(Frame::Make());
    EXPECT_EQ(stage.log.passes.back().lights.size(), 2U) << "the lights of one root do not shine in another";
}

TEST(Viewports, tell_the_driver_the_state_of_device_and_scene)
{
    Stage stage{100, 100};
    stage.device->SetRenderMode(rendermode::ViewDependentSpecular);
    stage.device->SetTextureQuality(5);
    stage.device->GetDirect3DDevice2()->SetRenderState(22, 2);
    stage.scene->SetSceneFogMode(FogMode::Exponential);
    stage.scene->SetSceneFogParams(1, 2, 0.25F);
    EXPECT_EQ(stage.Render().pass.fog.mode, FogMode::None);
    stage.scene->SetSceneFogEnable(1);
    const PassState pass = stage.Render().pass;
    EXPECT_TRUE(pass.viewDependentSpecular);
    EXPECT_EQ(pass.filter, TextureFilter::LinearMipLinear);
    EXPECT_EQ(pass.cull, CullMode::Clockwise);
    EXPECT_EQ(pass.fog.mode, FogMode::Exponential);
    EXPECT_EQ(pass.fog.density, 0.25);
    EXPECT_TRUE(Raises(error::DDInvalidParams, [&] { stage.device->GetDirect3DDevice2()->SetRenderState(22, 0); }));
    EXPECT_TRUE(Raises(error::DDInvalidParams, [&] { stage.device->GetDirect3DDevice2()->SetRenderState(7, 1); }));
    EXPECT_TRUE(Raises(error::RMBadValue, [&] { stage.device->SetTextureQuality(6); }));
    EXPECT_TRUE(Raises(error::RMBadValue, [&] { stage.device->SetQuality(0x100); }));
}

TEST(Viewports, clear_their_rectangle_with_the_background_of_the_cameras_root)
{
    Stage stage{100, 80};
    stage.scene->SetSceneBackgroundRGB(1, 0.5F, 0);
    RMViewport part{stage.device, stage.camera, 10, 20, 30, 40};
    part.Clear(3);
    part.Clear(2);
    ASSERT_EQ(stage.log.clears.size(), 2U);
    EXPECT_EQ(stage.log.clears[0].color, 0xFF8000U);
    EXPECT_EQ(stage.log.clears[0].area, (PixelRect{10, 20, 40, 60}));
    EXPECT_TRUE(stage.log.clears[0].parts.color && stage.log.clears[0].parts.depth);
    EXPECT_FALSE(stage.log.clears[1].parts.color);
}

TEST(Viewports, pick_what_is_under_a_pixel_and_say_where_on_the_screen)
{
    for (const int factor : {1, 2})
        for (int projection = 0; projection < 4; ++projection)
        {
            SCOPED_TRACE(testing::Message() << "projection " << projection << " sampled " << factor);
            Stage stage{100 * factor, 100 * factor};
            stage.device->SetSamplingFactor(factor);
            stage.viewport->SetProjection(projection);
            stage.viewport->SetField(projection % 2 == 0 ? 0.5F : 5);
            const float ahead = projection < 2 ? 1.0F : -1.0F;
            const auto cube = stage.AddCubeAt(0.5F, 0.25F, 10 * ahead);
            stage.AddCubeAt(0, 0, 110 * ahead); // beyond the back plane
            stage.AddCubeAt(0, 0, 60 * ahead)
                ->Translate(projection % 2 == 0 ? 30.0F : 5.0F, 0, 0); // over the right edge
            const Vector screen = Divided(stage.viewport->Transform({0.5F, 0.25F, 9 * ahead}));
            const auto x = static_cast<int>(std::lround(screen.x));
            const auto y = static_cast<int>(std::lround(screen.y));
            const auto hits = stage.viewport->Pick(stage.scene, x, y);
            ASSERT_EQ(hits->GetSize(), 2) << "front and back";
            const PickHit& front = hits->GetPick(0);
            EXPECT_EQ(front.visual, cube);
            EXPECT_EQ(front.framePath.size(), 2U);
            EXPECT_TRUE(
                IsNear(front.description.position, {static_cast<float>(x), static_cast<float>(y), screen.z}, 1e-5));
            const Vector p = front.description.position;
            EXPECT_NEAR(stage.viewport->InverseTransform({p.x, p.y, p.z, 1}).z, 9 * ahead, 1e-3);
            EXPECT_EQ(stage.viewport->Pick(stage.scene, 2, 2)->GetSize(), 0);
            EXPECT_EQ(stage.viewport->Pick(stage.scene, 100, 50)->GetSize(), 0) << "outside the viewport";
        }
}

TEST(Viewports, speak_of_the_scene_of_their_camera_wherever_its_root_stands)
{
    Stage stage{100, 100};
    const auto cube = stage.AddCubeAt(0, 0, 10);
    stage.scene->AddTranslation(CombineType::After, 100, 0, 0);
    const Vector from = stage.viewport->InverseTransform({50, 50, 0, 1});
    const Vector to = stage.viewport->InverseTransform({50, 50, 1, 1});
    const auto hits = stage.scene->RayPick(stage.scene, {to - from, from}, RayPickFlags::Primitives);
    ASSERT_EQ(hits->GetSize(), 2);
    EXPECT_TRUE(IsNear(hits->GetPick(0).description.position, {0, 0, 9}, 1e-4));
    EXPECT_EQ(stage.Render().items.size(), 1U);
}

TEST(Viewports, end_their_pass_when_drawing_fails_and_can_be_asked_again)
{
    Stage stage{100, 100};
    stage.AddCubeAt(0, 0, 10);
    stage.log.failDraw = RuntimeError{error::RMBadDevice, "driver", "lost"};
    EXPECT_TRUE(Raises(error::RMBadDevice, [&] { stage.viewport->Render(stage.scene); }));
    EXPECT_TRUE(stage.log.passes.back().ended);
    EXPECT_EQ(stage.device->TakeTriangleCount(), 0U);
    stage.log.failDraw.reset();
    faults::FailNext("RMViewport.Render", 1, error::RMBadDevice);
    EXPECT_TRUE(Raises(error::RMBadDevice, [&] { stage.viewport->Render(stage.scene); }));
    EXPECT_EQ(stage.Render().items.size(), 1U);
    EXPECT_EQ(stage.device->TakeTriangleCount(), 12U);
    EXPECT_EQ(stage.device->TakeTriangleCount(), 0U) << "counted since it was asked for last";
    faults::Clear();
}

} // namespace lumora
