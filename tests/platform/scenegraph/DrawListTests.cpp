// What was drawn before never shows: after any edits a scene draws as one that was built that way.
#include "platform/scenegraph/EditedScene.h"

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <thread>

namespace lumora
{

namespace
{

using test::DriverLog;
using test::MakeDevice;

constexpr int Side = 96;

/// The visuals that cross the view and the lights, walked and transformed anew.
struct Expected
{
    struct Item
    {
        std::shared_ptr<const DrawMesh> mesh;
        Matrix4 world;
        bool gouraud;
    };

    Matrix4 worldToClip;
    std::vector<Item> items;

    void Walk(const Frame& frame, const Matrix4& above)
    {
        const Matrix4 world = frame.LocalTransform() * above;
        for (const auto& visual : frame.Visuals())
        {
            auto& mesh = dynamic_cast<MeshBuilder&>(*visual);
            if (Crosses(mesh.GetBox(), world * worldToClip))
                items.push_back({mesh.Compiled(), world, mesh.GetQuality() == quality::Gouraud});
        }
        for (const auto& child : frame.Children())
            Walk(*child, world);
    }

    static bool Crosses(const Box& box, const Matrix4& toClip)
    {
        for (int plane = 0; plane < 6; ++plane)
        {
            bool isBeyond = true;
            for (int corner = 0; corner < 8; ++corner)
            {
                const Double3 p{box.Corner(corner)};
                const Double4 c = Transform({p.x, p.y, p.z, 1}, toClip);
                const double inside[6] = {c.w + c.x, c.w - c.x, c.w + c.y, c.w - c.y, c.z, c.w - c.z};
                isBeyond = isBeyond && inside[plane] < 0;
            }
            if (isBeyond)
                return false;
        }
        return true;
    }
};

/// Those of the scene that `top` is part of; without any the viewport brings its own.
void ExpectLights(Frame& top, const std::vector<LightState>& lights)
{
    std::vector<Double3> places;
    const std::function<void(Frame&)> walk = [&](Frame& frame)
    {
        places.insert(places.end(), frame.Lights().size(), frame.WorldTransform().Row(3));
        for (const auto& child : frame.Children())
            walk(*child);
    };
    walk(*top.Root());
    if (places.empty())
        return;
    ASSERT_EQ(lights.size(), places.size());
    for (std::size_t i = 0; i < places.size(); ++i)
        EXPECT_EQ(Length(lights[i].position - places[i]), 0) << "light " << i;
}

/// What is drawn of a scene, or of a part of it, from a camera beside it.
void ExpectFresh(Frame& top, const std::shared_ptr<Frame>& camera)
{
    DriverLog log;
    RMViewport viewport{MakeDevice(log, Side, Side), camera, 0, 0, Side, Side};
    viewport.SetField(0.8F);
    viewport.Render(top.shared_from_this());
    const DriverLog::Drawn& drawn = log.passes.back();
    Expected expected{drawn.pass.worldToCamera * drawn.pass.cameraToClip, {}};
    expected.Walk(top, top.Parent() ? top.Parent()->WorldTransform() : Matrix4::Identity());
    ASSERT_EQ(drawn.items.size(), expected.items.size());
    for (std::size_t i = 0; i < drawn.items.size(); ++i)
        ASSERT_TRUE(drawn.items[i].mesh == expected.items[i].mesh && drawn.items[i].world == expected.items[i].world &&
                    drawn.items[i].gouraud == expected.items[i].gouraud)
            << "item " << i;
    ExpectLights(top, drawn.lights);
}

} // namespace

TEST(DrawnScenes, show_after_any_edits_what_a_fresh_scene_shows)
{
    const auto camera = Frame::Make();
    camera->SetPosition(nullptr, 0, 0, -4);
    for (const int frames : {2, 12, 200}) // in small scenes much comes last, and all is out of view at times
        for (unsigned seed = 0; seed < 20; ++seed)
        {
            SCOPED_TRACE(std::to_string(frames) + " frames at first, seed " + std::to_string(seed));
            test::EditedScene scene{seed, frames};
            for (int picture = 0; picture < 60 && !::testing::Test::HasFailure(); ++picture)
            {
                ExpectFresh(picture % 2 == 0 ? *scene.Root() : *scene.AnyFrame(), camera);
                for (int edit = 0; edit < picture % 7; ++edit)
                    scene.Edit();
            }
        }
}

// The thread sanitizer watches. Materials and textures may be shared by threads as long as none edits them.
TEST(DrawnScenes, are_drawn_while_another_thread_builds_and_edits_meshes_and_miss_no_edit)
{
    const auto shared = std::make_shared<Material>(5.0F);
    std::atomic<bool> isDone{false};
    std::shared_ptr<MeshBuilder> built;
    std::thread loader{[&]
                       {
                           do
                           {
                               built = test::MakeCube(-0.3F, 0.3F);
                               built->SetMaterial(shared);
                               built->SetColor(0xFF00FF00);
                               built->SetQuality(quality::Flat);
                               built->Compiled();
                               std::make_shared<Material>(1.0F)->SetEmissive(1, 0, 0);
                           } while (!isDone);
                       }};
    const auto scene = Frame::Make();
    const auto camera = Frame::Make(scene);
    const auto mesh = test::MakeCube(-0.3F, 0.3F);
    mesh->SetMaterial(shared);
    scene->AddVisual(mesh);
    camera->SetPosition(nullptr, 0, 0, -4);
    for (int i = 0; i < 50; ++i)
    {
        ExpectFresh(*scene, camera);
        mesh->SetColor(i % 2 == 0 ? 0xFFFF0000 : 0xFF0000FF);
    }
    isDone = true;
    loader.join();
    scene->AddVisual(built);
    ExpectFresh(*scene, camera);
}

} // namespace lumora
