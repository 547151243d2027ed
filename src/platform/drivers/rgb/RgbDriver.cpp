// Records what is drawn and, when a picture is asked for, sends it through the stages.
#include "platform/drivers/rgb/RgbDriver.h"

#include "base/RuntimeError.h"
#include "platform/drivers/rgb/Pipeline.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace lumora
{

namespace
{

using namespace rgb;

constexpr const char* Source = "RgbDriver";
constexpr int LargestSide = GuardBand - 64;
constexpr std::size_t MostRecorded = 1U << 16; ///< items and clears that are put off

float Luminance(Vector color)
{
    return 0.299F * color.x + 0.587F * color.y + 0.114F * color.z;
}

LightValues ToValues(const LightState& light, bool monochrome)
{
    const Vector gray{Luminance(light.color), Luminance(light.color), Luminance(light.color)};
    const Vector color = monochrome ? gray : light.color;
    const Vector position = light.position.ToVector();
    const Vector toLight = (-light.direction).ToVector();
    return {light.kind,
            {color.x, color.y, color.z},
            {position.x, position.y, position.z},
            {toLight.x, toLight.y, toLight.z},
            static_cast<float>(light.range),
            static_cast<float>(light.constantAttenuation),
            static_cast<float>(light.linearAttenuation),
            static_cast<float>(light.quadraticAttenuation),
            static_cast<float>(light.umbra / 2),
            static_cast<float>(light.penumbra / 2)};
}

/// The view volume on the screen in 1/256 pixel, both ends included.
PixelRect ViewportOf(const PassState& pass)
{
    const auto snapped = [](double place)
    {
        const double limit = GuardBand;
        const double within = place > -limit ? std::min(place, limit) : -limit; // NaN too
        return static_cast<std::int32_t>(std::floor(within * SubPixels + 0.5));
    };
    return {snapped(pass.centreX - pass.halfWidth), snapped(pass.centreY - pass.halfHeight),
            snapped(pass.centreX + pass.halfWidth), snapped(pass.centreY + pass.halfHeight)};
}

/// The pixels whose centres lie in the view volume, by the top-left rule.
PixelRect PixelsOf(const PixelRect& viewport)
{
    const auto up = [](int place) { return (place + SubPixels - 1) >> SubPixelShift; };
    return {up(viewport.left), up(viewport.top), up(viewport.right), up(viewport.bottom)};
}

class RgbDriver final : public Driver
{
public:
    explicit RgbDriver(const RgbOptions& options)
        : options_(options), pipeline_(options.threads, options.simd, options.limits)
    {
    }

    void SetTarget(const PixelView& target) override
    {
        if (target.width < 0 || target.height < 0 || (target.pixels == nullptr && target.width * target.height != 0))
            throw RuntimeError{error::RMBadValue, Source, "The surface to draw into has no pixels."};
        if (target.width > LargestSide || target.height > LargestSide)
            throw RuntimeError{error::RMBadAlloc, Source,
                               "The surface to draw into is larger than 16320 pixels a side."};
        Finish();
        Guarded([&] { pipeline_.SetTarget(target); });
        target_ = target.Bounds();
    }

    void Clear(ClearParts parts, const PixelRect& area, std::uint32_t color) override
    {
        Guarded(
            [&]
            {
                pipeline_.DrawWaiting();
                pipeline_.RecordClear(parts, Intersection(area, target_), color);
                Relieve();
            });
    }

    void Begin(const PassState& pass) override
    {
        Guarded(
            [&]
            {
                Relieve();
                Pass& kept = pipeline_.NewPass();
                kept.state = pass;
                kept.state.lights = {};
                kept.worldToClip = pass.worldToCamera * pass.cameraToClip;
                kept.lights.clear();
                for (const LightState& light : pass.lights)
                    kept.lights.push_back(ToValues(light, options_.monochrome));
                kept.viewport = ViewportOf(pass);
                kept.area = Intersection(Intersection(pass.scissor, target_), PixelsOf(kept.viewport));
                isInPass_ = true;
            });
    }

    void Draw(const DrawItem& item) override
    {
        if (!isInPass_)
            throw RuntimeError{error::InvalidCall, Source, "Something was drawn outside a pass."};
        if (item.mesh == nullptr)
            throw RuntimeError{error::RMBadObject, Source, "Nothing was given where a mesh is drawn."};
        bool isSound = true;
        Guarded(
            [&]
            {
                isSound = pipeline_.RecordItem(item);
                Relieve();
            });
        if (!isSound)
            throw RuntimeError{error::RMBadObject, Source, "The mesh's arrays do not fit each other."};
    }

    void End() override { isInPass_ = false; }

    void Finish() override
    {
        Guarded([&] { pipeline_.Finish(); });
    }

    void FinishLater() override
    {
        Guarded([&] { pipeline_.DrawWaiting(); });
    }

    bool FinishAveraged(const PixelView& averages, int factor) override
    {
        bool isDone = false;
        Guarded([&] { isDone = pipeline_.FinishAveraged(averages, factor); });
        return isDone;
    }

    DriverMemory Memory() const override { return pipeline_.Memory(); }

private:
    /// Draws what was put off once it is much.
    void Relieve()
    {
        if (pipeline_.RecordedCount() >= MostRecorded)
            pipeline_.DrawRecorded();
    }

    /// Turns a refused allocation into the error that callers know. What was recorded is lost after any error.
    template<typename Work>
    void Guarded(Work work)
    {
        try
        {
            work();
        }
        catch (const RuntimeError&) // beyond the limits
        {
            pipeline_.Forget();
            isInPass_ = false;
            throw;
        }
        catch (const std::bad_alloc&)
        {
            pipeline_.Forget();
            isInPass_ = false;
            throw RuntimeError{error::RMBadAlloc, Source, "There is not enough memory to draw this picture."};
        }
    }

    RgbOptions options_;
    Pipeline pipeline_;
    PixelRect target_;
    bool isInPass_ = false;
};

} // namespace

std::unique_ptr<Driver> MakeRgbDriver(const RgbOptions& options)
{
    return std::make_unique<RgbDriver>(options);
}

} // namespace lumora
