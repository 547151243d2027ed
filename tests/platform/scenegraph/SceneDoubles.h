// A driver that only remembers what it was told, and meshes to show it.
#pragma once

#include "base/RuntimeError.h"
#include "platform/drivers/Driver.h"
#include "platform/scenegraph/RMViewport.h"
#include "platform/scenegraph/mesh/MeshBuilder.h"
#include "platform/scenegraph/picking/PickedArray.h"

#include <gtest/gtest.h>
#include <optional>
#include <vector>

namespace lumora::test
{

/// What a driver was asked to do.
struct DriverLog
{
    struct Drawn
    {
        PassState pass;
        std::vector<LightState> lights; // pass.lights does not outlive the call
        std::vector<DrawItem> items;
        bool ended = false;
    };

    struct Cleared
    {
        ClearParts parts;
        PixelRect area;
        std::uint32_t color;
    };

    PixelView target;
    std::vector<Drawn> passes;
    std::vector<Cleared> clears;
    int finishes = 0;
    std::optional<RuntimeError> failDraw;
};

class RecordingDriver : public Driver
{
public:
    explicit RecordingDriver(DriverLog& log) : log_(log) {}

    void SetTarget(const PixelView& target) override { log_.target = target; }
    void Clear(ClearParts parts, const PixelRect& area, std::uint32_t color) override
    {
        log_.clears.push_back({parts, area, color});
    }
    void Begin(const PassState& pass) override
    {
        log_.passes.push_back({pass, {pass.lights.begin(), pass.lights.end()}, {}, false});
    }
    void Draw(const DrawItem& item) override
    {
        if (log_.failDraw)
            throw RuntimeError{*log_.failDraw};
        log_.passes.back().items.push_back(item);
    }
    void End() override { log_.passes.back().ended = true; }
    void Finish() override { ++log_.finishes; }

private:
    DriverLog& log_;
};

/// A device of a clipper without window, and what its driver is told.
inline std::shared_ptr<Device> MakeDevice(DriverLog& log, int width, int height)
{
    return Device::FromClipper(std::make_unique<RecordingDriver>(log), std::make_shared<Clipper>(), width, height);
}

/// A cube of six squares that share eight corners, from `low` to `high` on every axis, fronts outward.
inline std::shared_ptr<MeshBuilder> MakeCube(float low, float high)
{
    std::vector<Vector> corners;
    for (int i = 0; i < 8; ++i)
        corners.push_back({(i & 1) != 0 ? high : low, (i & 2) != 0 ? high : low, (i & 4) != 0 ? high : low});
    const std::vector<std::int32_t> faces{4, 0, 2, 3, 1, 4, 5, 7, 6, 4, 4, 4, 6, 2, 0, 4,
                                          1, 3, 7, 5, 4, 2, 6, 7, 3, 4, 0, 1, 5, 4, 0};
    auto mesh = MeshBuilder::Make();
    mesh->AddFaces(corners, {}, faces);
    return mesh;
}

/// Whether `call` raises this error.
template<typename Call>
::testing::AssertionResult Raises(std::int32_t number, Call&& call)
{
    try
    {
        call();
    }
    catch (const RuntimeError& failure)
    {
        if (failure.Number() == number && !failure.Description().empty())
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << "raised " << failure.Number() << ": " << failure.what();
    }
    return ::testing::AssertionFailure() << "raised nothing";
}

inline ::testing::AssertionResult IsNear(Vector actual, Vector expected, double tolerance)
{
    const Vector d = actual - expected;
    if (std::abs(d.x) <= tolerance && std::abs(d.y) <= tolerance && std::abs(d.z) <= tolerance)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "(" << actual.x << ", " << actual.y << ", " << actual.z << ") is not ("
                                         << expected.x << ", " << expected.y << ", " << expected.z << ")";
}

} // namespace lumora::test
