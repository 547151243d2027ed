// Every production driver draws what the reference driver draws.
#include "platform/drivers/DriverScenes.h"
#include "platform/drivers/DriversUnderTest.h"
#include "platform/drivers/reference/ReferenceDriver.h"
#include "support/Pictures.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <tuple>

namespace lumora::test
{

namespace
{

constexpr int Pixels = SceneWidth * SceneHeight;

struct PictureDifference
{
    int beyondStep = 0;
    int faulty = 0;
    int largest = 0;

    bool IsWithin(const Tolerance& tolerance) const
    {
        return beyondStep <= tolerance.partBeyond * Pixels && faulty <= tolerance.partFaulty * Pixels;
    }
};

int DifferenceOf(std::uint32_t a, std::uint32_t b)
{
    const Channels first = ChannelsOf(a);
    const Channels second = ChannelsOf(b);
    return std::max(
        {std::abs(first.red - second.red), std::abs(first.green - second.green), std::abs(first.blue - second.blue)});
}

PictureDifference Compare(const Canvas& actual, const Canvas& expected, const Tolerance& tolerance)
{
    PictureDifference result;
    for (int y = 0; y < expected.Height(); ++y)
        for (int x = 0; x < expected.Width(); ++x)
        {
            const int difference = DifferenceOf(actual.At(x, y), expected.At(x, y));
            result.beyondStep += difference > tolerance.step ? 1 : 0;
            result.faulty += difference > tolerance.fault ? 1 : 0;
            result.largest = std::max(result.largest, difference);
        }
    return result;
}

class DriverAgreement : public ::testing::TestWithParam<std::tuple<NamedDriver, DriverScene>>
{
};

TEST_P(DriverAgreement, draws_what_the_reference_draws)
{
    const auto& [driver, scene] = GetParam();
    Canvas expected = DrawScene(*MakeReferenceDriver({driver.isMonochrome}), scene);
    Canvas actual = DrawScene(*driver.create(), scene);
    const PictureDifference difference = Compare(actual, expected, scene.tolerance);
    RecordProperty("beyond_step", difference.beyondStep);
    RecordProperty("faulty", difference.faulty);
    RecordProperty("largest", difference.largest);
    EXPECT_TRUE(difference.IsWithin(scene.tolerance))
        << difference.beyondStep << " of " << Pixels << " pixels are off by more than " << scene.tolerance.step << ", "
        << difference.faulty << " by more than " << scene.tolerance.fault << ", the worst by " << difference.largest
        << "; see " << testsupport::KeepPicture("actual", actual.View()) << " and "
        << testsupport::KeepPicture("expected", expected.View());
    EXPECT_GT(expected.CountNot(SceneBackground), Pixels / 100) << "blank: any driver would agree";
    EXPECT_FALSE(actual.IsMarginTouched());
}

INSTANTIATE_TEST_SUITE_P(Scenes, DriverAgreement,
                         ::testing::Combine(::testing::ValuesIn(ProductionDrivers()),
                                            ::testing::ValuesIn(DriverScenes())),
                         [](const auto& suite)
                         { return std::get<0>(suite.param).name + "_" + std::get<1>(suite.param).name; });

} // namespace

} // namespace lumora::test
