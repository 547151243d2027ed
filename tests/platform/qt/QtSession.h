// A widget with a small scene, and waiting for what a window system does in its own time.
#pragma once

#include "platform/qt/ViewportWidget.h"
#include "viewport/LiveControl.h"

#include <QApplication>
#include <QEventLoop>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

namespace lumora::test
{

/// After this many milliseconds a test gives up: only what is broken takes as long.
constexpr int Patience = 120000;

/// Handles events until `condition` holds; false when it never does.
template<typename Condition>
bool Eventually(Condition&& condition)
{
    QApplication::processEvents();
    return QTest::qWaitFor(condition, Patience);
}

/// Handles what is under way within the program: events, and timers of up to 50 milliseconds. Timers go off in their
/// order, so this holds however slow the machine is.
inline void Settle()
{
    QEventLoop loop;
    QTimer::singleShot(100, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

/// The control ignores moves that follow another within 33 milliseconds.
inline void LetMovesCount()
{
    QTest::qWait(40);
}

/// The settings of tests of the headless host, so that both can be compared.
inline std::unique_ptr<ViewportWidget> MakeWidget(QWidget* parent = nullptr)
{
    MemoryPropertyBag settings = UsualSettings();
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
    return QTest::qWaitForWindowExposed(&widget, Patience);
}

} // namespace lumora::test
