#include "hosts/qt/QtScreen.h"

#include "base/Faults.h"

#include <QCursor>
#include <QMessageBox>
#include <QScreen>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>

namespace lumora
{

namespace
{

constexpr double TwipsPerLogicalPixel = 15;
constexpr double SamePlace = 0.75; ///< device pixels: a logical position of whole numbers is not exact when scaled

double Distance(const QPointF& a, const QPointF& b)
{
    return std::max(std::abs(a.x() - b.x()), std::abs(a.y() - b.y()));
}

QRect Geometry(const QWidget* widget)
{
    return widget && widget->screen() ? widget->screen()->geometry() : QRect{0, 0, 1, 1};
}

std::chrono::nanoseconds SinceStart()
{
    return std::chrono::steady_clock::now().time_since_epoch();
}

} // namespace

QtScreen::QtScreen(QWidget& widget, std::function<void()> cursorChanged)
    : widget_(&widget), cursorChanged_(std::move(cursorChanged))
{
}

double QtScreen::Ratio() const
{
    return widget_ ? widget_->devicePixelRatioF() : 1;
}

int QtScreen::Width() const
{
    faults::Point("Screen.Width");
    return qRound(Geometry(widget_).width() * Ratio());
}

int QtScreen::Height() const
{
    faults::Point("Screen.Height");
    return qRound(Geometry(widget_).height() * Ratio());
}

double QtScreen::TwipsPerPixelX() const
{
    faults::Point("Screen.TwipsPerPixelX");
    return TwipsPerLogicalPixel / Ratio();
}

double QtScreen::TwipsPerPixelY() const
{
    faults::Point("Screen.TwipsPerPixelY");
    return TwipsPerLogicalPixel / Ratio();
}

QPointF QtScreen::ToPixels(const QPointF& desktop) const
{
    return (desktop - Geometry(widget_).topLeft()) * Ratio();
}

QPointF QtScreen::CursorNow() const
{
    return ToPixels(QCursor::pos());
}

ScreenPoint QtScreen::GetCursorPos() const
{
    faults::Point("Screen.GetCursorPos");
    const QPointF place = handling_ || !IsCursorVisible() ? believed_ : CursorNow();
    return {qRound(place.x()), qRound(place.y())};
}

void QtScreen::SetCursorPos(int x, int y)
{
    faults::Point("Screen.SetCursorPos");
    if (!widget_ || !widget_->screen())
        return;
    const QRect geometry = Geometry(widget_);
    if (!handling_)
        real_ = CursorNow();
    believed_ = {static_cast<double>(std::clamp(x, 0, qRound(geometry.width() * Ratio()) - 1)),
                 static_cast<double>(std::clamp(y, 0, qRound(geometry.height() * Ratio()) - 1))};
    QCursor::setPos(widget_->screen(), (believed_ / Ratio()).toPoint() + geometry.topLeft());
    const QPointF landed = CursorNow();
    offset_ = believed_ - real_;
    echo_ = Distance(landed, real_) > SamePlace ? std::optional{landed} : std::nullopt;
}

int QtScreen::ShowCursor(bool show)
{
    faults::Point("Screen.ShowCursor");
    const bool wasVisible = IsCursorVisible();
    displayCounter_ += show ? 1 : -1;
    if (wasVisible != IsCursorVisible() && cursorChanged_)
        cursorChanged_();
    return displayCounter_;
}

std::optional<QPointF> QtScreen::FollowMove(const QPointF& real)
{
    // The window system may drop the echo when a later move follows it closely: then the nearer place tells.
    if (echo_ && Distance(real, *echo_) <= std::max(SamePlace, Distance(real, real_)))
    {
        const bool isEcho = Distance(real, *echo_) <= SamePlace;
        offset_ = IsCursorVisible() ? QPointF{} : believed_ - *echo_;
        echo_.reset();
        if (isEcho)
        {
            real_ = real;
            offset_ = IsCursorVisible() ? QPointF{} : believed_ - real;
            return std::nullopt;
        }
    }
    return Follow(real);
}

QPointF QtScreen::Follow(const QPointF& real)
{
    if (IsCursorVisible() && !echo_)
        offset_ = {};
    real_ = real;
    believed_ = real + offset_;
    return believed_;
}

std::uint32_t QtScreen::Milliseconds() const
{
    faults::Point("Screen.Milliseconds");
    return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(SinceStart()).count());
}

void QtScreen::WaitForVerticalBlank()
{
    faults::Point("Screen.WaitForVerticalBlank");
    constexpr double FewestBlanks = 20; // a second: no screen is slower, and some tell nonsense
    const double blanks = widget_ && widget_->screen() ? widget_->screen()->refreshRate() : 0;
    if (!(blanks >= FewestBlanks))
        return;
    const std::chrono::nanoseconds interval{static_cast<std::int64_t>(1e9 / blanks)};
    std::this_thread::sleep_for(interval - SinceStart() % interval);
}

void QtScreen::MessageBox(const std::string& text, const std::string& title)
{
    faults::Point("Screen.MessageBox");
    QMessageBox box{QMessageBox::NoIcon, QString::fromStdString(title), QString::fromStdString(text), QMessageBox::Ok,
                    widget_};
    box.exec();
}

void QtScreen::Present(const PixelView& /*source*/, const PixelRect& /*destination*/)
{
    faults::Point("Screen.Present");
}

} // namespace lumora
