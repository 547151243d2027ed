// A scene that is edited at random, in every way that a host can edit one.
#pragma once

#include "platform/scenegraph/SceneDoubles.h"

#include <functional>
#include <random>

namespace lumora::test
{

class EditedScene
{
public:
    explicit EditedScene(unsigned seed, int frames = 0) : random_(seed), frames_{Frame::Make()}
    {
        for (int i = 0; i < 3; ++i)
            meshes_.push_back(MakeCube(-0.3F, 0.3F));
        meshes_[1]->SetMaterial(material_);
        for (int i = 0; i < frames; ++i)
            AddFrame();
    }

    const std::shared_ptr<Frame>& Root() const { return frames_.front(); }
    const std::shared_ptr<Frame>& AnyFrame() { return frames_[Below(frames_.size())]; }
    std::size_t Below(std::size_t count) { return std::uniform_int_distribution<std::size_t>{0, count - 1}(random_); }
    float Number() { return std::normal_distribution<float>{}(random_); }

    void Edit()
    {
        const auto frame = AnyFrame();
        const auto parent = AnyFrame();
        const auto mesh = meshes_[Below(meshes_.size())];
        const bool isRoot = frame == Root();
        const std::function<void()> edits[] = {
            [&] { AddFrame(); },
            [&] { AddFrame(); },
            [&] { frame->SetPosition(frame->Parent(), Number(), Number(), Number()); },
            [&] {
                frame->AddRotation(CombineType::After, {Number(), 1, Number()}, Number());
            },
            [&] { frame->WorldTransform(); },
            [&] { frame->AddScale(CombineType::Before, Below(2) == 0 ? -1.1F : 0.9F, 1.2F, 0.9F); },
            [&] // itself again, or nothing
            {
                const float scale = isRoot || Below(3) > 0 ? 1 : 0;
                frame->AddScale(CombineType::Replace, scale, scale, scale);
            },
            [&] // may be a root that is put below another frame, or a frame on its own that becomes part of the scene
            {
                if (!isRoot && !IsBelow(*parent, *frame))
                    parent->AddChild(frame);
            },
            [&]
            {
                if (const auto above = frame->Parent(); above && Below(3) == 0)
                    above->DeleteChild(frame);
                else if (!above && !isRoot)
                    Root()->AddChild(frame);
            },
            [&]
            {
                if (!frame->Visuals().empty())
                    frame->DeleteVisual(frame->Visuals().front());
            },
            [&] { frame->AddVisual(mesh); },
            [&] {
                frame->AddLight(std::make_shared<Light>(LightKind::Point, Vector{0.2F, 0.1F, 0.3F}));
            },
            [&] { mesh->Translate(Number() * 0.3F, 0, 0); },
            [&] { AddTriangle(*mesh); },
            [&] { mesh->SetColorRGB(0.5F, Number() * 0.1F + 0.5F, 0.5F); },
            [&] { mesh->SetQuality(Below(2) == 0 ? quality::Flat : quality::Gouraud); },
            [&] { material_->SetPower(static_cast<float>(Below(20))); },
            [&] { mesh->SetObstacle(static_cast<Obstacle>(Below(3))); },
        };
        edits[Below(std::size(edits))]();
    }

private:
    static bool IsBelow(const Frame& frame, const Frame& top)
    {
        const Frame* above = &frame;
        while (above != nullptr && above != &top)
            above = above->Above();
        return above != nullptr;
    }

    void AddFrame()
    {
        frames_.push_back(Frame::Make(AnyFrame()));
        frames_.back()->SetPosition(frames_.back()->Parent(), Number(), Number(), Number());
        if (Below(3) == 0)
            meshes_.push_back(MakeTriangles());
        frames_.back()->AddVisual(Below(2) == 0 ? meshes_.back() : meshes_[Below(meshes_.size())]);
    }

    void AddTriangle(MeshBuilder& mesh)
    {
        std::vector<Vector> corners;
        for (int i = 0; i < 3; ++i)
            corners.push_back({Number(), Number(), Number()});
        mesh.AddFaces(corners, {}, std::vector<std::int32_t>{3, 0, 1, 2, 0});
    }

    std::shared_ptr<MeshBuilder> MakeTriangles()
    {
        const auto mesh = MeshBuilder::Make();
        for (std::size_t i = Below(20); i < 20; ++i)
            AddTriangle(*mesh);
        return mesh;
    }

    std::mt19937 random_;
    std::vector<std::shared_ptr<Frame>> frames_;
    std::vector<std::shared_ptr<MeshBuilder>> meshes_;
    std::shared_ptr<Material> material_ = std::make_shared<Material>(5.0F);
};

} // namespace lumora::test
