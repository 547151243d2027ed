// Simulated mouse and keyboard input without a window system: what the control hears, and what becomes of the cursor.
#include "hosts/qt/QtSession.h"

#include <QCursor>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>
#include <algorithm>

namespace lumora::test
{

namespace
{

/// Simulated input over a widget on a form.
class QtInputScaled : public testing::Test
{
protected:
    QtInputScaled()
    {
        form_.setGeometry(100, 100, Side + 40, Side + 40);
        widget_ = MakeWidget(&form_).release();
        widget_->setGeometry(20, 20, Side, Side);
        shown_ = Show(form_);
        form_.activateWindow();
        QCursor::setPos(OnDesktop(0, 0));
        QApplication::processEvents();
        for (const auto signal : {&ViewportWidget::Click, &ViewportWidget::DblClick, &ViewportWidget::EndNavigating})
            QObject::connect(widget_, signal, [this, signal] { Note(signal); });
        QObject::connect(widget_, &ViewportWidget::MouseDown, [this](int, int, float, float) { heard_ += "down "; });
        QObject::connect(widget_, &ViewportWidget::MouseUp, [this](int, int, float, float) { heard_ += "up "; });
    }

    void SetUp() override { ASSERT_TRUE(shown_); }

    /// A button that stayed down would be down in the next test as well.
    void TearDown() override
    {
        for (const auto button : {Qt::LeftButton, Qt::MiddleButton, Qt::RightButton})
            if (QApplication::mouseButtons().testFlag(button))
                Release(button);
    }

    void Note(void (ViewportWidget::*signal)())
    {
        heard_ += signal == &ViewportWidget::Click      ? "click "
                  : signal == &ViewportWidget::DblClick ? "dblclick "
                                                        : "end ";
    }

    QPoint OnDesktop(int x, int y) const { return widget_->mapToGlobal(QPoint{x, y}); }
    QPoint OnForm(int x, int y) const { return widget_->mapTo(&form_, QPoint{x, y}); }

    void Press(Qt::MouseButton button, int x, int y, Qt::KeyboardModifiers held = {})
    {
        QCursor::setPos(OnDesktop(x, y));
        QApplication::processEvents();
        QTest::mousePress(form_.windowHandle(), button, held, OnForm(x, y));
    }

    void Release(Qt::MouseButton button, int x = 0, int y = 0)
    {
        QTest::mouseRelease(form_.windowHandle(), button, {}, OnForm(x, y));
    }

    QPoint ScreenCentre() const
    {
        const double ratio = widget_->devicePixelRatioF();
        const QSize size = widget_->screen()->size();
        return {qRound(qRound(size.width() * ratio / 2) / ratio), qRound(qRound(size.height() * ratio / 2) / ratio)};
    }

    Vector Camera() { return widget_->viewport().GetCameraPosition(); }
    float ForwardSpeed()
    {
        Vector velocity;
        tdlNavigationMethod method{};
        widget_->viewport().GetCameraVelocity(velocity.x, velocity.y, velocity.z, method);
        return velocity.z;
    }
    bool IsCursorHidden() const { return widget_->cursor().shape() == Qt::BlankCursor; }

