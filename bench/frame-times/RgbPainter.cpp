#include "Painters.h"
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
    explicit RgbPainter(int threads) : driver_(MakeRgbDriver({.threads = threads})) {}

    void Load(const Mesh& mesh) override { mesh_ = mesh; }

    void Draw(const View& view) override
    {
        if (view.width != width_ || view.height != height_)
        {
            width_ = view.width;
            height_ = view.height;
            pixels_.assign(static_cast<std::size_t>(width_) * height_, 0);
            driver_->SetTarget({pixels_.data(), width_, height_, width_});
        }
        driver_->Clear({true, true}, {0, 0, width_, height_}, Background);
        driver_->Begin(Pass(view));
        DrawItem item;
        item.mesh = mesh_;
        item.world = view.World();
        driver_->Draw(item);
        driver_->End();
        driver_->Finish();
    }

    std::vector<std::uint32_t> Pixels(const View&) override { return pixels_; }
    std::string Name() const override { return "rgb"; }

private:
    PassState Pass(const View& view)
    {
        lights_[0].kind = LightKind::Ambient;
        lights_[0].color = {AmbientPart, AmbientPart, AmbientPart};
        lights_[1].color = {LightPart, LightPart, LightPart};
        lights_[1].direction = LightDirection();
        PassState pass;
        pass.cameraToClip = Projection(view.width, view.height);
        pass.viewDirection = {0, 0, 1};
        pass.centreX = view.width / 2.0 - 0.5;
        pass.centreY = view.height / 2.0 - 0.5;
        pass.halfWidth = view.width / 2.0;
        pass.halfHeight = view.height / 2.0;
        pass.scissor = {0, 0, view.width, view.height};
        pass.lights = lights_;
        pass.cull = CullMode::CounterClockwise;
        return pass;
    }

    std::unique_ptr<Driver> driver_;
    Mesh mesh_;
    LightState lights_[2];
    int width_ = 0;
    int height_ = 0;
    std::vector<std::uint32_t> pixels_;
};

} // namespace

std::unique_ptr<Painter> MakeRgbPainter(int threads)
{
    return std::make_unique<RgbPainter>(threads);
}

} // namespace lumora::bench
