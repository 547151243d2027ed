// Attributes and presentation of a widget.
#include "hosts/qt/QtWindow.h"

#include "base/Faults.h"
#include "base/RuntimeError.h"
#include "hosts/qt/QtValues.h"

#include <QPalette>
#include <algorithm>
#include <array>

namespace lumora
{

namespace
{

constexpr std::int16_t FixedSingle = 1;
constexpr std::int16_t CustomPointer = 99;
constexpr std::uint32_t SystemColorFlag = 0x80000000;

// Handles fit 16 bits.
constexpr WindowHandle FirstHandle = 1000;
constexpr WindowHandle LastHandle = 32000;

// Scroll bar, desktop, active and inactive caption, menu, window, window frame, menu text, window text, caption text,
// active and inactive border, application workspace, highlight and its text, button face, shadow, grey text, button
// text, inactive caption text, button highlight, dark shadow, light, tool tip text and tool tip.
constexpr std::array SystemColors{QPalette::Button,
                                  QPalette::Dark,
                                  QPalette::Highlight,
                                  QPalette::Mid,
                                  QPalette::Window,
                                  QPalette::Base,
                                  QPalette::WindowText,
                                  QPalette::WindowText,
                                  QPalette::Text,
                                  QPalette::HighlightedText,
                                  QPalette::Window,
                                  QPalette::Window,
                                  QPalette::Mid,
                                  QPalette::Highlight,
                                  QPalette::HighlightedText,
                                  QPalette::Button,
                                  QPalette::Mid,
                                  QPalette::PlaceholderText,
                                  QPalette::ButtonText,
                                  QPalette::Midlight,
                                  QPalette::Light,
                                  QPalette::Shadow,
                                  QPalette::Light,
                                  QPalette::ToolTipText,
                                  QPalette::ToolTipBase};

// Mouse pointers 0 .. 15.
constexpr std::array Shapes{Qt::ArrowCursor,     Qt::ArrowCursor,   Qt::CrossCursor,     Qt::IBeamCursor,
                            Qt::ArrowCursor,     Qt::SizeAllCursor, Qt::SizeBDiagCursor, Qt::SizeVerCursor,
                            Qt::SizeFDiagCursor, Qt::SizeHorCursor, Qt::UpArrowCursor,   Qt::WaitCursor,
                            Qt::ForbiddenCursor, Qt::BusyCursor,    Qt::WhatsThisCursor, Qt::SizeAllCursor};

bool IsColor(std::int32_t color)
{
    const auto value = static_cast<std::uint32_t>(color);
    return value <= 0x00FFFFFF || (value & ~SystemColorFlag) < SystemColors.size();
}

void Require(bool accepted, const char* description)
{
    if (!accepted)
        throw RuntimeError{error::InvalidPropertyValue, "ControlWindow", description};
}

WindowHandle FreeHandle()
{
    for (WindowHandle tried = FirstHandle; tried <= LastHandle; ++tried)
        if (!ControlWindow::FromHandle(tried))
            return tried;
    throw RuntimeError{error::InvalidCall, "ControlWindow", "There are too many windows: close some"};
}

} // namespace

QtWindow::QtWindow(QWidget& widget, std::shared_ptr<QtScreen> screen, bool designTime)
    : widget_(&widget), screen_(std::move(screen)), designTime_(designTime), handle_(FreeHandle())
{
}

std::shared_ptr<QtWindow> QtWindow::Create(QWidget& widget, std::shared_ptr<QtScreen> screen, bool designTime)
{
    const std::shared_ptr<QtWindow> window{new QtWindow{widget, std::move(screen), designTime}};
    Register(window->handle_, window);
    return window;
}

QtWindow::~QtWindow()
{
    Unregister(handle_);
}

WindowHandle QtWindow::Handle() const
{
    faults::Point("ControlWindow.Handle");
    return handle_;
}

std::int32_t QtWindow::BackColor() const
{
    faults::Point("ControlWindow.BackColor");
    return backColor_;
}

void QtWindow::SetBackColor(std::int32_t color)
{
    faults::Point("ControlWindow.SetBackColor");
    Require(IsColor(color), "The back colour is neither red, green and blue nor a system colour");
    backColor_ = color;
    if (widget_)
        widget_->update();
}

std::int16_t QtWindow::BorderStyle() const
{
    faults::Point("ControlWindow.BorderStyle");
    return borderStyle_;
}

void QtWindow::SetBorderStyle(std::int16_t style)
{
    faults::Point("ControlWindow.SetBorderStyle");
    Require(style == 0 || style == FixedSingle, "The border style is 0 (none) or 1 (fixed single)");
    borderStyle_ = style;
    if (widget_)
        widget_->update();
}

std::shared_ptr<Picture> QtWindow::MouseIcon() const
{
    faults::Point("ControlWindow.MouseIcon");
    return mouseIcon_;
}

void QtWindow::SetMouseIcon(const std::shared_ptr<Picture>& icon)
{
    faults::Point("ControlWindow.SetMouseIcon");
    mouseIcon_ = icon;
    if (widget_)
        widget_->setCursor(Cursor());
}

std::int16_t QtWindow::MousePointer() const
{
    faults::Point("ControlWindow.MousePointer");
    return mousePointer_;
}

void QtWindow::SetMousePointer(std::int16_t pointer)
{
    faults::Point("ControlWindow.SetMousePointer");
    const bool isShape = pointer >= 0 && pointer < static_cast<std::int16_t>(Shapes.size());
    Require(isShape || pointer == CustomPointer, "The mouse pointer is 0 to 15, or 99 for the mouse icon");
    if (pointer == mousePointer_)
        return;
    mousePointer_ = pointer;
    if (widget_)
        widget_->setCursor(Cursor());
}

bool QtWindow::Enabled() const
{
    faults::Point("ControlWindow.Enabled");
    return enabled_;
}

void QtWindow::SetEnabled(bool enabled)
{
    faults::Point("ControlWindow.SetEnabled");
    enabled_ = enabled;
    if (widget_ && !designTime_)
        widget_->setEnabled(enabled);
}

std::shared_ptr<Picture> QtWindow::GetPicture() const
{
    faults::Point("ControlWindow.GetPicture");
    return picture_;
}

void QtWindow::SetPicture(const std::shared_ptr<Picture>& picture)
{
    faults::Point("ControlWindow.SetPicture");
    picture_ = picture;
    if (widget_)
        widget_->update();
}

double QtWindow::ScaleLeft() const
{
    faults::Point("ControlWindow.ScaleLeft");
    return 0;
}

double QtWindow::ScaleTop() const
{
    faults::Point("ControlWindow.ScaleTop");
    return 0;
}

double QtWindow::ScaleWidth() const
{
    faults::Point("ControlWindow.ScaleWidth");
    return ClientPixels().width() * screen_->TwipsPerPixelX();
}

double QtWindow::ScaleHeight() const
{
    faults::Point("ControlWindow.ScaleHeight");
    return ClientPixels().height() * screen_->TwipsPerPixelY();
}

double QtWindow::ScaleToPixelsX(double value) const
{
    faults::Point("ControlWindow.ScaleToPixelsX");
    return value / screen_->TwipsPerPixelX();
}

double QtWindow::ScaleToPixelsY(double value) const
{
    faults::Point("ControlWindow.ScaleToPixelsY");
    return value / screen_->TwipsPerPixelY();
}

PixelRect QtWindow::ScreenRect() const
{
    faults::Point("ControlWindow.ScreenRect");
    const QRect client = ClientPixels();
    const QPointF corner = widget_ ? screen_->ToPixels(widget_->mapToGlobal(QPointF{0, 0})) : QPointF{};
    const int left = qRound(corner.x()) + client.x();
    const int top = qRound(corner.y()) + client.y();
    return {left, top, left + client.width(), top + client.height()};
}

void QtWindow::Present(const PixelView& source, const PixelRect& destination)
{
    faults::Point("ControlWindow.Present");
    if (!widget_)
        return;
    ++presentCount_;
    if (painter_)
    {
        Draw(*painter_, source, destination);
        drawn_ = true;
        return;
    }
    pending_ = Pending{source, destination};
    widget_->repaint();
    pending_.reset();
}

bool QtWindow::DrawPending(QPainter& painter)
{
    if (!pending_)
        return false;
    Draw(painter, pending_->source, pending_->destination);
    return true;
}

void QtWindow::Begin(QPainter& painter)
{
    painter_ = &painter;
    drawn_ = false;
}

bool QtWindow::End()
{
    painter_ = nullptr;
    return drawn_;
}

void QtWindow::DrawEmpty(QPainter& painter) const
{
    if (!widget_)
        return;
    painter.fillRect(widget_->rect(), BackQColor());
    const QImage image = ToImage(picture_);
    if (!image.isNull())
        painter.drawImage(QPoint{0, 0}, image);
}

void QtWindow::DrawBorder(QPainter& painter) const
{
    if (borderStyle_ != FixedSingle || !widget_)
        return;
    const QRect frame = widget_->rect();
    for (const QRect& side :
         {QRect{frame.left(), frame.top(), frame.width(), 1}, QRect{frame.left(), frame.bottom(), frame.width(), 1},
          QRect{frame.left(), frame.top(), 1, frame.height()}, QRect{frame.right(), frame.top(), 1, frame.height()}})
        painter.fillRect(side, Qt::black);
}

double QtWindow::Ratio() const
{
    return widget_ ? widget_->devicePixelRatioF() : 1;
}

int QtWindow::BorderPixels() const
{
    return borderStyle_ == FixedSingle ? qRound(Ratio()) : 0;
}

QRect QtWindow::WidgetPixels() const
{
    return widget_ ? QRect{0, 0, qRound(widget_->width() * Ratio()), qRound(widget_->height() * Ratio())} : QRect{};
}

QRect QtWindow::ClientPixels() const
{
    const int border = BorderPixels();
    const QRect whole = WidgetPixels();
    return {border, border, std::max(0, whole.width() - 2 * border), std::max(0, whole.height() - 2 * border)};
}

QColor QtWindow::BackQColor() const
{
    const auto value = static_cast<std::uint32_t>(backColor_);
    if ((value & SystemColorFlag) != 0)
        return widget_ ? widget_->palette().color(SystemColors[value & ~SystemColorFlag]) : QColor{};
    return {static_cast<int>(value & 0xFF), static_cast<int>(value >> 8 & 0xFF), static_cast<int>(value >> 16 & 0xFF)};
}

QCursor QtWindow::Cursor() const
{
    if (!screen_->IsCursorVisible())
        return Qt::BlankCursor;
    if (mousePointer_ != CustomPointer)
        return Shapes[static_cast<std::size_t>(mousePointer_)];
    const QPixmap icon = QPixmap::fromImage(ToImage(mouseIcon_));
    return icon.isNull() ? QCursor{Qt::ArrowCursor} : QCursor{icon};
}

// The painter counts logical pixels: one that counts the device's copies them one to one, without smoothing.
void QtWindow::Draw(QPainter& painter, const PixelView& source, const PixelRect& destination) const
{
    const QImage image{reinterpret_cast<const uchar*>(source.pixels), source.width, source.height,
                       static_cast<qsizetype>(source.pitch) * 4, QImage::Format_RGB32};
    const QRect client = ClientPixels();
    const PixelRect place = ScreenRect();
    const QRect target{destination.left - place.left + client.x(), destination.top - place.top + client.y(),
                       destination.Width(), destination.Height()};
    // Scaled widgets may end within a pixel of the device.
    const bool endsWithinPixel = Ratio() != qRound(Ratio());
    if (!drawn_ && (endsWithinPixel || !target.contains(client)))
        painter.fillRect(widget_->rect(), BackQColor());
    painter.save();
    painter.scale(1 / Ratio(), 1 / Ratio());
    painter.setClipRect(client, Qt::IntersectClip);
    if (target.size() == image.size())
        painter.drawImage(target.topLeft(), image);
    else
        painter.drawImage(target, image);
    painter.restore();
}

} // namespace lumora
