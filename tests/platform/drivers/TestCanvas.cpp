// A picture in memory that a driver draws into, and the passes that tests draw with.
#include "platform/drivers/TestCanvas.h"

#include <algorithm>

namespace lumora::test
{

namespace
{

constexpr int Margin = 7;
constexpr std::uint32_t MarginColor = 0x5EA1ED00;

Matrix4 CameraMatrix(const CameraPlace& place)
{
    const Double3 z = Normalized(place.target - place.eye);
    const Double3 helper = std::abs(z.y) > 0.99 ? Double3{0, 0, 1} : Double3{0, 1, 0};
    const Double3 x = Normalized(Cross(helper, z));
    const Double3 y = Cross(z, x);
    return Inverse(Matrix4::FromAxes(x, y, z, place.eye)).value();
}

PassState CameraPass(int width, int height, const CameraPlace& place)
{
    PassState pass;
    pass.worldToCamera = CameraMatrix(place);
    pass.eye = place.eye;
    pass.viewDirection = Normalized(place.target - place.eye);
    pass.centreX = (width - 1) / 2.0;
    pass.centreY = (height - 1) / 2.0;
    pass.halfWidth = width / 2.0;
    pass.halfHeight = height / 2.0;
    pass.scissor = {0, 0, width, height};
    return pass;
}

} // namespace

Canvas::Canvas(int width, int height, std::uint32_t color)
    : width_(width), height_(height), pixels_(static_cast<std::size_t>(width + Margin) * height, MarginColor)
{
    for (int y = 0; y < height; ++y)
        std::fill_n(View().Row(y), width, color);
}

PixelView Canvas::View()
{
    return {pixels_.data(), width_, height_, width_ + Margin};
}

std::uint32_t Canvas::At(int x, int y) const
{
    return pixels_.at(static_cast<std::size_t>(y) * (width_ + Margin) + x) & 0xFFFFFFU;
}

int Canvas::CountNot(std::uint32_t color) const
{
    int count = 0;
    for (int y = 0; y < height_; ++y)
        for (int x = 0; x < width_; ++x)
            count += At(x, y) != color ? 1 : 0;
    return count;
}

bool Canvas::IsMarginTouched() const
{
    for (int y = 0; y < height_; ++y)
        for (int x = width_; x < width_ + Margin; ++x)
            if (pixels_[static_cast<std::size_t>(y) * (width_ + Margin) + x] != MarginColor)
                return true;
    return false;
}

int CountDifferent(const Canvas& a, const Canvas& b)
{
    int different = 0;
    for (int y = 0; y < a.Height(); ++y)
        for (int x = 0; x < a.Width(); ++x)
            different += a.At(x, y) != b.At(x, y) ? 1 : 0;
    return different;
}

Channels ChannelsOf(std::uint32_t color)
{
    const auto channel = [color](int shift) { return static_cast<int>((color >> shift) & 0xFFU); };
    return {channel(16), channel(8), channel(0)};
}

PassState PixelPass(int width, int height)
{
    PassState pass = CameraPass(width, height, {{0, 0, 0}, {0, 0, 1}, 1, 0, 1});
    pass.orthographic = true;
    pass.cameraToClip.m[0][0] = 1 / pass.halfWidth;
    pass.cameraToClip.m[1][1] = -1 / pass.halfHeight;
    pass.cameraToClip.m[3][0] = -pass.centreX / pass.halfWidth;
    pass.cameraToClip.m[3][1] = pass.centreY / pass.halfHeight;
    return pass;
}

PassState PerspectivePass(int width, int height, const CameraPlace& place)
{
    PassState pass = CameraPass(width, height, place);
    const double depth = place.back - place.front;
    Matrix4& clip = pass.cameraToClip;
    clip.m[0][0] = place.front / place.field;
    clip.m[1][1] = place.front / (place.field * height / width);
    clip.m[2][2] = place.back / depth;
    clip.m[2][3] = 1;
    clip.m[3][2] = -place.front * place.back / depth;
    clip.m[3][3] = 0;
    return pass;
}

PassState OrthographicPass(int width, int height, const CameraPlace& place)
{
    PassState pass = CameraPass(width, height, place);
    pass.orthographic = true;
    Matrix4& clip = pass.cameraToClip;
    clip.m[0][0] = 1 / place.field;
    clip.m[1][1] = 1 / (place.field * height / width);
    clip.m[2][2] = 1 / (place.back - place.front);
    clip.m[3][2] = -place.front / (place.back - place.front);
    return pass;
}

void DrawPicture(Driver& driver, Canvas& canvas, const PassState& pass, const std::vector<DrawItem>& items,
                 std::uint32_t background)
{
    driver.SetTarget(canvas.View());
    driver.Clear({true, true}, canvas.View().Bounds(), background);
    driver.Begin(pass);
    for (const DrawItem& item : items)
        driver.Draw(item);
    driver.End();
    driver.Finish();
}

LightState AmbientLight(float level)
{
    return {LightKind::Ambient, {level, level, level}, {}, {}};
}

LightState DirectionalLight(Double3 direction, Vector color)
{
    return {LightKind::Directional, color, {}, Normalized(direction)};
}

} // namespace lumora::test
