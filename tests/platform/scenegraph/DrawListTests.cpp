// What was drawn before never shows: after any edits a scene draws as one that was built that way.
#include "platform/drivers/rgb/RgbDriver.h"
#include "platform/scenegraph/SceneDoubles.h"

#include <functional>
#include <gtest/gtest.h>
#include <random>

namespace lumora
{

namespace
{

using test::DriverLog;
using test::MakeCube;
using test::MakeDevice;

constexpr int Side = 96;

using FramePointer = std::shared_ptr<Frame>;

/// Draws into a picture that can be read.
struct PixelDevice
{
    struct Driver final : lumora::Driver
    {
        std::unique_ptr<lumora::Driver> inner = MakeRgbDriver({.threads = 1});
        PixelView& target;

        explicit Driver(PixelView& seen) : target(seen) {}
        void SetTarget(const PixelView& view) override { inner->SetTarget(target = view); }
        void Clear(ClearParts parts, const PixelRect& area, std::uint32_t color) override
        {
            inner->Clear(parts, area, color);
        }
        void Begin(const PassState& pass) override { inner->Begin(pass); }
        void Draw(const DrawItem& item) override { inner->Draw(item); }
        void End() override { inner->End(); }
        void Finish() override { inner->Finish(); }
    };

    PixelView target;
    std::shared_ptr<Device> device =
        Device::FromClipper(std::make_unique<Driver>(target), std::make_shared<Clipper>(), Side, Side);

    std::vector<std::uint32_t> Drawn(const FramePointer& scene, const FramePointer& camera)
    {
        RMViewport viewport{device, camera, 0, 0, Side, Side};
        viewport.SetField(0.8F);
        viewport.Clear(clearflags::Target | clearflags::Depth);
        viewport.Render(scene);
        device->Update();
        return {target.pixels, target.pixels + std::ptrdiff_t{Side} * Side};
    }
};

void CopyInto(const FramePointer& copy, const Frame& frame)
{
    copy->AddTransform(CombineType::Replace, frame.LocalTransform());
    for (const auto& visual : frame.Visuals())
        copy->AddVisual(visual);
    for (const auto& light : frame.Lights())
        copy->AddLight(light);
    for (const auto& child : frame.Children())
        CopyInto(Frame::Make(copy), *child);
}

/// The visuals that cross the view, walked and transformed anew.
struct Expected
{
    Matrix4 worldToClip;
    std::vector<std::pair<std::shared_ptr<const DrawMesh>, Matrix4>> items;

