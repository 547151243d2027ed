// What lies under a point of the control: by a ray through the pixel, or by asking the viewport.
#include "base/Numbers.h"
#include "viewport/Names.h"
#include "viewport/Viewport.h"

namespace lumora
{

namespace
{

// Fractional positions fall to the pixel they lie in.
constexpr double WithinPixel = 0.49;

constexpr Vector4 OnFrontPlane(std::int32_t x, std::int32_t y)
{
    return {static_cast<float>(x), static_cast<float>(y), 0, 1};
}

constexpr Vector4 OnBackPlane(std::int32_t x, std::int32_t y)
{
    return {static_cast<float>(x), static_cast<float>(y), 1, 1};
}

void HandOut(const PickResult& picked, std::shared_ptr<Frame>& frame, std::shared_ptr<MeshBuilder>& mesh,
             std::int32_t& face, float& x, float& y, float& z)
{
    frame = picked.PickedFrame;
    mesh = picked.PickedMeshbuilder;
    face = picked.PickedFaceID;
    x = picked.PickedWorld.x;
    y = picked.PickedWorld.y;
    z = picked.PickedWorld.z;
}

// Runs `inside`, then `putBack`, whatever happened.
template<typename Inside, typename PutBack>
void RunAndPutBack(const Trap& trap, Inside&& inside, PutBack&& putBack)
{
    try
    {
        inside();
    }
    catch (...)
    {
        SkippingTrap{}(putBack);
        throw;
    }
    trap(putBack);
}

} // namespace

// From the front plane through the pixel, in the coordinates of `frame`. The viewport knows those of the root that the
// camera hangs in: usually the frame itself, but a scene may also lie below frames that move it.
Ray Viewport::RayThrough(std::int32_t pixelX, std::int32_t pixelY, const std::shared_ptr<Frame>& frame)
{
    const Trap trap{Source};
    Vector front;
    Vector back;
    Vector direction;
    trap([&] { front = Required(drawing_.RMViewport).InverseTransform(OnFrontPlane(pixelX, pixelY)); });
    trap([&] { back = Required(drawing_.RMViewport).InverseTransform(OnBackPlane(pixelX, pixelY)); });
    if (const auto root = Required(drawing_.CameraFrame).Root(); root != frame)
    {
        Matrix4 toFrame;
        trap([&] { toFrame = root->TransformTo(frame); });
        front = TransformPoint(front, toFrame).ToVector();
        back = TransformPoint(back, toFrame).ToVector();
    }
    trap([&] { direction = Required(drawing_.RetainedMode).VectorNormalize(back - front); });
    return {direction, front};
}

void Viewport::PickScreenPointFixed(const std::shared_ptr<Frame>& frame, std::int32_t pixelX, std::int32_t pixelY,
                                    const PickFilter& filter, PickResult& picked, bool& NothingPicked)
{
    const Trap trap{Source};
    const Ray ray = RayThrough(pixelX, pixelY, frame);
    NothingPicked = false;
    picked.PickedWorld = {};
    std::shared_ptr<PickedArray> hits;
    // Also what is no obstacle is picked.
    trap([&] { hits = Required(frame).RayPick(frame, ray, RayPickFlags::AllBoxes); });
    if (!hits->HasPick(0))
        return;
    trap([&] { hits = frame->RayPick(frame, ray, RayPickFlags::Primitives); });
    NothingPicked = true;
    if (!hits->HasPick(0))
        return;
    PickChoice choice;
    trap([&] { choice = ChooseHit(*hits, filter, picked, *container_->TheScreen()); });
    NothingPicked = !choice.accepted;
    picked.PickedWorld = choice.position;
}

void Viewport::PickScreenPoint(const std::shared_ptr<Frame>& frame, std::int32_t pixelX, std::int32_t pixelY,
                               const PickFilter& filter, PickResult& picked)
{
    const Trap trap{Source};
    std::shared_ptr<PickedArray> hits;
    trap([&] { hits = Required(drawing_.RMViewport).Pick(frame, pixelX, pixelY); });
    if (!hits->HasPick(0))
        return;
    PickChoice choice;
    trap([&] { choice = ChooseHit(*hits, filter, picked, *container_->TheScreen()); });
    const auto [x, y, z] = choice.position;
    trap([&, screen = Vector4{x, y, z, 1}]
         { picked.PickedWorld = Required(drawing_.RMViewport).InverseTransform(screen); });
}

// The ray first; where it met boxes and nothing that counts, the viewport is asked too, and the next picture that may
// draws a flat pass.
void Viewport::PickSceneWithFallback(std::int32_t pixelX, std::int32_t pixelY, const PickFilter& filter,
                                     PickResult& picked)
{
    bool nothing = false;
    PickScreenPointFixed(drawing_.SceneFrame, pixelX, pixelY, filter, picked, nothing);
    if (picked.PickedFrame || !nothing)
        return;
    PickScreenPoint(drawing_.SceneFrame, pixelX, pixelY, filter, picked);
    drawing_.PendingFlatPass = true;
}

// The overlay hangs in the scene while it is searched.
void Viewport::PickInOverlaidScene(std::int32_t pixelX, std::int32_t pixelY, const PickFilter& filter,
                                   PickResult& picked)
{
    const Trap trap{Source};
    const auto scene = drawing_.SceneFrame;
    const auto overlay = drawing_.OverlayFrame;
    trap([&] { Required(scene).AddChild(overlay); });
    bool nothing = false;
    RunAndPutBack(
        trap, [&] { PickScreenPointFixed(scene, pixelX, pixelY, filter, picked, nothing); },
        [&] { scene->DeleteChild(overlay); });
}

// The camera hangs in the root that it looks at.
void Viewport::PickFromCameraIn(const std::shared_ptr<Frame>& root, std::int32_t pixelX, std::int32_t pixelY,
                                const PickFilter& filter, PickResult& picked)
{
    const Trap trap{Source};
    trap([&] { Required(root).AddChild(drawing_.CameraFrame); });
    const auto putBack = [&]
    {
        if (drawing_.SceneFrame)
            drawing_.SceneFrame->AddChild(drawing_.CameraFrame);
        else
            root->DeleteChild(drawing_.CameraFrame);
    };
    RunAndPutBack(
        trap, [&] { PickScreenPoint(root, pixelX, pixelY, filter, picked); }, putBack);
}

void Viewport::PickByMethod(tdlPickMethod method, ScreenPoint pixel, const PickFilter& filter, bool withFallback,
                            PickResult& picked)
{
    bool nothing = false;
    switch (method)
    {
    case tdlAll:
        PickInOverlaidScene(pixel.x, pixel.y, filter, picked);
        break;
    case tdlScene:
        if (withFallback)
            PickSceneWithFallback(pixel.x, pixel.y, filter, picked);
        else
            PickScreenPointFixed(drawing_.SceneFrame, pixel.x, pixel.y, filter, picked, nothing);
        break;
    case tdlSceneOverlay:
        PickFromCameraIn(drawing_.OverlayFrame, pixel.x, pixel.y, filter, picked);
        break;
    }
}

ScreenPoint Viewport::PixelOfPosition(float x, float y, double lowered) const
{
    const Trap trap{Source};
    ScreenPoint pixel;
    trap([&] { pixel.x = ToLong(container_->PositionToPixelsX(x) - lowered); });
    trap([&] { pixel.y = ToLong(container_->PositionToPixelsY(y) - lowered); });
    return pixel;
}

void Viewport::Pick(tdlPickMethod PickMethod, float PickScreenX, float PickScreenY, bool PickWireframe,
                    bool PickZeroAppData, std::shared_ptr<Frame>& PickedFrame,
                    std::shared_ptr<MeshBuilder>& PickedMeshbuilder, std::int32_t& PickedFaceID, float& PickedWorldX,
                    float& PickedWorldY, float& PickedWorldZ)
{
    RequireRunning();
    PickResult picked{PickedFrame, PickedMeshbuilder, PickedFaceID, {PickedWorldX, PickedWorldY, PickedWorldZ}};
    const ScreenPoint pixel = PixelOfPosition(PickScreenX, PickScreenY, WithinPixel);
    PickByMethod(PickMethod, pixel, {PickWireframe, PickZeroAppData}, true, picked);
    HandOut(picked, PickedFrame, PickedMeshbuilder, PickedFaceID, PickedWorldX, PickedWorldY, PickedWorldZ);
}

PickResult Viewport::Pick(tdlPickMethod PickMethod, float PickScreenX, float PickScreenY, bool PickWireframe,
                          bool PickZeroAppData)
{
    RequireRunning();
    PickResult picked;
    const ScreenPoint pixel = PixelOfPosition(PickScreenX, PickScreenY, WithinPixel);
    PickByMethod(PickMethod, pixel, {PickWireframe, PickZeroAppData}, true, picked);
    return picked;
}

void Viewport::PickFixScrewyD3DBug(tdlPickMethod PickMethod, float PickScreenX, float PickScreenY, bool PickWireframe,
                                   bool PickZeroAppData, std::shared_ptr<Frame>& PickedFrame,
                                   std::shared_ptr<MeshBuilder>& PickedMeshbuilder, std::int32_t& PickedFaceID,
                                   float& PickedWorldX, float& PickedWorldY, float& PickedWorldZ)
{
    RequireRunning();
    PickResult picked{PickedFrame, PickedMeshbuilder, PickedFaceID, {PickedWorldX, PickedWorldY, PickedWorldZ}};
    const ScreenPoint pixel = PixelOfPosition(PickScreenX, PickScreenY, 0);
    PickByMethod(PickMethod, pixel, {PickWireframe, PickZeroAppData}, false, picked);
    HandOut(picked, PickedFrame, PickedMeshbuilder, PickedFaceID, PickedWorldX, PickedWorldY, PickedWorldZ);
}

} // namespace lumora
