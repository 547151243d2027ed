// The comparison that judges drivers must itself see differences.
#include "platform/drivers/ComparePictures.h"

#include <gtest/gtest.h>

namespace lumora::test
{

namespace
{

Canvas Painted(std::initializer_list<std::uint32_t> colors)
{
    Canvas canvas{10, 10};
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 10; ++x)
            canvas.View().Row(y)[x] = 0x808080;
    int x = 0;
    for (const std::uint32_t color : colors)
        canvas.View().Row(5)[x++] = color;
    return canvas;
}

TEST(ComparePictures, counts_pixels_by_their_worst_channel)
{
    const Tolerance tolerance{2, 0.03, 24, 0.01};
    // By 2 (allowed), 3, 24 and 25 steps, each in another channel; the top byte is nobody's.
    const Canvas other = Painted({0x7E8080, 0x807D80, 0x808098, 0x998080, 0xFF808080});
    const PictureDifference difference = Compare(other, Painted({}), tolerance);
    EXPECT_EQ(difference.pixels, 100);
    EXPECT_EQ(difference.beyondStep, 3);
    EXPECT_EQ(difference.faulty, 1);
    EXPECT_EQ(difference.largest, 25);
    EXPECT_TRUE(difference.IsWithin(tolerance));
    EXPECT_FALSE(difference.IsWithin({2, 0.02, 24, 0.01}));
    EXPECT_FALSE(difference.IsWithin({2, 0.03, 24, 0.009}));
}

} // namespace

} // namespace lumora::test