    void Walk(const Frame& frame, const Matrix4& above)
    {
        const Matrix4 world = frame.LocalTransform() * above;
        for (const auto& visual : frame.Visuals())
        {
            auto& mesh = dynamic_cast<MeshBuilder&>(*visual);
            if (Crosses(mesh.GetBox(), world * worldToClip))
                items.emplace_back(mesh.Compiled(), world);
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

class EditedScene
{
public:
    EditedScene(unsigned seed, int frames) : random_(seed)
    {
        for (int i = 0; i < 5; ++i)
            meshes_.push_back(MakeCube(-0.3F, 0.3F));
        meshes_[1]->SetMaterial(material_);
        camera_->SetPosition(nullptr, 0, 0, -4);
        for (int i = 0; i < frames; ++i)
            AddFrame();
    }

    void Edit()
    {
        const std::function<void()> edits[] = {
            [&] { AddFrame(); },
            [&] { frames_.push_back(Frame::Make(root_)), Any(frames_)->AddVisual(Any(meshes_)); },
            [&] { Move(*Any(frames_)); },
            [&] { Move(*Any(frames_)); },
            [&] { Any(frames_)->WorldTransform(); },
            [&] { Any(frames_)->AddScale(CombineType::Before, 0, 1, 1); },
            [&] { Remove(Any(frames_)); },
            [&] { Reparent(Any(frames_), Any(frames_)); },
            [&] { Hide(Any(frames_)); },
            [&] { Any(frames_)->AddVisual(Any(meshes_)); },
            [&] {
                Any(frames_)->AddLight(std::make_shared<Light>(LightKind::Point, Vector{0.2F, 0.1F, 0.3F}));
            },
            [&] { Any(meshes_)->Translate(Number() * 0.1F, 0, 0); },
            [&] { Any(meshes_)->SetColorRGB(0.5F, Number() * 0.1F + 0.5F, 0.5F); },
            [&] { Any(meshes_)->SetQuality(random_() % 2 == 0 ? quality::Flat : quality::Gouraud); },
            [&] { material_->SetPower(static_cast<float>(random_() % 20)); },
        };
        edits[random_() % std::size(edits)]();
    }

    /// What is drawn of the scene, or of a part of it.
    void ExpectFreshPicture()
    {
        const FramePointer top = random_() % 2 == 0 ? root_ : Any(frames_);
        DriverLog log;
        log.passes.clear();
        RMViewport viewport{MakeDevice(log, Side, Side), camera_, 0, 0, Side, Side};
        viewport.SetField(0.8F);
        viewport.Render(top);
        const DriverLog::Drawn& drawn = log.passes.back();
        Expected expected{drawn.pass.worldToCamera * drawn.pass.cameraToClip, {}};
        expected.Walk(*top, top == root_ ? Matrix4::Identity() : top->Parent()->WorldTransform());
        ASSERT_EQ(drawn.items.size(), expected.items.size());
        for (std::size_t i = 0; i < drawn.items.size(); ++i)
            ASSERT_TRUE(drawn.items[i].mesh == expected.items[i].first &&
                        drawn.items[i].world == expected.items[i].second)
                << "item " << i;
        const auto fresh = Frame::Make();
        CopyInto(fresh, *root_);
        EXPECT_EQ(device_.Drawn(root_, camera_), PixelDevice{}.Drawn(fresh, camera_));
    }

private:
    template<typename T>
    const T& Any(const std::vector<T>& list)
    {
        return list[random_() % list.size()];
    }

    float Number() { return std::uniform_real_distribution<float>{-3, 3}(random_); }

    void Move(Frame& frame) { frame.SetPosition(frame.Parent(), Number(), Number(), Number()); }

    void AddFrame()
    {
        frames_.push_back(Frame::Make(frames_.empty() || random_() % 3 == 0 ? root_ : Any(frames_)));
        Move(*frames_.back());
        frames_.back()->AddVisual(Any(meshes_));
    }

    void Reparent(const FramePointer& frame, const FramePointer& parent)
    {
        for (FramePointer above = parent; above; above = above->Parent())
            if (above == frame)
                return;
        parent->AddChild(frame);
    }

    void Hide(const FramePointer& frame)
    {
        if (!frame->Visuals().empty())
            frame->DeleteVisual(frame->Visuals().front());
    }

    void Remove(const FramePointer& frame) // by value: the list changes
    {
        const FramePointer kept = frame;
        if (!kept->Children().empty() || frames_.size() == 1)
            return;
        std::erase(frames_, kept);
        kept->Parent()->DeleteChild(kept);
    }

    std::mt19937 random_;
    FramePointer root_ = Frame::Make();
    FramePointer camera_ = Frame::Make();
    std::vector<FramePointer> frames_;
    std::vector<std::shared_ptr<MeshBuilder>> meshes_;
    std::shared_ptr<Material> material_ = std::make_shared<Material>(5.0F);
    PixelDevice device_;
};

} // namespace

TEST(DrawnScenes, show_after_any_edits_what_a_fresh_scene_shows)
{
    for (const int frames : {2, 12, 200}) // in small scenes much comes last, and all is out of view at times
        for (unsigned seed = 0; seed < 20; ++seed)
        {
            SCOPED_TRACE(std::to_string(frames) + " frames at first, seed " + std::to_string(seed));
            EditedScene scene{seed, frames};
            for (int picture = 0; picture < 60 && !::testing::Test::HasFailure(); ++picture)
            {
                scene.ExpectFreshPicture();
                for (int edit = 0; edit < picture % 7; ++edit)
                    scene.Edit();
            }
        }
}

} // namespace lumora
