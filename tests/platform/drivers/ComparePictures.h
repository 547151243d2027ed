// How far two pictures are apart, and the evidence for a person to look at.
#pragma once

#include "platform/drivers/DriverScenes.h"
#include "platform/drivers/TestCanvas.h"

#include <string>

namespace lumora::test
{

struct PictureDifference
{
    int pixels = 0;
    int beyondStep = 0;
    int faulty = 0;
    int largest = 0;

    bool IsWithin(const Tolerance& tolerance) const;
};

/// Both pictures have the same size.
PictureDifference Compare(const Canvas& actual, const Canvas& expected, const Tolerance& tolerance);

/// Writes NAME-actual.ppm, NAME-expected.ppm and NAME-difference.ppm (16 times brighter than it is) and answers where.
std::string WriteEvidence(const std::string& name, const Canvas& actual, const Canvas& expected);

/// Writes one picture as a PPM file. False when it cannot be written.
bool WritePicture(const std::string& path, const Canvas& canvas);

} // namespace lumora::test
