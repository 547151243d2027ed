// A live control with a small scene, for tests that drive it as a host program would.
#pragma once

#include "hosts/headless/DriverLists.h"
#include "hosts/headless/Errors.h"
#include "hosts/headless/HostedViewport.h"
#include "platform/drivers/standard/StandardDrivers.h"
#include "platform/pictures/Bitmap.h"

#include <gtest/gtest.h>

namespace lumora::test
{

inline constexpr int Side = 100; ///< of the window; at depth 10 one scene unit is ten pixels

/// Settings that tests mean unless they say otherwise: drawing, without waiting for the vertical blank.
inline MemoryPropertyBag UsualSettings()
{
    MemoryPropertyBag bag;
    bag.Set("Enabled", true);
    bag.Set("WaitForVSYNC", false);
    bag.Set("Direct3DDevice", std::int32_t{tdlDirect3DRGBDevice});
    return bag;
}

/// The usual ones with an exposed surface.
inline MemoryPropertyBag ExposedSettings(std::int32_t antiAlias = tdlNone)
{
    auto bag = UsualSettings();
    bag.Set("ExposeDDSurface", true);
    bag.Set("AntiAlias", antiAlias);
    return bag;
}

inline std::shared_ptr<headless::HeadlessHost> MakeHost(int width = Side, int height = Side)
{
    return std::make_shared<headless::HeadlessHost>(StandardDrivers(), nullptr,
                                                    PixelRect{200, 150, 200 + width, 150 + height});
}

/// A square of 2 * `half` units that faces a camera at the origin, at depth `z`, centred on (x, y).
inline std::shared_ptr<MeshBuilder> Square(float x, float y, float z, float half, Color color)
{
    const auto mesh = MeshBuilder::Make();
    const Vector corners[] = {
        {x - half, y - half, z}, {x - half, y + half, z}, {x + half, y + half, z}, {x + half, y - half, z}};
    const std::int32_t faces[] = {4, 0, 1, 2, 3, 0};
    mesh->AddFaces(corners, {}, faces);
    mesh->SetColor(color);
    return mesh;
}

/// A scene whose only light is ambient, so that lit colours are exactly `brightness` times the mesh's.
inline std::shared_ptr<Frame> AmbientScene(float brightness)
{
    const auto scene = Frame::Make();
    scene->AddLight(std::make_shared<Light>(LightKind::Ambient, Vector{brightness, brightness, brightness}));
    return scene;
}

/// Everything that is seen in the window.
inline std::vector<std::uint32_t> PictureOf(headless::HostedViewport& hosted)
{
    const PixelRect client = hosted.Host().ControlArea().ClientRect();
    std::vector<std::uint32_t> pixels;
    for (int y = 0; y < client.Height(); ++y)
        for (int x = 0; x < client.Width(); ++x)
            pixels.push_back(hosted.PixelAt(x, y));
    return pixels;
}

class LiveControl
{
public:
    explicit LiveControl(MemoryPropertyBag bag = UsualSettings(),
                         std::shared_ptr<headless::HeadlessHost> host = MakeHost())
        : hosted_(headless::HostedViewport::Live(std::move(host), bag))
    {
    }

    Viewport* operator->() { return &hosted_->Control(); }
    Viewport& Control() { return hosted_->Control(); }
    headless::HeadlessHost& Host() { return hosted_->Host(); }
    std::uint32_t PixelAt(int x, int y) { return hosted_->PixelAt(x, y); }

    std::vector<std::uint32_t> Picture() { return PictureOf(*hosted_); }

private:
    std::unique_ptr<headless::HostedViewport> hosted_;
};

} // namespace lumora::test
