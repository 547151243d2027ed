#include "hosts/qt/QtDialogs.h"

#include "base/Faults.h"
#include "base/RuntimeError.h"

#include <QDialog>
#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QPolygonF>
#include <QProcess>
#include <QPushButton>
#include <memory>

namespace lumora
{

namespace
{

QString Text(const std::string& text)
{
    return QString::fromStdString(text);
}

QLabel* MakeLabel(const char* name, const std::string& text, QWidget* parent)
{
    auto* const label = new QLabel{Text(text), parent};
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

// An etched line: a grey one with a white one right below it.
QWidget* MakeSeparator(QWidget* parent)
{
    auto* const line = new QWidget{parent};
    line->setObjectName("Line1");
    line->setFixedHeight(2);
    auto* const layout = new QVBoxLayout{line};
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    for (const QColor& color : {QColor(128, 128, 128), QColor(Qt::white)})
    {
        auto* const half = new QWidget{line};
        half->setAutoFillBackground(true);
        half->setPalette(color);
        layout->addWidget(half);
    }
    return line;
}

QPixmap DrawIcon(int side)
{
    QPixmap pixmap{side, side};
    pixmap.fill(QColor(24, 28, 36));
    QPainter painter{&pixmap};
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.scale(side / 24.0, side / 24.0);
    const QPointF top{12, 3};
    const QPointF right{20, 7.5};
    const QPointF left{4, 7.5};
    const QPointF centre{12, 12};
    const QPointF lowerRight{20, 16.5};
    const QPointF lowerLeft{4, 16.5};
    const QPointF bottom{12, 21};
    const auto face = [&](const QColor& color, const QPolygonF& corners)
    {
        painter.setBrush(color);
        painter.drawPolygon(corners);
    };
    face(QColor(255, 196, 110), {top, right, centre, left});
    face(QColor(232, 140, 48), {left, centre, bottom, lowerLeft});
    face(QColor(168, 88, 24), {centre, right, lowerRight, bottom});
    return pixmap;
}

std::unique_ptr<QDialog> MakeAbout(const AboutTexts& texts, const std::function<void()>& onSystemInfo, QWidget* parent)
{
    auto dialog = std::make_unique<QDialog>(parent);
    dialog->setObjectName("frmVptAbout");
    dialog->setWindowTitle(Text(texts.caption));
    auto* const icon = new QLabel{dialog.get()};
    icon->setObjectName("picIcon");
    icon->setPixmap(ViewportIcon().pixmap(48));
    auto* const title = MakeLabel("lblTitle", texts.title, dialog.get());
    QFont font = title->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * 1.4);
    title->setFont(font);
    auto* const okButton = new QPushButton{Text(texts.okButton), dialog.get()};
    okButton->setObjectName("cmdOK");
    okButton->setDefault(true);
    auto* const systemInfo = new QPushButton{Text(texts.systemInfoButton), dialog.get()};
    systemInfo->setObjectName("cmdSysInfo");
    systemInfo->setAutoDefault(false);
    QObject::connect(okButton, &QPushButton::clicked, dialog.get(), &QDialog::accept);
    QObject::connect(systemInfo, &QPushButton::clicked, dialog.get(), onSystemInfo);

    auto* const layout = new QGridLayout{dialog.get()};
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(icon, 0, 0, 3, 1, Qt::AlignTop);
    layout->addWidget(title, 0, 1, 1, 2);
    layout->addWidget(MakeLabel("lblVersion", texts.version, dialog.get()), 1, 1, 1, 2);
    layout->addWidget(MakeLabel("lblDescription", texts.description, dialog.get()), 2, 1, 1, 2);
    layout->addWidget(MakeSeparator(dialog.get()), 3, 0, 1, 3);
    layout->addWidget(MakeLabel("lblDisclaimer", texts.disclaimer, dialog.get()), 4, 0, 2, 2);
    layout->addWidget(okButton, 4, 2);
    layout->addWidget(systemInfo, 5, 2);
    layout->setColumnMinimumWidth(1, 260);
    layout->setColumnStretch(1, 1);
    return dialog;
}

} // namespace

QIcon ViewportIcon()
{
    QIcon icon;
    for (const int side : {16, 24, 48, 96})
        icon.addPixmap(DrawIcon(side));
    return icon;
}

// The dialog may go before it is closed, with the window that it belongs to.
void QtDialogs::ShowAbout(const AboutTexts& texts, const std::function<void()>& onSystemInfo)
{
    faults::Point("Dialogs.ShowAbout");
    const QPointer<QDialog> dialog{MakeAbout(texts, onSystemInfo, widget_ ? widget_->window() : nullptr).release()};
    dialog->exec();
    delete dialog;
}

void QtDialogs::StartProgram(const std::filesystem::path& program)
{
    faults::Point("Dialogs.StartProgram");
    if (!QProcess::startDetached(QString::fromStdString(program.string()), {}))
        throw RuntimeError{error::FileNotFound, "Dialogs", "The program " + program.string() + " could not be started"};
}

} // namespace lumora
