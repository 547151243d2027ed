// The window attributes and the picture of a widget that carries a control.
#pragma once

#include "hosts/qt/QtScreen.h"
#include "platform/container/ControlWindow.h"

#include <QCursor>
#include <QPainter>
#include <QPointer>
#include <QWidget>
#include <optional>

namespace lumora
{

/// Positions and sizes are device pixels; the scale mode is twips, 15 for each logical pixel. A picture that is
/// presented while the widget is painted goes into the same paint event; any other makes the widget paint itself at
/// once. Either way the only copy is the one onto the widget's own buffer. A widget that shows nothing yet drops it.
class QtWindow final : public ControlWindow
{
public:
    /// A window with a handle of its own that fits 16 bits. InvalidCall when there is none left.
    static std::shared_ptr<QtWindow> Create(QWidget& widget, std::shared_ptr<QtScreen> screen, bool designTime);
    ~QtWindow() override;
    QtWindow(const QtWindow&) = delete;
    QtWindow& operator=(const QtWindow&) = delete;

    WindowHandle Handle() const override;

    /// 0x00BBGGRR, or 0x80000000 plus the number of a system colour (0 .. 24), taken from the palette.
    std::int32_t BackColor() const override;
    void SetBackColor(std::int32_t color) override;
    std::int16_t BorderStyle() const override; ///< a fixed single border is one logical pixel, inside the widget
    void SetBorderStyle(std::int16_t style) override;
    std::shared_ptr<Picture> MouseIcon() const override;
    void SetMouseIcon(const std::shared_ptr<Picture>& icon) override;
    std::int16_t MousePointer() const override;
    void SetMousePointer(std::int16_t pointer) override;
    bool Enabled() const override;

    /// The widget's own; at design time, where widgets must be reached, only remembered.
    void SetEnabled(bool enabled) override;
    std::shared_ptr<Picture> GetPicture() const override;
    void SetPicture(const std::shared_ptr<Picture>& picture) override;
    double ScaleLeft() const override;
    double ScaleTop() const override;
    double ScaleWidth() const override;
    double ScaleHeight() const override;
    double ScaleToPixelsX(double value) const override;
    double ScaleToPixelsY(double value) const override;
    PixelRect ScreenRect() const override;
    void Present(const PixelView& source, const PixelRect& destination) override;

    // For the widget.

    /// Draws the picture that made the widget paint itself; false when none did.
    bool DrawPending(QPainter& painter);

    /// Pictures presented until End go to this painter.
    void Begin(QPainter& painter);

    /// Answers whether a picture was drawn since Begin.
    bool End();

    /// The back colour over the client area, and the picture that the container gave, if any.
    void DrawEmpty(QPainter& painter) const;
    void DrawBorder(QPainter& painter) const;

    /// The client area within the widget.
    QRect ClientPixels() const;

    QColor BackQColor() const;

    /// How many pictures were presented so far.
    std::uint64_t PresentCount() const { return presentCount_; }

    /// What a person sees over the widget: hidden, or as the mouse pointer says.
    QCursor Cursor() const;

private:
    QtWindow(QWidget& widget, std::shared_ptr<QtScreen> screen, bool designTime);
    double Ratio() const;
    QRect WidgetPixels() const;
    int BorderPixels() const;
    void Draw(QPainter& painter, const PixelView& source, const PixelRect& destination) const;

    struct Pending
    {
        PixelView source;
        PixelRect destination;
    };

    QPointer<QWidget> widget_;
    std::shared_ptr<QtScreen> screen_;
    bool designTime_;
    WindowHandle handle_ = 0;
    std::int32_t backColor_ = 0;
    std::int16_t borderStyle_ = 0;
    std::shared_ptr<Picture> mouseIcon_;
    std::int16_t mousePointer_ = 0;
    bool enabled_ = true;
    std::shared_ptr<Picture> picture_;
    QPainter* painter_ = nullptr; ///< while the widget is painted
    bool drawn_ = false;          ///< into painter_
    std::optional<Pending> pending_;
    std::uint64_t presentCount_ = 0;
};

} // namespace lumora
