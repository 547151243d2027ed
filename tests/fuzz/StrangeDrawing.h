// Triangles anywhere, with numbers that are none or enormous, in every mode: what bytes say is drawn.
#pragma once

#include "fuzz/Fuzzing.h"
#include "platform/drivers/TestCanvas.h"
#include "platform/drivers/TestMeshes.h"

#include <cmath>

namespace lumora::fuzz
{

struct StrangeDrawing
{
    class Numbers : public Bytes
    {
    public:
        using Bytes::Bytes;

        bool AreSane() const { return areSane_; }

        float Coordinate()
        {
            const unsigned byte = Next();
            return byte < 240 ? static_cast<float>(byte) / 30 - 4 : Wild(byte);
        }

        float Wild(unsigned which)
        {
            static constexpr float Values[] = {NAN, INFINITY, -3e38F, 3e38F, 1e9F, -1e20F, 1e-40F, 16385};
            areSane_ = false;
            return Values[which % 8];
        }

        Vector Place()
        {
            const float x = Coordinate();
            const float y = Coordinate();
            return {x, y, Coordinate()};
        }

    private:
        bool areSane_ = true;
    };

    static StrangeDrawing From(Numbers bytes);

    int width = 0;
    int height = 0;
    PassState pass; ///< without lights
    std::vector<LightState> lights;
    std::vector<DrawItem> items;
    bool isSane = true; ///< so that drivers must agree
};

inline StrangeDrawing StrangeDrawing::From(Numbers bytes)
{
    using namespace test;
    StrangeDrawing scene;
    scene.width = 1 + static_cast<int>(bytes.Below(90));
    scene.height = 1 + static_cast<int>(bytes.Below(70));
    scene.pass = PerspectivePass(scene.width, scene.height, {.eye = {0, 0, -4}, .field = 0.7, .front = 0.5});
    scene.pass.cull = static_cast<CullMode>(1 + bytes.Below(3));
    scene.pass.transparency = static_cast<Transparency>(bytes.Below(3));
    scene.pass.filter = static_cast<TextureFilter>(bytes.Below(6));
    scene.pass.fog = {static_cast<FogMode>(bytes.Below(4)), {0.5F, 0.5F, 0.5F}, 2, 9, 0.2};
    const bool isLit = bytes.Below(4) == 0;
    if (bytes.Below(8) == 0)
        scene.pass.fog = {scene.pass.fog.mode, bytes.Place(), bytes.Coordinate(), bytes.Wild(bytes.Next()), 0.2};
    if (bytes.Below(8) == 0)
        scene.pass.cameraToClip.m[bytes.Below(4)][bytes.Below(4)] = bytes.Wild(bytes.Next());
    if (bytes.Below(8) == 0)
        scene.pass.halfWidth = bytes.Wild(bytes.Next());
    for (unsigned lights = isLit ? 1 + bytes.Below(3) : 0; lights > 0; --lights)
    {
        LightState& light = scene.lights.emplace_back();
        light.kind = static_cast<LightKind>(bytes.Below(4));
        light.color = bytes.Place();
        light.position = bytes.Place();
        light.direction = bytes.Place();
        light.range = bytes.Coordinate();
        light.linearAttenuation = bytes.Coordinate();
        light.umbra = bytes.Coordinate();
    }
    for (unsigned items = 1 + bytes.Below(3); items > 0 && bytes.AreLeft(); --items)
    {
        MeshMaker maker;
        maker.color = bytes.Below(2) == 0 ? 0xFFC08040 : 0x60FFFFFF;
        SurfaceMaterial material;
        material.power = isLit ? bytes.Coordinate() : 0;
        maker.Group(material, bytes.Below(2) == 0 ? nullptr : Ramp(5, 3, 0x80));
        for (unsigned faces = 1 + bytes.Below(8); faces > 0; --faces)
        {
            std::vector<Corner> corners(3);
            for (Corner& corner : corners)
                corner = {bytes.Place(), bytes.Coordinate(), bytes.Coordinate(),
                          isLit ? bytes.Place() : Vector{0, 0, -1}};
            maker.Face(corners);
        }
        DrawItem item = Item(maker.Make());
        item.lit = isLit;
        item.fill = static_cast<FillStyle>(bytes.Below(3));
        item.gouraud = bytes.Below(2) == 0;
        if (bytes.Below(8) == 0)
            item.world.m[bytes.Below(4)][bytes.Below(3)] = bytes.Wild(bytes.Next());
        scene.items.push_back(item);
    }
    // Where translucent faces or ones at the same depth meet, what is in front is anybody's guess.
    scene.isSane = bytes.AreSane();
    return scene;
}

} // namespace lumora::fuzz
