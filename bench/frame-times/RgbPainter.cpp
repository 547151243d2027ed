#include "Painters.h"
#include "platform/drivers/Averaging.h"
#include "platform/drivers/rgb/RgbDriver.h"

#include <cmath>

namespace lumora::bench
{

Matrix4 Projection(int width, int height)
{
    constexpr double Front = 1;
    constexpr double Back = 20;
    constexpr double HalfHeight = 0.42; // of the front plane
    Matrix4 result;
    result.m[0][0] = Front / (HalfHeight * width / height);
    result.m[1][1] = Front / HalfHeight;
    result.m[2][2] = Back / (Back - Front);
    result.m[2][3] = 1;
    result.m[3][2] = -Front * Back / (Back - Front);
    return result;
}

Matrix4 View::World() const
{
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    return Matrix4::FromAxes({c, 0, -s}, {0, 1, 0}, {s, 0, c}, {0, 0, 4});
}

namespace
{

class RgbPainter final : public Painter
{
public:
    explicit RgbPainter(int threads, SimdLevel simd)
        : driver_(MakeRgbDriver({.threads = threads, .simd = simd})), averager_(Crew::Of(threads), simd)
    {
    }

    void Load(const Mesh& mesh) override { mesh_ = mesh; }

    void Draw(const View& view) override
    {
        Resize(view);
        driver_->Clear({true, true}, {0, 0, large_.width, large_.height}, Background);
        driver_->Begin(Pass(view));
        DrawItem item;
        item.mesh = mesh_;
        item.world = view.World();
        item.fill = view.mode == Mode::Wireframe ? FillStyle::Wireframe : FillStyle::Solid;
        if (view.visuals == 1)
            driver_->Draw(item);
        else
            DrawCopies(view, item);
        driver_->End();
        const PixelView shown{pixels_.data(), view.width, view.height, view.width};
        if (view.samples > 1 && driver_->FinishAveraged(shown, view.samples))
            return;
        driver_->Finish();
        if (view.samples > 1)
            averager_.Average(large_, view.samples, shown);
    }

    std::vector<std::uint32_t> Pixels(const View&) override { return pixels_; }
    std::string Name() const override { return "rgb"; }

private:
    void Resize(const View& view)
    {
        if (view.width == width_ && view.height == height_ && view.samples == samples_)
            return;
        width_ = view.width;
        height_ = view.height;
        samples_ = view.samples;
        const auto count = static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_);
        pixels_.assign(count, 0);
        samplePixels_.assign(samples_ > 1 ? count * static_cast<std::size_t>(samples_ * samples_) : 0, 0);
        large_ = {samples_ > 1 ? samplePixels_.data() : pixels_.data(), width_ * samples_, height_ * samples_,
                  width_ * samples_};
        driver_->SetTarget(large_);
    }

    /// Side by side in the plane in which one alone would stand.
    void DrawCopies(const View& view, DrawItem& item)
    {
        const int perRow = static_cast<int>(std::ceil(std::sqrt(view.visuals)));
        const double scale = 1.0 / perRow;
        for (int i = 0; i < view.visuals; ++i)
        {
            const Double3 place{(i % perRow - perRow / 2) * 3 * scale, (i / perRow - perRow / 2) * 3 * scale,
                                view.isUnseen ? -4.0 : 4.0};
            const double c = std::cos(view.angle) * scale;
            const double s = std::sin(view.angle) * scale;
            item.world = Matrix4::FromAxes({c, 0, -s}, {0, scale, 0}, {s, 0, c}, place);
            driver_->Draw(item);
        }
    }

    PassState Pass(const View& view)
    {
        lights_[0].kind = LightKind::Ambient;
        lights_[0].color = {AmbientPart, AmbientPart, AmbientPart};
        lights_[1].color = {LightPart, LightPart, LightPart};
        lights_[1].direction = LightDirection();
        PassState pass;
        pass.cameraToClip = Projection(view.width, view.height);
        pass.viewDirection = {0, 0, 1};
        pass.centreX = large_.width / 2.0 - 0.5;
        pass.centreY = large_.height / 2.0 - 0.5;
        pass.halfWidth = large_.width / 2.0;
        pass.halfHeight = large_.height / 2.0;
        pass.scissor = large_.Bounds();
        pass.lights = lights_;
        pass.cull = CullMode::CounterClockwise;
        return pass;
    }

    std::unique_ptr<Driver> driver_;
    BlockAverager averager_;
    Mesh mesh_;
    LightState lights_[2];
    int width_ = 0;
    int height_ = 0;
    int samples_ = 0;
    std::vector<std::uint32_t> pixels_;
    std::vector<std::uint32_t> samplePixels_;
    PixelView large_;
};

} // namespace

std::unique_ptr<Painter> MakeRgbPainter(int threads, SimdLevel simd)
{
    return std::make_unique<RgbPainter>(threads, simd);
}

} // namespace lumora::bench
