// Every production driver draws what the reference driver draws.
#include "platform/drivers/DriverScenes.h"
#include "platform/drivers/DriversUnderTest.h"
#include "platform/drivers/reference/ReferenceDriver.h"
#include "support/Pictures.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <ostream>

namespace lumora::test
{

namespace
{

struct AgreementCase
{
    NamedDriver driver;
    DriverScene scene;

    friend std::ostream& operator<<(std::ostream& out, const AgreementCase& self)
    {
        return out << self.driver.name << ", " << self.scene.name;
    }
};

std::vector<AgreementCase> Cases()
{
    std::vector<AgreementCase> cases;
    for (const NamedDriver& driver : ProductionDrivers())
        for (const DriverScene& scene : DriverScenes())
            cases.push_back({driver, scene});
    return cases;
}

struct PictureDifference
{
    int pixels = 0;
    int beyondStep = 0;
    int faulty = 0;
    int largest = 0;

    bool IsWithin(const Tolerance& tolerance) const
    {
        return beyondStep <= tolerance.partBeyond * pixels && faulty <= tolerance.partFaulty * pixels;
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
            ++result.pixels;
            result.beyondStep += difference > tolerance.step ? 1 : 0;
            result.faulty += difference > tolerance.fault ? 1 : 0;
            result.largest = std::max(result.largest, difference);
        }
    return result;
}

class DriverAgreement : public ::testing::TestWithParam<AgreementCase>
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
        << difference.beyondStep << " of " << difference.pixels << " pixels are off by more than "
        << scene.tolerance.step << ", " << difference.faulty << " by more than " << scene.tolerance.fault
        << ", the worst by " << difference.largest << "; see " << testsupport::KeepPicture("actual", actual.View())
        << " and " << testsupport::KeepPicture("expected", expected.View());
    EXPECT_FALSE(actual.IsMarginTouched());
}

INSTANTIATE_TEST_SUITE_P(Scenes, DriverAgreement, ::testing::ValuesIn(Cases()),
                         [](const auto& suite) { return suite.param.driver.name + "_" + suite.param.scene.name; });

class DriverScenesTest : public ::testing::TestWithParam<DriverScene>
{
};

// A blank scene would let every driver agree.
TEST_P(DriverScenesTest, shows_something_to_agree_on)
{
    const Canvas canvas = DrawScene(*MakeReferenceDriver(), GetParam());
    EXPECT_GT(canvas.CountNot(SceneBackground), SceneWidth * SceneHeight / 100);
}

INSTANTIATE_TEST_SUITE_P(Scenes, DriverScenesTest, ::testing::ValuesIn(DriverScenes()),
                         [](const auto& suite) { return suite.param.name; });

} // namespace

} // namespace lumora::test
