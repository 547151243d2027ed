// The screen that a widget is on, and the cursor as the control believes it to be.
#pragma once

#include "platform/container/Screen.h"

#include <QPointF>
#include <QPointer>
#include <QWidget>
#include <functional>
#include <optional>
#include <utility>

namespace lumora
{

/// Positions are device pixels from the top-left of the widget's screen. The display counter is this widget's: the
/// cursor it hides is the one over the widget, and the one of its drags.
///
/// The control moves the cursor and expects the next move to start there. Moves that were under way by then still
/// count from the old place, the warp's own echo is none, and a window system that refuses to move the cursor makes no
/// difference but at the edges of the screen.
class QtScreen : public Screen
{
public:
    QtScreen(QWidget& widget, std::function<void()> cursorChanged);

    int Width() const override;
    int Height() const override;
    double TwipsPerPixelX() const override;
    double TwipsPerPixelY() const override;
    ScreenPoint GetCursorPos() const override;
    void SetCursorPos(int x, int y) override;
    int ShowCursor(bool show) override;
    std::uint32_t Milliseconds() const override;

    /// Sleeps until the next beat of a clock with the screen's refresh rate: Qt does not tell when a blank begins.
    void WaitForVerticalBlank() override;
    void MessageBox(const std::string& text, const std::string& title) override;

    /// Nothing: a program cannot draw outside its windows.
    void Present(const PixelView& source, const PixelRect& destination) override;

    // For the widget.

    bool IsCursorVisible() const { return displayCounter_ >= 0; }

    /// Device pixels of a logical position on the desktop, and of the cursor now.
    QPointF ToPixels(const QPointF& desktop) const;
    QPointF CursorNow() const;

    /// The cursor is at `real`: where the control believes it to be, or nothing when this is the echo of a warp.
    std::optional<QPointF> FollowMove(const QPointF& real);

    /// The same for a press or release, which is never an echo.
    QPointF Follow(const QPointF& real);

    /// Positions of events count while one is handled: the cursor may be further on already.
    /// Answers what was set before.
    bool SetHandling(bool handling) { return std::exchange(handling_, handling); }

    /// The last position told.
    const QPointF& LastReal() const { return real_; }

private:
    double Ratio() const;

    QPointer<QWidget> widget_;
    std::function<void()> cursorChanged_;
    int displayCounter_ = 0;
    bool handling_ = false;
    QPointF real_;                ///< the last position told
    QPointF believed_;            ///< what the control took it for
    QPointF offset_;              ///< believed less real
    std::optional<QPointF> echo_; ///< where the last warp put the cursor, until a move from there is told
};

} // namespace lumora
