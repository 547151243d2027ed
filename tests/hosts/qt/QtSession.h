// A widget with a small scene, and waiting for what a window system does in its own time.
#pragma once

#include "hosts/qt/ViewportWidget.h"
#include "viewport/LiveControl.h"

#include <QApplication>
#include <QEventLoop>
#include <QImage>
#include <QProcess>
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

/// What the host in memory shows of it, in that many pixels.
inline QImage PictureInMemory(QSize size)
{
    LiveControl control{UsualSettings(), MakeHost(size.width(), size.height())};
    control->SetScene(HalfCoveredScene());
    control->RenderScene();
    const std::vector<std::uint32_t> pixels = control.Picture();
    QImage picture{size, QImage::Format_RGB32};
    for (int y = 0, i = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x, ++i)
            picture.setPixel(x, y, 0xFF000000 | pixels[static_cast<std::size_t>(i)]);
    return picture;
}

/// One action at the real pointer and keyboard of the server, finished when it returns.
inline void Do(const QStringList& action)
{
    ASSERT_EQ(QProcess::execute("xdotool", action), 0) << action.join(' ').toStdString();
}

inline bool Show(QWidget& widget)
{
    widget.show();
    return QTest::qWaitForWindowExposed(&widget, Patience);
}

} // namespace lumora::test
