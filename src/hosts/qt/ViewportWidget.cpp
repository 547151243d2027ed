// The widget's life, its painting, and what it tells of the control.
#include "hosts/qt/ViewportWidget.h"

#include "automation/ViewportFace.h"
#include "base/Faults.h"
#include "base/Trap.h"
#include "hosts/qt/QtDialogs.h"
#include "hosts/qt/QtScreen.h"
#include "hosts/qt/QtWindow.h"
#include "platform/container/MemoryPropertyBag.h"
#include "platform/drivers/standard/StandardDrivers.h"
#include "properties/PropertyTable.h"
#include "properties/Spelling.h"

#include <QGuiApplication>
#include <QLoggingCategory>
#include <QPaintEvent>
#include <algorithm>
#include <array>

namespace lumora
{

namespace
{

Q_LOGGING_CATEGORY(Log, "lumora.viewport", QtWarningMsg)

// Their readers follow the control, whose writers and handlers say nothing of it.
constexpr std::array<std::string_view, 12> QuietNames{"Direct3DDevice",     "Direct3DDeviceGUID",
                                                      "Direct3DDeviceName", "Direct3DDeviceDescription",
                                                      "HighlightPointer",   "Scene",
                                                      "SceneOverlay",       "ViewportState",
                                                      "DirectDraw",         "DirectDrawSurface",
                                                      "AntiAliasSurface",   "Camera"};

constexpr const char* Halted = "This viewport has stopped after an error: create it again to go on.";

} // namespace

class ViewportWidget::HostContainer : public Container
{
public:
    explicit HostContainer(ViewportWidget& widget, std::shared_ptr<const DriverList> drivers)
        : widget_(&widget), window_(widget.window_), screen_(widget.screen_),
          dialogs_(std::make_shared<QtDialogs>(widget)), drivers_(std::move(drivers)), userMode_(!widget.IsDesignTime())
    {
    }

    bool UserMode() override
    {
        faults::Point("Container.UserMode");
        return userMode_;
    }

    Variant LateBoundMember(std::string_view name) override
    {
        faults::Point("Container.LateBoundMember");
        throw RuntimeError{error::MemberNotFound, "Container", "The container has no member " + std::string{name}};
    }

    void PropertyChanged(std::string_view name) override
    {
        faults::Point("Container.PropertyChanged");
        if (!widget_ || !widget_->control_)
            return;
        if (std::ranges::find(QuietNames, name) == QuietNames.end())
            widget_->TellChanged(name);
        else
            widget_->NoticeQuietChanges();
    }

    std::shared_ptr<ControlWindow> Window() override { return window_; }
    std::shared_ptr<Screen> TheScreen() override { return screen_; }
    std::shared_ptr<Dialogs> TheDialogs() override { return dialogs_; }
    std::shared_ptr<const DriverList> Drivers() override { return drivers_; }

    double PositionToPixelsX(double position) override
    {
        faults::Point("Container.PositionToPixelsX");
        return position * Ratio();
    }

    double PositionToPixelsY(double position) override
    {
        faults::Point("Container.PositionToPixelsY");
        return position * Ratio();
    }

    double PixelsToPositionX(double pixels) override
    {
        faults::Point("Container.PixelsToPositionX");
        return pixels / Ratio();
    }

    double PixelsToPositionY(double pixels) override
    {
        faults::Point("Container.PixelsToPositionY");
        return pixels / Ratio();
    }

    void Log(std::string_view message) override
    {
        qCWarning(lumora::Log).noquote() << QString::fromUtf8(message.data(), static_cast<qsizetype>(message.size()));
    }

private:
    double Ratio() const { return widget_ ? widget_->devicePixelRatioF() : 1; }

    QPointer<ViewportWidget> widget_;
    std::shared_ptr<QtWindow> window_;
    std::shared_ptr<QtScreen> screen_;
    std::shared_ptr<QtDialogs> dialogs_;
    std::shared_ptr<const DriverList> drivers_;
    bool userMode_;
};

ViewportWidget::ViewportWidget(QWidget* parent) : ViewportWidget(Options{}, parent) {}

ViewportWidget::ViewportWidget(const Options& options, QWidget* parent)
    : ViewportProperties(parent), mode_(options.mode),
      screen_(std::make_shared<QtScreen>(*this, [this] { ShowCursorState(); })),
      window_(QtWindow::Create(*this, screen_, IsDesignTime()))
{
    // Every pixel is drawn by the picture: Qt need not erase before it, which would flicker.
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_NoSystemBackground);
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    poll_.setInterval(10);
    connect(&poll_, &QTimer::timeout, this, &ViewportWidget::PollCursor);

