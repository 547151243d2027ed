// Comparing pictures, and keeping the ones that a person should look at.
#pragma once

#include "platform/pictures/PixelView.h"

#include <gtest/gtest.h>
#include <string>

namespace lumora::testsupport
{

/// Writes `picture` to the build folder's test-pictures/<running test>-<name>.png. Does nothing but answer an empty
/// path when the library has no picture files.
std::string KeepPicture(const std::string& name, const PixelView& picture);

/// Success when both have the same size and no channel differs by more than `tolerance`. A failure says how many
/// pixels differ, where the first one is and by how much, and keeps both pictures and their difference.
testing::AssertionResult SamePicture(const PixelView& actual, const PixelView& expected, int tolerance = 0);

} // namespace lumora::testsupport
