// A real pointer and a real keyboard at the viewer's window.
#include "apps/viewer/ViewerSession.h"

#include <QCursor>
#include <algorithm>
#include <functional>

namespace lumora::viewer
{

namespace
{

using test::Do;
using test::Eventually;

class ViewerInWindowSystem : public ViewerTest
{
protected:
    void Open()
    {
        ASSERT_NO_FATAL_FAILURE(Start({folder_ / "cube.obj"}));
        window_->activateWindow();
        ASSERT_TRUE(Eventually([&] { return window_->View().hasFocus(); }));
    }

    void MovePointerTo(QPoint place)
    {
        place = window_->View().mapToGlobal(place);
        Do({"mousemove", QString::number(place.x()), QString::number(place.y())});
        ASSERT_TRUE(Eventually([&] { return QCursor::pos() == place; }));
    }
};

} // namespace

TEST_F(ViewerInWindowSystem, a_held_key_moves_on_until_the_focus_goes)
{
    Open();
    std::vector<float> heights;
    QObject::connect(&window_->View(), &ViewportWidget::CameraMoved, [&](float, float y) { heights.push_back(y); });
    Do({"keydown", "Prior"}); // page up: rise
    ASSERT_TRUE(Eventually([&] { return heights.size() >= 20; }));
    QWidget other;
    ASSERT_TRUE(test::Show(other));
    other.activateWindow();
    EXPECT_TRUE(Eventually([&] { return !window_->Motion().IsRunning(); }));
    Do({"keyup", "Prior"});
    EXPECT_TRUE(std::ranges::is_sorted(heights, std::less_equal{}));
    const Vector stopped = Control().GetCameraPosition();
    test::Settle();
    EXPECT_EQ(Control().GetCameraPosition(), stopped);
}

TEST_F(ViewerInWindowSystem, a_flying_drag_keeps_moving_while_the_hand_rests)
{
    Open();
    window_->SetFlying(true);
    MovePointerTo({20, 20}); // beside the model: forward and back
    const Vector direction = Control().GetCameraOrientation().direction;
    const Vector start = Control().GetCameraPosition();
    Do({"mousedown", "2"});
    ASSERT_TRUE(Eventually([&] { return window_->View().cursor().shape() == Qt::BlankCursor; }));
    test::LetMovesCount();
    Do({"mousemove_relative", "--", "0", "60"}); // back
    ASSERT_TRUE(Eventually([&] { return window_->Motion().IsRunning(); }));
    EXPECT_TRUE(Eventually([&] { return Length(Control().GetCameraPosition() - start) > 0.5F; }));
    Do({"mouseup", "2"});
    EXPECT_TRUE(Eventually([&] { return !window_->Motion().IsRunning(); }));
    const Vector way = Control().GetCameraPosition() - start;
    EXPECT_LT(Length(way + direction * Length(way)), 1e-2F * Length(way)) << "straight back";
}

} // namespace lumora::viewer