    const auto container =
        std::make_shared<HostContainer>(*this, options.drivers ? options.drivers : StandardDrivers());
    control_ = std::make_shared<Viewport>(container);
    ConnectEvents();
    MemoryPropertyBag defaults;
    drawnSize_ = PictureSize();
    Call([&](Viewport& control) { control.Load(options.settings ? *options.settings : defaults); });
    quiet_ = QuietProperties();
}

// Whoever still holds the control finds it halted; its window and screen go on answering without the widget. Nothing is
// signalled: of a window that deletes its children only the QWidget is left to listen.
ViewportWidget::~ViewportWidget()
{
    blockSignals(true);
    Call([](Viewport& control) { control.Terminate(); });
}

std::shared_ptr<Dispatchable> ViewportWidget::face()
{
    if (!face_)
        face_ = std::make_shared<automation::ViewportFace>(control_);
    return face_;
}

QSize ViewportWidget::PictureSize() const
{
    return window_->ClientPixels().size();
}

QSize ViewportWidget::sizeHint() const
{
    return {480, 360};
}

QSize ViewportWidget::minimumSizeHint() const
{
    return {16, 16};
}

void ViewportWidget::RenderScene()
{
    Call([](Viewport& control) { control.RenderScene(); });
}

void ViewportWidget::ShowAboutBox()
{
    Call([](Viewport& control) { control.ShowAboutBox(); });
}

bool ViewportWidget::Guard(const Access& access) const
{
    const std::shared_ptr<Viewport> control = control_;
    const QPointer<const ViewportWidget> self{this};
    try
    {
        access(*control);
        return true;
    }
    catch (const RuntimeError& failure)
    {
        if (self)
            Report(failure.Number(), failure.Source(), failure.Description());
    }
    catch (const std::exception& failure)
    {
        if (self)
            Report(error::InvalidCall, "Viewport", failure.what());
    }
    catch (...)
    {
        if (self)
            Report(error::InvalidCall, "Viewport", "A handler of this program failed without saying why");
    }
    return false;
}

bool ViewportWidget::Call(const Access& access)
{
    const QPointer<ViewportWidget> self{this};
    const bool done = Guard(access);
    if (self)
        Guard([this](Viewport&) { NoticeQuietChanges(); }); // slots hear of them
    return done && self;
}

void ViewportWidget::Report(int number, const std::string& source, const std::string& description) const
{
    qCWarning(Log).noquote() << QStringLiteral("%1 (error %2 from %3)")
                                    .arg(QString::fromStdString(description))
                                    .arg(number)
                                    .arg(QString::fromStdString(source));
    try
    {
        Q_EMIT const_cast<ViewportWidget*>(this)->Failed(number, QString::fromStdString(source),
                                                         QString::fromStdString(description));
    }
    catch (...) // NOLINT: whoever fails at hearing of a failure cannot be told
    {
    }
}

bool ViewportWidget::Reach(const Access& access) const
{
    return Guard(access);
}

void ViewportWidget::Write(const char* property, const Access& access)
{
    const std::uint64_t before = window_->PresentCount();
    const Access named = [&](Viewport& control)
    {
        try
        {
            access(control);
        }
        catch (const RuntimeError& failure)
        {
            throw RuntimeError{failure.Number(), failure.Source(),
                               std::string{property} + " was not set: " + failure.Description()};
        }
    };
    if (Call(named) && window_->PresentCount() == before)
        update();
}

