// A widget with a small scene, and waiting for what a window system does in its own time.
#pragma once

#include "platform/qt/ViewportWidget.h"
#include "viewport/LiveControl.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

namespace lumora::test
{

/// Handles events until `condition` holds; false after five seconds.
template<typename Condition>
bool Eventually(Condition&& condition)
{
    QElapsedTimer waited;
    for (waited.start(); waited.elapsed() < 5000;)
    {
        QApplication::processEvents(QEventLoop::AllEvents, 20);
        if (condition())
            return true;
    }
    return condition();
}

/// The settings of tests of the headless host, so that both can be compared.
inline std::unique_ptr<ViewportWidget> MakeWidget(QWidget* parent = nullptr)
{
    headless::MemoryPropertyBag settings = UsualSettings();
    ViewportWidget::Options options;
    options.settings = &settings;
    auto widget = std::make_unique<ViewportWidget>(options, parent);
    widget->resize(Side, Side);
    return widget;
}

/// Half of it is a square in front of the camera, the other half the background.
inline std::shared_ptr<Frame> HalfCoveredScene()
{
    const auto scene = AmbientScene(1);
    scene->AddVisual(Square(-5, 0, 10, 5, 0xFFFF8040));
    return scene;
}

inline bool Show(QWidget& widget)
{
    widget.show();
    return QTest::qWaitForWindowExposed(&widget);
}

} // namespace lumora::test
