// The widget in a window system, with a mouse and keys that another program moves: what a user would see and feel.
#include "hosts/qt/QtSession.h"

#include <QCursor>
#include <QProcess>
#include <QScreen>
#include <QWindow>
#include <fstream>

namespace lumora::test
{

namespace
{

class QtWindowSystem : public testing::Test
{
protected:
    QtWindowSystem() : widget_(MakeWidget())
    {
        widget_->setGeometry(200, 160, 300, 240);
        widget_->setWindowFlag(Qt::FramelessWindowHint);
        widget_->viewport().SetScene(AmbientScene(1));
        widget_->setBackColor(0x406080);
    }

    void SetUp() override
    {
        ASSERT_TRUE(Show(*widget_));
        widget_->activateWindow();
        ASSERT_TRUE(Eventually([&] { return widget_->isActiveWindow(); }));
        MovePointerTo(60, 60);
    }

    double Ratio() const { return widget_->devicePixelRatioF(); }

    /// In the server's pixels.
    QPoint OnScreen(int x, int y) const { return (QPointF{widget_->mapToGlobal(QPoint{x, y})} * Ratio()).toPoint(); }

    void MovePointerTo(int x, int y)
    {
        const QPoint place = OnScreen(x, y);
        Do({"mousemove", QString::number(place.x()), QString::number(place.y())});
        ASSERT_TRUE(Eventually([&] { return QCursor::pos() == widget_->mapToGlobal(QPoint{x, y}); }));
    }

    void MovePointerBy(int x, int y) { Do({"mousemove_relative", "--", QString::number(x), QString::number(y)}); }

    float Depth() { return widget_->viewport().GetCameraPosition().z; }

    std::unique_ptr<ViewportWidget> widget_;
};

} // namespace

TEST_F(QtWindowSystem, the_pixels_of_the_screen_are_the_controls)
{
    widget_->viewport().SetScene(HalfCoveredScene());
    widget_->RenderScene();
    const QSize size = widget_->PictureSize();
    const QRect client{OnScreen(0, 0), size};
    const QImage expected = PictureInMemory(size);
    const auto shown = [&]
    { return widget_->screen()->grabWindow(0).toImage().copy(client).convertToFormat(QImage::Format_RGB32); };
    EXPECT_TRUE(Eventually([&] { return shown() == expected; }));
}

TEST_F(QtWindowSystem, a_drag_walks_as_far_as_the_hand_moved_and_gives_the_cursor_back)
{
    const QPoint before = QCursor::pos();
    Do({"mousedown", "2"});
    const QRect screen = widget_->screen()->geometry();
    ASSERT_TRUE(Eventually([&] { return (QCursor::pos() - screen.center()).manhattanLength() <= 2; })) << "not parked";
    EXPECT_EQ(widget_->cursor().shape(), Qt::BlankCursor);
    EXPECT_EQ(Depth(), 0); // the warp is no movement
    // 7 times 60 pixels: the cursor is parked again on the way.
    float expected = 0;
    for (int i = 0; i < 7; ++i)
    {
        LetMovesCount();
        MovePointerBy(0, -60);
        expected += 60 * 0.002F * 15 / static_cast<float>(Ratio());
        ASSERT_TRUE(Eventually([&] { return std::abs(Depth() - expected) < 0.05F; })) << Depth() << " not " << expected;
    }
    Do({"mouseup", "2"});
    ASSERT_TRUE(Eventually([&] { return widget_->cursor().shape() != Qt::BlankCursor; }));
    EXPECT_LE((QCursor::pos() - before).manhattanLength(), 1);
    const float walked = Depth();
    LetMovesCount();
    MovePointerBy(5, 5);
    ASSERT_TRUE(Eventually([&] { return QCursor::pos() != before; }));
    LetMovesCount();
    EXPECT_EQ(Depth(), walked);
}

TEST_F(QtWindowSystem, clicks_and_keys_arrive_in_their_order)
{
    QStringList heard;
    QObject::connect(widget_.get(), &ViewportWidget::MouseDown,
                     [&](int button, int shift, float x, float)
                     { heard << QStringLiteral("down %1 %2 %3").arg(button).arg(shift).arg(qRound(x)); });
    QObject::connect(widget_.get(), &ViewportWidget::MouseUp, [&] { heard << "up"; });
    QObject::connect(widget_.get(), &ViewportWidget::Click, [&] { heard << "click"; });
    QObject::connect(widget_.get(), &ViewportWidget::KeyDown,
                     [&](int code, int shift) { heard << QStringLiteral("key %1 %2").arg(code).arg(shift); });
    QObject::connect(widget_.get(), &ViewportWidget::KeyPress,
                     [&](int c) { heard << QStringLiteral("'%1'").arg(QChar{c}); });
    QObject::connect(widget_.get(), &ViewportWidget::KeyUp,
                     [&](int code) { heard << QStringLiteral("keyup %1").arg(code); });
    Do({"click", "1"});
    Do({"keydown", "shift", "keydown", "1", "keyup", "shift", "keyup", "1"}); // the key changes its name in between
    const QStringList expected{"down 1 0 60", "up", "click", "key 16 1", "key 49 1", "'!'", "keyup 16", "keyup 49"};
    Eventually([&] { return heard.size() >= expected.size(); });
    EXPECT_EQ(heard, expected) << heard.join(", ").toStdString();
}

#ifdef LUMORA_DESIGNER
TEST(QtDesigner, opens_a_form_with_the_control_and_finds_nothing_to_complain_about)
{
    QProcess designer;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_PLUGIN_PATH", LUMORA_PLUGINS);
    designer.setProcessEnvironment(environment);
    designer.setProcessChannelMode(QProcess::MergedChannels);
    designer.start(LUMORA_DESIGNER, {LUMORA_FORM});
    ASSERT_TRUE(designer.waitForStarted(Patience));
    // The colour that the form gives the control is on the screen; its words would be among the designer's.
    const auto isShown = []
    {
        const QImage screen = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
        int blue = 0;
        for (int y = 0; y < screen.height(); y += 4)
            for (int x = 0; x < screen.width(); x += 4)
                blue += screen.pixelColor(x, y) == QColor(0, 0, 128);
        return blue > 500;
    };
    EXPECT_TRUE(Eventually(isShown));
    EXPECT_EQ(QProcess::execute("xdotool", {"search", "--name", "warning"}), 1) << "the designer shows a warning";
    designer.terminate();
    EXPECT_TRUE(designer.waitForFinished(Patience));
    const QByteArray said = designer.readAll();
    EXPECT_FALSE(said.contains("Viewport")) << said.toStdString();
}
#endif

} // namespace lumora::test
