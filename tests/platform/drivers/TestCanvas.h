// A picture in memory that a driver draws into, and the passes that tests draw with.
#pragma once

#include "platform/drivers/Driver.h"

#include <cstdint>
#include <vector>

namespace lumora::test
{

/// Rows are longer than the picture is wide, so that a driver which forgets the pitch is seen.
class Canvas
{
public:
    Canvas(int width, int height, std::uint32_t color = 0);

    PixelView View();
    int Width() const { return width_; }
    int Height() const { return height_; }

    /// The color without the byte that nobody reads.
    std::uint32_t At(int x, int y) const;
    int CountNot(std::uint32_t color) const;

    /// Whether something wrote beside the picture.
    bool IsMarginTouched() const;

private:
    int width_;
    int height_;
    std::vector<std::uint32_t> pixels_;
};

/// Of two pictures of one size.
int CountDifferent(const Canvas& a, const Canvas& b);

/// The three channels of a color, for tests that compare them one by one.
struct Channels
{
    int red = 0;
    int green = 0;
    int blue = 0;
};
Channels ChannelsOf(std::uint32_t color);

/// x and y of the world are device coordinates, z is depth (and eye depth) 0..1.
PassState PixelPass(int width, int height);

/// A camera at `eye` that looks at `target`; `field` is half of the front plane's width.
struct CameraPlace
{
    Double3 eye{0, 0, -5};
    Double3 target{0, 0, 0};
    double field = 0.5;
    double front = 1;
    double back = 100;
};
PassState PerspectivePass(int width, int height, const CameraPlace& place);
PassState OrthographicPass(int width, int height, const CameraPlace& place);

/// Clears the canvas, draws the items in one pass and finishes.
void DrawPicture(Driver& driver, Canvas& canvas, const PassState& pass, const std::vector<DrawItem>& items,
                 std::uint32_t background = 0);

LightState AmbientLight(float level);
LightState DirectionalLight(Double3 direction, Vector color = {1, 1, 1});

} // namespace lumora::test