    QWidget form_;
    ViewportWidget* widget_ = nullptr;
    bool shown_ = false;
    std::string heard_;
};

constexpr float UnitsPerPixel = 0.002F * 15; // of the camera, for a logical pixel of the drag

} // namespace

TEST_F(QtInputScaled, positions_are_the_widgets_own)
{
    for (const auto& [held, shift] : {std::pair{Qt::ShiftModifier, 1}, {Qt::ControlModifier, 2}, {Qt::AltModifier, 4}})
    {
        QSignalSpy pressed{widget_, &ViewportWidget::MouseDown};
        Press(Qt::RightButton, 30, 40, held);
        Release(Qt::RightButton);
        ASSERT_EQ(pressed.count(), 1);
        EXPECT_EQ(pressed[0][0].toInt(), 2);
        EXPECT_EQ(pressed[0][1].toInt(), shift);
        EXPECT_NEAR(pressed[0][2].toFloat(), 30, 0.01F);
        EXPECT_NEAR(pressed[0][3].toFloat(), 40, 0.01F);
    }
}

TEST_F(QtInputScaled, clicks_follow_their_release)
{
    Press(Qt::LeftButton, 5, 5);
    Release(Qt::LeftButton, 5, 5);
    EXPECT_EQ(heard_, "down up click ");
    heard_.clear();
    QTest::mouseDClick(form_.windowHandle(), Qt::LeftButton, {}, OnForm(5, 5));
    EXPECT_EQ(heard_, "down up click down dblclick up ");
    for (const auto button : {Qt::RightButton, Qt::LeftButton})
    {
        heard_.clear();
        Press(button, 5, 5);
        Release(button, -15, -15);
        EXPECT_EQ(heard_, "down up ") << "outside";
    }
}

TEST_F(QtInputScaled, a_drag_parks_the_cursor_and_only_the_users_movement_counts)
{
    Press(Qt::MiddleButton, 10, 10, Qt::ShiftModifier); // pans
    EXPECT_TRUE(IsCursorHidden());
    EXPECT_EQ(QCursor::pos(), ScreenCentre());
    Settle(); // the echo, and a few looks at the cursor
    EXPECT_EQ(Camera(), (Vector{0, 0, 0}));

    // Far enough for another parking on the way; every move is one that counts.
    Vector expected;
    const auto isThere = [&] // to a pixel in each direction
    {
        const Vector off = Camera() - expected;
        return std::max(std::abs(off.x), std::abs(off.y)) < UnitsPerPixel && off.z == 0;
    };
    for (const auto& [x, y] : {std::pair{0, -40}, {30, -170}, {-120, -100}, {7, 30}})
    {
        LetMovesCount();
        QCursor::setPos(QCursor::pos() + QPoint{x, y});
        expected = expected + Vector{static_cast<float>(x), static_cast<float>(-y), 0} * UnitsPerPixel;
        ASSERT_TRUE(Eventually(isThere)) << Camera().x << ", " << Camera().y;
    }
    Settle();
    EXPECT_TRUE(isThere());
    QTest::mouseRelease(form_.windowHandle(), Qt::MiddleButton, {}, form_.mapFromGlobal(QCursor::pos()));
    EXPECT_FALSE(IsCursorHidden());
    EXPECT_LE((QCursor::pos() - OnDesktop(10, 10)).manhattanLength(), 1);
    EXPECT_EQ(heard_, "end ");
}

TEST_F(QtInputScaled, a_drag_ends_with_whatever_takes_the_widget_away)
{
    const std::function<void()> reasons[] = {
        [&] { widget_->hide(); },
        [&] { form_.close(); },
        [&] { widget_->setEnabled(false); },
        [&]
        {
            QEvent left{QEvent::WindowDeactivate};
            QApplication::sendEvent(widget_, &left);
        },
    };
    for (const auto& reason : reasons)
    {
        heard_.clear();
        form_.show();
        widget_->show();
        widget_->setEnabled(true);
        ASSERT_TRUE(Show(form_));
        Press(Qt::MiddleButton, 10, 10);
        ASSERT_TRUE(IsCursorHidden());
        reason();
        ASSERT_TRUE(Eventually([&] { return !IsCursorHidden(); }));
        EXPECT_EQ(heard_, "end ");
        EXPECT_LE((QCursor::pos() - OnDesktop(10, 10)).manhattanLength(), 1);
        Release(Qt::MiddleButton);
    }
}

TEST_F(QtInputScaled, a_handler_may_hide_the_widget_as_the_drag_begins)
{
    QObject::connect(widget_, &ViewportWidget::BeginNavigating, widget_, &QWidget::hide);
    Press(Qt::MiddleButton, 10, 10);
    EXPECT_FALSE(IsCursorHidden());
}

TEST_F(QtInputScaled, keys_go_up_when_the_focus_is_lost)
{
    widget_->setKeyMoveForward(tdlNavKeyW);
    std::vector<int> up;
    QObject::connect(widget_, &ViewportWidget::KeyUp, [&](int code, int) { up.push_back(code); });
    widget_->setFocus();
    QTest::keyPress(widget_, Qt::Key_W);
    QTest::keyPress(widget_, Qt::Key_5);
    EXPECT_EQ(ForwardSpeed(), 3);
    QFocusEvent lost{QEvent::FocusOut};
    QApplication::sendEvent(widget_, &lost);
    EXPECT_EQ(ForwardSpeed(), 0);
    EXPECT_EQ(up, (std::vector<int>{'5', 'W'}));
    QTest::keyRelease(widget_, Qt::Key_W);
    EXPECT_EQ(up.size(), 2U);
}

TEST_F(QtInputScaled, keys_have_the_codes_of_their_place)
{
    std::vector<int> down;
    QObject::connect(widget_, &ViewportWidget::KeyDown, [&](int code, int) { down.push_back(code); });
    const std::tuple<Qt::Key, Qt::KeyboardModifiers, int> keys[] = {{Qt::Key_A, {}, 65},
                                                                    {Qt::Key_A, Qt::ShiftModifier, 65},
                                                                    {Qt::Key_1, {}, 49},
                                                                    {Qt::Key_Exclam, Qt::ShiftModifier, 49},
                                                                    {Qt::Key_F12, {}, 123},
                                                                    {Qt::Key_Left, {}, 37},
                                                                    {Qt::Key_5, Qt::KeypadModifier, 101},
                                                                    {Qt::Key_Enter, Qt::KeypadModifier, 13},
                                                                    {Qt::Key_Plus, {}, 187},
                                                                    {Qt::Key_Shift, {}, 16},
                                                                    {Qt::Key_Delete, {}, 46}};
    for (const auto& [key, modifiers, code] : keys)
    {
        down.clear();
        QTest::keyClick(widget_, key, modifiers);
        ASSERT_FALSE(down.empty()) << key;
        EXPECT_EQ(down.back(), code) << key;
    }
}

} // namespace lumora::test
