// Names of pictures with and without a place for the frame's number.
#include "lumora-render/Output.h"

#include <gtest/gtest.h>

namespace lumora::tests
{

namespace
{

TEST(OutputName, puts_the_frame_number_where_the_name_says)
{
    const struct
    {
        const char* name;
        int frame;
        const char* file;
    } cases[] = {
        {"a.png", 7, "a.png"},
        {"a%d.png", 0, "a0.png"},
        {"a%d.png", 12, "a12.png"},
        {"a%03d.png", 7, "a007.png"},
        {"a%03d.png", 1234, "a1234.png"},
        {"%0d.png", 5, "5.png"},
        {"100%/a%d.png", 3, "100%/a3.png"},
        {"50%.png", 3, "50%.png"},
        {"%s%5d.png", 3, "%s%5d.png"},
        {"%%d.png", 4, "%4.png"},
    };
    for (const auto& each : cases)
    {
        EXPECT_EQ(render::NameOfFrame(each.name, each.frame), each.file) << each.name;
        EXPECT_EQ(render::HasFrameNumber(each.name), std::string{each.name} != each.file) << each.name;
    }
}

} // namespace

} // namespace lumora::tests
