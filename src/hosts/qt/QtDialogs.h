// Dialogs as Qt windows, and the control's icon.
#pragma once

#include "platform/container/Dialogs.h"

#include <QIcon>
#include <QPointer>
#include <QWidget>

namespace lumora
{

/// A cube in front of a dark background.
QIcon ViewportIcon();

class QtDialogs : public Dialogs
{
public:
    /// Dialogs belong to the window of `widget` while it lives.
    explicit QtDialogs(QWidget& widget) : widget_(&widget) {}

    void ShowAbout(const AboutTexts& texts, const std::function<void()>& onSystemInfo) override;
    void StartProgram(const std::filesystem::path& program) override;

private:
    QPointer<QWidget> widget_;
};

} // namespace lumora
