// How far a held key takes the camera from one picture to the next.
#include "lumora-viewer/CameraMotion.h"

#include "hosts/qt/QtSession.h"

namespace lumora::viewer
{

TEST(CameraMotion, goes_as_far_as_time_went_by_and_not_on_after_a_pause)
{
    const auto widget = test::MakeWidget();
    widget->setKeyMoveForward(tdlNavKeyW); // 3 units a second
    ASSERT_TRUE(test::Show(*widget));
    double seconds = 1000;
    CameraMotion motion{*widget, [&] { return seconds; }};
    const auto depthAfter = [&](double step)
    {
        seconds += step;
        widget->RenderScene();
        return widget->viewport().GetCameraPosition().z;
    };
    EXPECT_EQ(depthAfter(1), 0) << "nothing moves yet";
    EXPECT_FALSE(motion.IsRunning());
    QTest::keyPress(widget.get(), Qt::Key_W);
    EXPECT_TRUE(motion.IsRunning());
    EXPECT_NEAR(depthAfter(0.05), 0.15F, 1e-5F);
    EXPECT_NEAR(depthAfter(0), 0.15F, 1e-5F);
    EXPECT_NEAR(depthAfter(60), 0.45F, 1e-5F) << "a tenth of a second at most";
    QTest::keyRelease(widget.get(), Qt::Key_W);
    EXPECT_TRUE(test::Eventually([&] { return !motion.IsRunning(); }));
    EXPECT_NEAR(depthAfter(0.05), 0.45F, 1e-5F);
}

} // namespace lumora::viewer
