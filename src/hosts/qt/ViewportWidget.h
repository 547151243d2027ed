// The control as a Qt widget.
#pragma once

#include "hosts/qt/ViewportProperties.h"
#include "platform/container/PropertyBag.h"
#include "platform/drivers/DriverList.h"

#include <QTimer>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class QKeyEvent;
class QMouseEvent;

namespace lumora
{

class Dispatchable;
class QtScreen;
class QtWindow;

/// A live control on a Qt form, or one in a form designer.
///
/// Every property of the control is a property of the widget, by the same name, and every event a signal; methods, and
/// events whose arguments a handler wants to change, are reached by viewport(). Writing a property by the widget shows
/// its effect at the next paint event; everything else is drawn when RenderScene is called. Nothing is drawn while
/// Enabled is False, as it is at first; setEnabled is that property, and enables the widget along with it.
///
/// Positions in events are the widget's logical pixels, those of QMouseEvent; pictures have the device's. The widget
/// may live on a screen with any scale factor and move between screens.
///
/// No exception leaves the widget: what fails in a property, a handler or a slot of a signal is told by Failed and
/// logged (category "lumora.viewport"). A control that has halted shows a sentence instead of a picture. One thread
/// only: the user interface's.
class ViewportWidget : public ViewportProperties
{
    Q_OBJECT

public:
    enum class Mode
    {
        Live,
        DesignTime, ///< shows a placeholder; starts no device
    };

    struct Options
    {
        PropertyBag* settings = nullptr;           ///< what Load reads; nothing: all defaults
        std::shared_ptr<const DriverList> drivers; ///< nothing: the standard ones
        Mode mode = Mode::Live;
    };

    explicit ViewportWidget(QWidget* parent = nullptr);
    explicit ViewportWidget(const Options& options, QWidget* parent = nullptr);

    /// Terminates the control, and signals none of it.
    ~ViewportWidget() override;

    /// The whole interface of the control. Its methods raise RuntimeError.
    Viewport& viewport() { return *control_; }

    /// The same, for who must hold it: it is terminated with the widget.
    const std::shared_ptr<Viewport>& sharedViewport() const { return control_; }

    /// The control by names and numbers, for scripts: the same face as any other host's control has. Sinks stay
    /// connected as long as the widget; what a call raises is a RuntimeError, and the face of a widget that is gone is
    /// a halted control's. See docs/automation.md on handing it out in the C layout.
    std::shared_ptr<Dispatchable> face();

    /// The size of the control's pictures in device pixels.
    QSize PictureSize() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

public Q_SLOTS:
    /// Draws a picture at once, unless Enabled is False.
    void RenderScene();

    /// Returns when it is closed.
    void ShowAboutBox();

Q_SIGNALS:
    void CameraMoved(float PositionX, float PositionY, float PositionZ, float OrientationDirX, float OrientationDirY,
                     float OrientationDirZ, float OrientationUpX, float OrientationUpY, float OrientationUpZ);
    void Click();
    void DblClick();
    void MouseDown(int Button, int Shift, float x, float y);
    void MouseUp(int Button, int Shift, float x, float y);
    void MouseMove(int Button, int Shift, float x, float y);
    void KeyDown(int KeyCode, int Shift);
    void KeyPress(int KeyAscii);
    void KeyUp(int KeyCode, int Shift);
    void DDSurfaceAvailable();
    void AntiAliasSurfaceAvailable();
    void Collision(std::shared_ptr<lumora::Frame> Frame, std::shared_ptr<lumora::MeshBuilder> MeshBuilder);
    void UpdatePositions();
    void BeginNavigating(int udtNavControl);
    void EndNavigating();

    /// An error that no caller could be given: its number, who raised it, and a sentence.
    void Failed(int number, const QString& source, const QString& description);

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;

private:
    class HostContainer;

    struct HeldKey
    {
        quint32 scanCode;
        int key;
        std::int16_t code;
    };

    /// A property of which the control's container is not told.
    struct QuietProperty
    {
        std::string_view name;
        Variant value;
        const void* object;
        friend bool operator==(const QuietProperty&, const QuietProperty&) = default;
    };

    bool Reach(const Access& access) const override;
    void Write(const char* property, const Access& access) override;

    /// Hands the control to `access`; keeps from Qt what it throws, and reports it. False when it failed.
    bool Guard(const Access& access) const;

    /// The same for what may change the control. False also when the widget is gone afterwards.
    bool Call(const Access& access);

    /// The same, with the mouse's place in the control's units.
    bool CallAtMouse(const std::function<void(Viewport&, float, float)>& access);
    void Report(int number, const std::string& source, const std::string& description) const;
    void ConnectEvents();
    std::vector<QuietProperty> QuietProperties() const;
    void NoticeQuietChanges();
    bool IsDesignTime() const { return mode_ == Mode::DesignTime; }
    bool IsHalted() const;

    void Press(QMouseEvent& event, bool secondOfTwo);
    void Release(std::int16_t button, Qt::KeyboardModifiers modifiers);
    void ReleaseMissed(std::int16_t held, Qt::KeyboardModifiers modifiers);
    void MoveTo(const QPointF& real, Qt::KeyboardModifiers modifiers);
    void PollCursor();
    void LetGo();
    void ReleaseKeys();
    bool IsNavigationKey(const QKeyEvent& event) const;
    void TellUnknownProperty(const QByteArray& name) const;
    void ShowCursorState();
    void DrawPlaceholder(QPainter& painter) const;

    Mode mode_;
    std::shared_ptr<QtScreen> screen_;
    std::shared_ptr<QtWindow> window_;
    std::shared_ptr<Viewport> control_;
    std::shared_ptr<Dispatchable> face_; ///< once it was asked for
    std::vector<QuietProperty> quiet_;
    std::vector<HeldKey> keysHeld_;
    std::int16_t buttonsHeld_ = 0;
    bool secondOfTwo_ = false; ///< the left button went down for the second time of a double click
    QPointF lastPlace_;        ///< of the mouse, device pixels, as the control believes it
    QSize drawnSize_;          ///< that the control was told of
    QTimer poll_;              ///< where hidden cursors leave the widget without a word
};

} // namespace lumora
