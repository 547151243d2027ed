// A real pointer and a real keyboard at the viewer's window.
#include "apps/viewer/ViewerSession.h"
#include "camera/Desk.h"

#include <QCursor>
#include <QElapsedTimer>
#include <QProcess>
#include <QScreen>

namespace lumora::viewer
{

namespace
{

using test::Eventually;

float Length(Vector v)
{
    return std::sqrt(test::Dot(v, v));
}

class ViewerInWindowSystem : public ViewerTest
{
protected:
    static void Do(const QStringList& action)
    {
        ASSERT_EQ(QProcess::execute("xdotool", action), 0) << action.join(' ').toStdString();
    }

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

    test::RuleCamera Camera()
    {
        const Orientation orientation = Control().GetCameraOrientation();
        return {{Control().GetCameraPosition(), orientation.direction, orientation.up}};
    }
};

} // namespace

TEST_F(ViewerInWindowSystem, a_middle_drag_on_the_model_orbits_about_it)
{
    Open();
    test::RuleCamera rules = Camera();
    MovePointerTo(window_->View().rect().center());
    Do({"mousedown", "2"});
    ASSERT_TRUE(Eventually([&] { return window_->View().cursor().shape() == Qt::BlankCursor; }));
    const QRect screen = window_->screen()->geometry();
    ASSERT_TRUE(Eventually([&] { return (QCursor::pos() - screen.center()).manhattanLength() <= 2; })) << "not parked";
    QTest::qWait(40); // the control ignores moves that follow another within 33 milliseconds
    Do({"mousemove_relative", "--", "80", "-50"});
    // 15 twips a pixel, 0.0002 radians a twip, about the vertical and then about what is right by then.
    rules.Turn({0, 1, 0}, 0.0002F * 80 * 15, {});
    rules.Turn(rules.Axis(0), 0.0002F * -50 * 15, {});
    EXPECT_TRUE(Eventually([&] { return Length(Camera().position - rules.position) < 1e-3F; }));
    test::ExpectNear(Camera().direction, rules.direction, "direction", 1e-4F);
    Do({"mouseup", "2"});
    EXPECT_TRUE(Eventually([&] { return window_->View().cursor().shape() != Qt::BlankCursor; }));
}

TEST_F(ViewerInWindowSystem, a_held_key_moves_at_its_speed_until_the_focus_goes)
{
    Open();
    struct Sample
    {
        double seconds;
        float height;
    };
    std::vector<Sample> samples;
    QElapsedTimer clock;
    clock.start();
    QObject::connect(&window_->View(), &ViewportWidget::CameraMoved,
                     [&](float, float y) {
                         samples.push_back({static_cast<double>(clock.nsecsElapsed()) * 1e-9, y});
                     });
    Do({"keydown", "Prior"}); // page up: rise
    ASSERT_TRUE(Eventually([&] { return samples.size() >= 20; }));
    QWidget other;
    ASSERT_TRUE(test::Show(other));
    other.activateWindow();
    EXPECT_TRUE(Eventually([&] { return !window_->Motion().IsRunning(); }));
    Do({"keyup", "Prior"});
    const double lasted = samples.back().seconds - samples.front().seconds;
    const double rose = samples.back().height - samples.front().height;
    EXPECT_NEAR(rose, 3 * lasted, 0.1 * 3 * lasted + 0.05); // KeyVelocityMove is 3 units a second
    for (std::size_t i = 1; i < samples.size(); ++i)
        EXPECT_GT(samples[i].height, samples[i - 1].height);
    const Vector stopped = Control().GetCameraPosition();
    QTest::qWait(100);
    EXPECT_EQ(Control().GetCameraPosition(), stopped);
}

TEST_F(ViewerInWindowSystem, a_flying_drag_keeps_moving_while_the_hand_rests)
{
    Open();
    window_->SetFlying(true);
    MovePointerTo({20, 20}); // beside the model: forward and back
    const Vector direction = Camera().direction;
    const Vector start = Control().GetCameraPosition();
    Do({"mousedown", "2"});
    ASSERT_TRUE(Eventually([&] { return window_->View().cursor().shape() == Qt::BlankCursor; }));
    QTest::qWait(40);
    Do({"mousemove_relative", "--", "0", "60"}); // back
    ASSERT_TRUE(Eventually([&] { return window_->Motion().IsRunning(); }));
    int pictures = 0;
    QObject::connect(&window_->View(), &ViewportWidget::UpdatePositions, [&] { ++pictures; });
    EXPECT_TRUE(Eventually([&] { return pictures > 10; }));
    Do({"mouseup", "2"});
    EXPECT_TRUE(Eventually([&] { return !window_->Motion().IsRunning(); }));
    const Vector way = Control().GetCameraPosition() - start;
    EXPECT_LT(Length(way + direction * Length(way)), 1e-2F) << "straight back";
    EXPECT_GT(Length(way), 0.5F);
}

} // namespace lumora::viewer
