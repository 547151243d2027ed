#include "lumora-viewer/EventLog.h"

#include "hosts/qt/ViewportWidget.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>

namespace lumora::viewer
{

EventLog::EventLog(ViewportWidget& viewport, QWidget* parent)
    : QWidget(parent), lines_(new QPlainTextEdit{this}),
      frequent_(new QCheckBox{"Camera, mouse moves and pictures too", this})
{
    lines_->setObjectName("events");
    lines_->setReadOnly(true);
    lines_->setMaximumBlockCount(MaximumLines);
    auto* const clear = new QPushButton{"&Clear", this};
    QObject::connect(clear, &QPushButton::clicked, lines_, &QPlainTextEdit::clear);
    auto* const below = new QHBoxLayout;
    below->addWidget(frequent_);
    below->addStretch();
    below->addWidget(clear);
    auto* const layout = new QVBoxLayout{this};
    layout->addWidget(lines_);
    layout->addLayout(below);

    using Widget = ViewportWidget;
    const auto button = [this](const char* name)
    {
        return [this, name](int which, int shift, float x, float y)
        { Add(QStringLiteral("%1 button %2, shift %3 at %4, %5").arg(name).arg(which).arg(shift).arg(x).arg(y)); };
    };
    const auto key = [this](const char* name)
    {
        return [this, name](int code, int shift)
        { Add(QStringLiteral("%1 code %2, shift %3").arg(name).arg(code).arg(shift)); };
    };
    const auto bare = [this](const char* name) { return [this, name] { Add(name); }; };
    const auto frequent = [this](const char* name) { return [this, name] { AddFrequent(name); }; };
    connect(&viewport, &Widget::Click, this, bare("Click"));
    connect(&viewport, &Widget::DblClick, this, bare("DblClick"));
    connect(&viewport, &Widget::MouseDown, this, button("MouseDown"));
    connect(&viewport, &Widget::MouseUp, this, button("MouseUp"));
    connect(&viewport, &Widget::MouseMove, this,
            [this](int, int, float x, float y) { AddFrequent(QStringLiteral("MouseMove %1, %2").arg(x).arg(y)); });
    connect(&viewport, &Widget::KeyDown, this, key("KeyDown"));
    connect(&viewport, &Widget::KeyUp, this, key("KeyUp"));
    connect(&viewport, &Widget::KeyPress, this,
            [this](int character) { Add(QStringLiteral("KeyPress %1").arg(character)); });
    connect(&viewport, &Widget::Collision, this, bare("Collision"));
    connect(&viewport, &Widget::BeginNavigating, this,
            [this](int control) { Add(QStringLiteral("BeginNavigating on-screen control %1").arg(control)); });
    connect(&viewport, &Widget::EndNavigating, this, bare("EndNavigating"));
    connect(&viewport, &Widget::UpdatePositions, this, frequent("UpdatePositions"));
    connect(&viewport, &Widget::DDSurfaceAvailable, this, frequent("DDSurfaceAvailable"));
    connect(&viewport, &Widget::AntiAliasSurfaceAvailable, this, frequent("AntiAliasSurfaceAvailable"));
    connect(&viewport, &Widget::CameraMoved, this,
            [this](float x, float y, float z, float dirX, float dirY, float dirZ)
            {
                AddFrequent(QStringLiteral("CameraMoved to %1, %2, %3 looking along %4, %5, %6")
                                .arg(x)
                                .arg(y)
                                .arg(z)
                                .arg(dirX)
                                .arg(dirY)
                                .arg(dirZ));
            });
    connect(&viewport, &Widget::Failed, this,
            [this](int number, const QString& source, const QString& description)
            { Add(QStringLiteral("Error %1 from %2: %3").arg(number).arg(source, description)); });
}

void EventLog::Add(const QString& line)
{
    lines_->appendPlainText(line);
}

void EventLog::AddFrequent(const QString& line)
{
    if (frequent_->isChecked())
        Add(line);
}

} // namespace lumora::viewer
