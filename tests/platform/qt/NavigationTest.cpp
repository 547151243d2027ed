// The same drags as on the host in memory do the same to the camera in a window.
#include "camera/Schemes.h"
#include "platform/qt/QtSession.h"

#include <QCursor>
#include <QWindow>
#include <algorithm>

namespace lumora::test
{

namespace
{

/// The fixture's scene in a widget, and simulated input.
class QtDesk : public DeskScene
{
public:
    explicit QtDesk(D3DRMPROJECTIONTYPE projection) : widget_(MakeWidget())
    {
        widget_->setGeometry(100, 100, Side, Side);
        PutInto(Control(), projection);
        EXPECT_TRUE(Show(*widget_));
        widget_->setFocus();
    }

    Viewport& Control() { return widget_->viewport(); }

    void Press(bool onPlate, Qt::KeyboardModifiers held)
    {
        const int inset = onPlate ? Side / 2 : 5;
        pressed_ = {inset, inset};
        QCursor::setPos(widget_->mapToGlobal(pressed_));
        QApplication::processEvents();
        QTest::mousePress(widget_.get(), Qt::MiddleButton, held, pressed_);
        moves_ = 0;
        QObject::connect(widget_.get(), &ViewportWidget::UpdatePositions, [this] { ++moves_; });
    }

    /// Until the control has drawn the picture of the move.
    void Move(int x, int y)
    {
        LetMovesCount();
        const int before = moves_;
        QCursor::setPos(QCursor::pos() + QPoint{x, y});
        EXPECT_TRUE(Eventually([&] { return moves_ > before; }));
    }

    void Release(Qt::KeyboardModifiers held)
    {
        QTest::mouseRelease(widget_.get(), Qt::MiddleButton, held, pressed_);
        EXPECT_EQ(QCursor::pos(), widget_->mapToGlobal(pressed_));
    }

private:
    std::unique_ptr<ViewportWidget> widget_;
    QPoint pressed_;
    int moves_ = 0;
};

Qt::KeyboardModifiers ModifiersOf(const std::vector<std::int16_t>& held)
{
    Qt::KeyboardModifiers modifiers;
    for (const auto& [code, modifier] :
         {std::pair{Shift, Qt::ShiftModifier}, {Control, Qt::ControlModifier}, {Alt, Qt::AltModifier}})
        if (std::ranges::find(held, code) != held.end())
            modifiers |= modifier;
    return modifiers;
}

} // namespace

TEST(QtNavigation, drags_do_what_the_scheme_says)
{
    for (const auto& [name, projection, onPlate, held, does] : Schemes)
    {
        QtDesk desk{projection};
        const Vector object = desk.plate->GetPosition(desk.scene);
        RuleCamera rules = desk.rules;
        float field = desk.Control().FieldOfView();
        const Qt::KeyboardModifiers modifiers = ModifiersOf(held);
        desk.Press(onPlate, modifiers);
        for (const auto& [x, y] : {std::pair{30, -20}, {-7, 55}})
        {
            desk.Move(x, y);
            Obey(does, static_cast<float>(x) * TwipsPerPixel, static_cast<float>(y) * TwipsPerPixel, object, rules,
                 field);
            ExpectCameraOf(desk.Control(), rules, name);
            EXPECT_NEAR(desk.Control().FieldOfView(), field, 1e-5) << name;
        }
        desk.Release(modifiers);
    }
}

} // namespace lumora::test
