// A sentence above the picture, until a person has read it.
#pragma once

#include <QFrame>

class QLabel;

namespace lumora::viewer
{

class MessageBar : public QFrame
{
public:
    explicit MessageBar(QWidget* parent = nullptr);

    /// In place of the sentence before.
    void Say(const QString& sentence);

private:
    QLabel* text_;
};

} // namespace lumora::viewer
