#include "lumora-viewer/MessageBar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QStyle>
#include <QToolButton>

namespace lumora::viewer
{

MessageBar::MessageBar(QWidget* parent) : QFrame(parent), text_(new QLabel{this})
{
    setObjectName("messageBar");
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    text_->setObjectName("message");
    text_->setForegroundRole(QPalette::ToolTipText);
    text_->setTextFormat(Qt::PlainText);
    text_->setWordWrap(true);
    text_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* const close = new QToolButton{this};
    close->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
    close->setAutoRaise(true);
    close->setToolTip("Close this message");
    QObject::connect(close, &QToolButton::clicked, this, &QWidget::hide);
    auto* const layout = new QHBoxLayout{this};
    layout->setContentsMargins(8, 4, 4, 4);
    layout->addWidget(text_, 1);
    layout->addWidget(close);
    hide();
}

void MessageBar::Say(const QString& sentence)
{
    text_->setText(sentence.simplified());
    show();
}

} // namespace lumora::viewer