void ViewportWidget::ConnectEvents()
{
    // The control may outlive the widget.
    const auto forward = [this](auto& event, auto signal)
    {
        event.Connect(
            [self = QPointer<ViewportWidget>{this}, signal](auto&&... arguments)
            {
                if (self)
                    ((*self).*signal)(arguments...);
            });
    };
    forward(control_->CameraMoved, &ViewportWidget::CameraMoved);
    forward(control_->Click, &ViewportWidget::Click);
    forward(control_->DblClick, &ViewportWidget::DblClick);
    forward(control_->MouseDown, &ViewportWidget::MouseDown);
    forward(control_->MouseUp, &ViewportWidget::MouseUp);
    forward(control_->MouseMove, &ViewportWidget::MouseMove);
    forward(control_->KeyDown, &ViewportWidget::KeyDown);
    forward(control_->KeyPress, &ViewportWidget::KeyPress);
    forward(control_->KeyUp, &ViewportWidget::KeyUp);
    forward(control_->DDSurfaceAvailable, &ViewportWidget::DDSurfaceAvailable);
    forward(control_->AntiAliasSurfaceAvailable, &ViewportWidget::AntiAliasSurfaceAvailable);
    forward(control_->Collision, &ViewportWidget::Collision);
    forward(control_->UpdatePositions, &ViewportWidget::UpdatePositions);
    forward(control_->BeginNavigating, &ViewportWidget::BeginNavigating);
    forward(control_->EndNavigating, &ViewportWidget::EndNavigating);
}

std::vector<ViewportWidget::QuietProperty> ViewportWidget::QuietProperties() const
{
    std::vector<QuietProperty> properties;
    properties.reserve(QuietNames.size());
    for (const std::string_view name : QuietNames)
    {
        QuietProperty property{name, {}, nullptr};
        IgnoringErrors([&] { property.value = FindProperty(name)->read(*control_); });
        // Objects by their place: to hold them would keep what the control has released.
        if (const auto* object = std::get_if<ObjectReference>(&property.value))
        {
            property.object = object->get();
            property.value = {};
        }
        properties.push_back(std::move(property));
    }
    return properties;
}

void ViewportWidget::NoticeQuietChanges()
{
    if (quiet_.empty()) // being made
        return;
    const std::vector<QuietProperty> before = std::exchange(quiet_, QuietProperties());
    const std::vector<QuietProperty> now = quiet_;
    for (std::size_t i = 0; i < now.size(); ++i)
    {
        if (now[i] == before[i])
            continue;
        if (now[i].name == "ViewportState")
            update();
        TellChanged(now[i].name);
    }
}

bool ViewportWidget::IsHalted() const
{
    return control_->ViewportState() == tdlHalted;
}

void ViewportWidget::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter{this};
    if (!window_->DrawPending(painter))
    {
        // A widget that came to a screen with another scale has another size, though nobody resized it.
        if (std::exchange(drawnSize_, PictureSize()) != PictureSize())
            Call([](Viewport& control) { control.OnResize(); });
        window_->Begin(painter);
        Call([](Viewport& control) { control.OnPaint(); });
        if (!window_->End())
            DrawPlaceholder(painter);
    }
    window_->DrawBorder(painter);
}

void ViewportWidget::DrawPlaceholder(QPainter& painter) const
{
    window_->DrawEmpty(painter);
    if (!IsHalted() && !IsDesignTime())
        return;
    const QColor back = window_->BackQColor();
    const bool isDark = qGray(back.rgb()) < 128;
    painter.setPen(isDark ? Qt::white : Qt::black);
    const QString text = IsHalted()               ? QString{Halted}
                         : objectName().isEmpty() ? QStringLiteral("Viewport")
                                                  : objectName();
    painter.drawText(rect().adjusted(8, 8, -8, -8), Qt::AlignCenter | Qt::TextWordWrap, text);
}

void ViewportWidget::resizeEvent(QResizeEvent* /*event*/)
{
    drawnSize_ = PictureSize();
    Call([](Viewport& control) { control.OnResize(); });
}

void ViewportWidget::showEvent(QShowEvent* /*event*/)
{
    Call([](Viewport& control) { control.OnShow(); });
}

// A form keeps what it does not understand as a dynamic property: whoever wrote it should know.
void ViewportWidget::TellUnknownProperty(const QByteArray& name) const
{
    const std::string_view text{name.constData(), static_cast<std::size_t>(name.size())};
    const std::string_view nearest = NearestProperty(text).name;
    const bool isMeant =
        !IsDesignTime() && !text.empty() && ((text[0] >= 'A' && text[0] <= 'Z') || EqualIgnoringCase(text, nearest));
    if (isMeant && !FindProperty(text) && property(name.constData()).isValid())
        Report(error::MemberNotFound, "Viewport",
               "A viewport has no property " + std::string{text} + "; the nearest is " + std::string{nearest});
}

} // namespace lumora
