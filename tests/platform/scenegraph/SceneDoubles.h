// A driver and a window that only remember what they were told, and meshes to show them.
#pragma once

#include "platform/automation/RuntimeError.h"
#include "platform/container/ControlWindow.h"
#include "platform/drivers/Driver.h"
#include "platform/scenegraph/MeshBuilder.h"
#include "platform/scenegraph/RMViewport.h"

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

/// A window at a place on the screen.
class RecordingWindow : public ControlWindow
{
public:
    static std::shared_ptr<RecordingWindow> Make(WindowHandle handle, const PixelRect& place)
    {
        auto window = std::make_shared<RecordingWindow>();
        window->handle_ = handle;
        window->place_ = place;
        Register(handle, window);
        return window;
    }
    ~RecordingWindow() override { Unregister(handle_); }

    WindowHandle Handle() const override { return handle_; }
    PixelRect ScreenRect() const override { return place_; }
    void Present(const PixelView& source, const PixelRect& destination) override
    {
        shownPixels = source.pixels;
        shownAt.push_back(destination);
    }

    std::int32_t BackColor() const override { return 0; }
    void SetBackColor(std::int32_t) override {}
    std::int16_t BorderStyle() const override { return 0; }
    void SetBorderStyle(std::int16_t) override {}
    std::shared_ptr<Picture> MouseIcon() const override { return nullptr; }
    void SetMouseIcon(const std::shared_ptr<Picture>&) override {}
    std::int16_t MousePointer() const override { return 0; }
    void SetMousePointer(std::int16_t) override {}
    bool Enabled() const override { return true; }
    void SetEnabled(bool) override {}
    std::shared_ptr<Picture> GetPicture() const override { return nullptr; }
    void SetPicture(const std::shared_ptr<Picture>&) override {}
    double ScaleLeft() const override { return 0; }
    double ScaleTop() const override { return 0; }
    double ScaleWidth() const override { return place_.Width(); }
    double ScaleHeight() const override { return place_.Height(); }
    double ScaleToPixelsX(double value) const override { return value; }
    double ScaleToPixelsY(double value) const override { return value; }

    const std::uint32_t* shownPixels = nullptr;
    std::vector<PixelRect> shownAt;

private:
    WindowHandle handle_ = 0;
    PixelRect place_;
};

inline constexpr WindowHandle TestWindow = 4711;

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
