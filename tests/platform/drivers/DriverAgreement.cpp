// Every production driver draws what the reference driver draws.
#include "platform/drivers/ComparePictures.h"
#include "platform/drivers/DriversUnderTest.h"
#include "platform/drivers/reference/ReferenceDriver.h"

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

/// A folder that a person named to look at all pictures, or nothing.
const char* PictureFolder()
{
    return std::getenv("LUMORA_TEST_PICTURES");
}

class DriverAgreement : public ::testing::TestWithParam<AgreementCase>
{
};

TEST_P(DriverAgreement, draws_what_the_reference_draws)
{
    const auto& [driver, scene] = GetParam();
    const Canvas expected = DrawScene(*MakeReferenceDriver({driver.isMonochrome}), scene);
    const Canvas actual = DrawScene(*driver.create(), scene);
    const PictureDifference difference = Compare(actual, expected, scene.tolerance);
    RecordProperty("beyond_step", difference.beyondStep);
    RecordProperty("faulty", difference.faulty);
    RecordProperty("largest", difference.largest);
    EXPECT_TRUE(difference.IsWithin(scene.tolerance))
        << difference.beyondStep << " of " << difference.pixels << " pixels are off by more than "
        << scene.tolerance.step << ", " << difference.faulty << " by more than " << scene.tolerance.fault
        << ", the worst by " << difference.largest << "; "
        << WriteEvidence(driver.name + "-" + scene.name, actual, expected);
    EXPECT_FALSE(actual.IsMarginTouched());
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(DriverAgreement);
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
    const char* folder = PictureFolder();
    EXPECT_TRUE(folder == nullptr || WritePicture(std::string{folder} + "/" + GetParam().name + ".ppm", canvas));
}

INSTANTIATE_TEST_SUITE_P(Scenes, DriverScenesTest, ::testing::ValuesIn(DriverScenes()),
                         [](const auto& suite) { return suite.param.name; });

} // namespace

} // namespace lumora::test
