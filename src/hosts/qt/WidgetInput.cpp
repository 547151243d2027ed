// What a person does to the widget with mouse and keyboard, as the control hears it.
#include "hosts/qt/Keys.h"
#include "hosts/qt/QtScreen.h"
#include "hosts/qt/QtWindow.h"
#include "hosts/qt/ViewportWidget.h"
#include "properties/PropertyTable.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <algorithm>
#include <array>

namespace lumora
{

namespace
{

constexpr std::int16_t LeftButton = 1;

struct Button
{
    Qt::MouseButton qt;
    std::int16_t value;
};
constexpr Button Buttons[] = {{Qt::LeftButton, LeftButton}, {Qt::RightButton, 2}, {Qt::MiddleButton, 4}};

std::int16_t ButtonsOf(Qt::MouseButtons held)
{
    std::int16_t sum = 0;
    for (const Button& button : Buttons)
        if (held.testFlag(button.qt))
            sum = static_cast<std::int16_t>(sum | button.value);
    return sum;
}

// Window systems without a pointer grab: a cursor outside the widget moves unseen.
bool MovesGoUnseen()
{
    const QString platform = QGuiApplication::platformName();
    return platform == u"offscreen" || platform == u"minimal";
}

} // namespace

bool ViewportWidget::CallAtMouse(const std::function<void(Viewport&, float, float)>& access)
{
    const PixelRect client = window_->ScreenRect();
    const auto x = static_cast<float>((lastPlace_.x() - client.left) * screen_->TwipsPerPixelX());
    const auto y = static_cast<float>((lastPlace_.y() - client.top) * screen_->TwipsPerPixelY());
    const std::shared_ptr<QtScreen> screen = screen_;
    const bool wasHandling = screen->SetHandling(true);
    const bool done = Call([&](Viewport& control) { access(control, x, y); });
    screen->SetHandling(wasHandling);
    return done;
}

void ViewportWidget::ShowCursorState()
{
    setCursor(window_->Cursor());
    if (!screen_->IsCursorVisible() && MovesGoUnseen())
        poll_.start();
    else
        poll_.stop();
}

void ViewportWidget::Press(QMouseEvent& event, bool secondOfTwo)
{
    const std::int16_t button = ButtonsOf(event.button());
    if (button == 0 || IsDesignTime())
    {
        event.ignore();
        return;
    }
    ReleaseMissed(ButtonsOf(event.buttons()), event.modifiers());
    buttonsHeld_ = static_cast<std::int16_t>(buttonsHeld_ | button);
    if (button == LeftButton)
        secondOfTwo_ = secondOfTwo;
    lastPlace_ = screen_->Follow(screen_->ToPixels(event.globalPosition()));
    const std::int16_t shift = ShiftArgument(event.modifiers());
    const bool heard =
        CallAtMouse([&](Viewport& control, float x, float y) { control.OnMouseDown(button, shift, x, y); });
    // The handler hid the widget, or showed a message: what it took hold of will not be released by a person.
    if (heard && (buttonsHeld_ & button) == 0 && !screen_->IsCursorVisible())
        Release(button, event.modifiers());
    // A press that took hold of something is no click.
    if (heard && secondOfTwo && button == LeftButton && screen_->IsCursorVisible())
        Call([](Viewport& control) { control.OnDblClick(); });
}

void ViewportWidget::mousePressEvent(QMouseEvent* event)
{
    Press(*event, false);
}

void ViewportWidget::mouseDoubleClickEvent(QMouseEvent* event)
{
    Press(*event, true);
}

void ViewportWidget::mouseMoveEvent(QMouseEvent* event)
{
    if (IsDesignTime())
    {
        event->ignore();
        return;
    }
    ReleaseMissed(ButtonsOf(event->buttons()), event->modifiers());
    MoveTo(screen_->ToPixels(event->globalPosition()), event->modifiers());
}

void ViewportWidget::MoveTo(const QPointF& real, Qt::KeyboardModifiers modifiers)
{
    const std::optional<QPointF> place = screen_->FollowMove(real);
    if (!place)
        return;
    lastPlace_ = *place;
    const std::int16_t shift = ShiftArgument(modifiers);
    CallAtMouse([&](Viewport& control, float x, float y) { control.OnMouseMove(buttonsHeld_, shift, x, y); });
}

void ViewportWidget::PollCursor()
{
    const QPointF now = screen_->CursorNow();
    if (now != screen_->LastReal())
        MoveTo(now, QGuiApplication::keyboardModifiers());
}

void ViewportWidget::mouseReleaseEvent(QMouseEvent* event)
{
    const std::int16_t button = ButtonsOf(event->button());
    if ((buttonsHeld_ & button) == 0)
    {
        event->ignore();
        return;
    }
    lastPlace_ = screen_->Follow(screen_->ToPixels(event->globalPosition()));
    const bool dragged = !screen_->IsCursorVisible();
    const QPointer<ViewportWidget> self{this};
    Release(button, event->modifiers());
    const bool isClick = self && button == LeftButton && !dragged && rect().contains(event->position().toPoint());
    if (isClick && !std::exchange(secondOfTwo_, false))
        Call([](Viewport& control) { control.OnClick(); });
}

void ViewportWidget::Release(std::int16_t button, Qt::KeyboardModifiers modifiers)
{
    buttonsHeld_ = static_cast<std::int16_t>(buttonsHeld_ & ~button);
    const std::int16_t shift = ShiftArgument(modifiers);
    CallAtMouse([&](Viewport& control, float x, float y) { control.OnMouseUp(button, shift, x, y); });
}

// Buttons that went up where the widget could not see it, in a menu that opened on the press, for example.
void ViewportWidget::ReleaseMissed(std::int16_t held, Qt::KeyboardModifiers modifiers)
{
    const QPointer<ViewportWidget> self{this};
    for (const Button& button : Buttons)
        if (self && (buttonsHeld_ & button.value) != 0 && (held & button.value) == 0)
            Release(button.value, modifiers);
}

// Nobody will tell of releases any more: the control hears of them now, so that no drag goes on.
void ViewportWidget::LetGo()
{
    const QPointer<ViewportWidget> self{this};
    ReleaseMissed(0, QGuiApplication::keyboardModifiers());
    if (self)
        ReleaseKeys();
}

void ViewportWidget::hideEvent(QHideEvent* /*event*/)
{
    LetGo();
}

void ViewportWidget::changeEvent(QEvent* event)
{
    // The control itself may be disabling its window just now, in the middle of a handler.
    if (event->type() == QEvent::EnabledChange && !isEnabled())
        QMetaObject::invokeMethod(this, &ViewportWidget::LetGo, Qt::QueuedConnection);
    QWidget::changeEvent(event);
}

bool ViewportWidget::event(QEvent* event)
{
    switch (event->type())
    {
    case QEvent::WindowDeactivate:
        LetGo();
        break;
    case QEvent::DynamicPropertyChange:
        TellUnknownProperty(static_cast<QDynamicPropertyChangeEvent*>(event)->propertyName());
        break;
    case QEvent::ShortcutOverride: // before a menu of the host takes the key
        if (IsNavigationKey(*static_cast<QKeyEvent*>(event)))
        {
            event->accept();
            return true;
        }
        break;
    case QEvent::KeyPress: // before the Tab key moves the focus
        if (IsNavigationKey(*static_cast<QKeyEvent*>(event)))
        {
            keyPressEvent(static_cast<QKeyEvent*>(event));
            return true;
        }
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

bool ViewportWidget::IsNavigationKey(const QKeyEvent& event) const
{
    const std::int16_t code = VirtualKey(event);
    if (code == 0 || IsDesignTime())
        return false;
    const PropertyRow* const last = FindProperty("KeyZoomOut");
    for (const PropertyRow* row = FindProperty("KeyMoveForward"); row <= last; ++row)
        if (VariantsEqual(row->read(*control_), std::int32_t{code}))
            return true;
    return false;
}

// Keys that mean nothing to the control go on to the widgets around it: Escape closes a dialog.
void ViewportWidget::keyPressEvent(QKeyEvent* event)
{
    if (IsDesignTime())
    {
        event->ignore();
        return;
    }
    event->setAccepted(IsNavigationKey(*event));
    const std::int16_t code = VirtualKey(*event);
    const std::int16_t shift = ShiftArgument(event->modifiers());
    const QString text = event->text();
    if (code != 0)
    {
        if (!event->isAutoRepeat())
            keysHeld_.push_back({event->nativeScanCode(), event->key(), code});
        if (!Call([&](Viewport& control) { control.OnKeyDown(code, shift); }))
            return;
    }
    for (const QChar character : text)
        if (!Call([&](Viewport& control) { control.OnKeyPress(static_cast<std::int16_t>(character.unicode())); }))
            return;
}

// The key that goes up may have another name than when it went down: Shift changed meanwhile.
void ViewportWidget::keyReleaseEvent(QKeyEvent* event)
{
    event->ignore();
    if (event->isAutoRepeat())
        return;
    const auto held = std::ranges::find_if(
        keysHeld_, [&](const HeldKey& key)
        { return event->nativeScanCode() != 0 ? key.scanCode == event->nativeScanCode() : key.key == event->key(); });
    if (held == keysHeld_.end())
        return;
    event->accept();
    const std::int16_t code = held->code;
    keysHeld_.erase(held);
    const std::int16_t shift = ShiftArgument(event->modifiers());
    Call([&](Viewport& control) { control.OnKeyUp(code, shift); });
}

void ViewportWidget::focusOutEvent(QFocusEvent* event)
{
    const QPointer<ViewportWidget> self{this};
    ReleaseKeys();
    if (self)
        QWidget::focusOutEvent(event);
}

void ViewportWidget::ReleaseKeys()
{
    constexpr std::int16_t NoShift = 0;
    const QPointer<ViewportWidget> self{this};
    while (self && !keysHeld_.empty())
    {
        const std::int16_t code = keysHeld_.back().code;
        keysHeld_.pop_back();
        Call([&](Viewport& control) { control.OnKeyUp(code, NoShift); });
    }
}

} // namespace lumora
