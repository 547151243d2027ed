// What the control raises, line by line.
#pragma once

#include <QWidget>

class QCheckBox;
class QPlainTextEdit;

namespace lumora
{
class ViewportWidget;
}

namespace lumora::viewer
{

/// Keeps the last lines only. Events of every picture and every move come in at a person's wish.
class EventLog : public QWidget
{
public:
    static constexpr int MaximumLines = 1000;

    explicit EventLog(ViewportWidget& viewport, QWidget* parent = nullptr);

    void Add(const QString& line);

private:
    void AddFrequent(const QString& line);

    QPlainTextEdit* lines_;
    QCheckBox* frequent_;
};

} // namespace lumora::viewer
