// Writing pictures so that nobody ever finds half of one.
#pragma once

#include "platform/pictures/PixelView.h"

#include <string>

namespace lumora::render
{

/// A sentence on why no picture can be written under this name, or nothing.
std::string ComplaintAboutOutputName(const std::string& name);

/// True when the name has a place for the frame's number (%d, %03d).
bool HasFrameNumber(const std::string& name);

/// The name with the frame's number in its place.
std::string NameOfFrame(const std::string& name, int frame);

/// The names of a session's pictures.
class ShotNames
{
public:
    /// With more than one `unnamed` shot an output without a place for the number gets one before its ending.
    ShotNames(std::string output, int unnamed);

    /// The path of the next picture: `shot` in the folder of the output, or the output with the next number.
    /// Error 5 for an empty `shot` without an output.
    std::string Next(const std::string& shot);

private:
    std::string output_;
    int next_ = 0;
};

/// Raises error 75 with a sentence when nothing can be written there: asked before the work, not after it.
void CheckOutputPlace(const std::string& path);

/// Writes a PNG file as a whole: until it is complete, a file of this name stays as it was. Error 75.
void WritePicture(const std::string& path, const PixelView& pixels);

} // namespace lumora::render
