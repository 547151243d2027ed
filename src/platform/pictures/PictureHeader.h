// What the start of a picture file says.
#pragma once

#include <string>

namespace lumora::picturecodec
{

struct Size
{
    int width = 0;
    int height = 0;
};

struct Header
{
    Size size;
    std::string problem; ///< why nothing is known of the picture; empty when its size is
};

} // namespace lumora::picturecodec
