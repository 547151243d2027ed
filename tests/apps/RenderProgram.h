// The command line program as a user meets it: arguments in, exit status, texts and pictures out.
#pragma once

#include "support/TemporaryFolder.h"

#include <cstdint>
#include <string>
#include <vector>

namespace lumora::tests
{

struct Outcome
{
    int status = -1; ///< above 128: ended by a signal
    std::string output;
    std::string complaint; ///< standard error
};

/// Runs lumora-render to its end. No argument may hold an apostrophe.
Outcome Render(const std::vector<std::string>& arguments);

std::size_t CountLines(const std::string& text);

/// A picture's pixels, 0x00RRGGBB.
struct Pixels
{
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> colors;

    std::uint32_t At(int x, int y) const
    {
        return colors[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
    }
};

/// Errors: those of LoadPicture.
Pixels ReadPixels(const std::string& path);

/// Smallest rectangle of pixels that differ from the top-left one, ends included, and how many they are.
struct Foreground
{
    int left;
    int top;
    int right;
    int bottom;
    int count = 0;
};
Foreground FindForeground(const Pixels& pixels);

} // namespace lumora::tests
