// Panels, pictures and what is found again at the next start.
#include "apps/viewer/ViewerSession.h"
#include "stage/Framing.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QWindow>

namespace lumora::viewer
{

namespace
{

using test::Eventually;

class ViewerPanels : public ViewerTest
{
protected:
    void ShowPanels()
    {
        for (QAction* const panel : window_->PanelActions())
            panel->trigger();
        tree_ = window_->findChild<QTreeWidget*>("properties");
        ASSERT_TRUE(Eventually([&] { return tree_->isVisible(); }));
    }

    QTreeWidgetItem* Item(const QString& name)
    {
        return tree_->findItems(name, Qt::MatchExactly | Qt::MatchRecursive).value(0);
    }

    /// As a user would: find it, click on its value, type another.
    void Enter(const QString& name, const QString& value)
    {
        auto* const search = window_->findChild<QLineEdit*>("search");
        search->clear();
        QTest::keyClicks(search, name);
        QTreeWidgetItem* const item = Item(name);
        ASSERT_TRUE(item && !item->isHidden()) << name.toStdString();
        const QRect place = tree_->visualItemRect(item);
        QTest::mouseClick(tree_->viewport(), Qt::LeftButton, {},
                          {tree_->header()->sectionPosition(1) + 5, place.center().y()});
        const QPointer<QWidget> editor = tree_->viewport()->focusWidget();
        ASSERT_TRUE(editor) << name.toStdString();
        if (auto* const list = qobject_cast<QComboBox*>(editor.data()); list && list->lineEdit())
            list->lineEdit()->selectAll();
        else if (auto* const line = qobject_cast<QLineEdit*>(editor.data()))
            line->selectAll();
        QTest::keyClicks(editor, value);
        QTest::keyClick(editor, Qt::Key_Return);
        EXPECT_TRUE(Eventually([&] { return !editor; }));
    }

    QTreeWidget* tree_ = nullptr;
};

TEST_F(ViewerPanels, the_inspector_changes_a_look_and_reset_restores_it)
{
    Start({folder_ / "cube.obj"});
    ShowPanels();
    const auto shown = [&]
    {
        int properties = 0;
        for (QTreeWidgetItemIterator at{tree_, QTreeWidgetItemIterator::NotHidden}; *at; ++at)
            properties += (*at)->childCount() == 0;
        return properties;
    };
    EXPECT_EQ(shown(), 95);
    auto* const all = window_->findChild<QCheckBox*>("all");
    all->click();
    EXPECT_EQ(shown(), 97);
    all->click();
    const QImage solid = Picture();
    Enter("FillMode", "D3DRMFILL_WIREFRAME");
    EXPECT_EQ(window_->View().FillMode(), D3DRMFILL_WIREFRAME);
    EXPECT_LT(FindShown(Picture()).count, FindShown(solid).count / 4);
    EXPECT_EQ(Item("FillMode")->text(1).toStdString(), "D3DRMFILL_WIREFRAME");
    EXPECT_TRUE(Item("FillMode")->font(1).bold());
    window_->findChild<QPushButton*>("reset")->click();
    EXPECT_EQ(Picture(), solid);
    EXPECT_FALSE(Item("FillMode")->font(1).bold());
}

TEST_F(ViewerPanels, the_inspector_follows_the_control_and_refuses_what_makes_no_sense)
{
    Start();
    ShowPanels();
    Control().SetKeyVelocityMove(12.5F);
    EXPECT_TRUE(Eventually([&] { return Item("KeyVelocityMove")->text(1) == "12.5"; }));
    Enter("KeyVelocityMove", "fast");
    EXPECT_TRUE(Message().contains("fast")) << Message().toStdString();
    EXPECT_EQ(Control().KeyVelocityMove(), 12.5F);

    // What the platform refuses would stop the control at its next new device.
    const float field = Control().FieldOfView();
    Enter("FieldOfView", "-1");
    EXPECT_EQ(Control().FieldOfView(), field);
    EXPECT_TRUE(Message().contains("FieldOfView")) << Message().toStdString();
    Control().SetExposeDDSurface(true);
    Enter("AntiAlias", "1000");
    EXPECT_EQ(Control().AntiAlias(), tdlNone);
    window_->resize(700, 500);
    QApplication::processEvents();
    window_->View().RenderScene();
    EXPECT_EQ(Control().ViewportState(), tdlRunning);
}

TEST_F(ViewerPanels, the_event_log_stays_bounded)
{
    Start();
    ShowPanels();
    auto* const lines = window_->findChild<QPlainTextEdit*>("events");
    lines->clear();
    for (int i = 0; i < 700; ++i)
        QTest::mouseClick(&window_->View(), Qt::RightButton, {}, {10, 10});
    EXPECT_EQ(lines->blockCount(), 1000);
    EXPECT_TRUE(lines->toPlainText().endsWith("MouseUp button 2, shift 0 at 10, 10"))
        << lines->toPlainText().right(80).toStdString();
}

TEST_F(ViewerTest, a_picture_is_saved_as_it_is_seen_or_a_sentence_says_why_not)
{
    Start({folder_ / "cube.obj"});
    ASSERT_TRUE(window_->SavePicture(Path("picture.png")));
    EXPECT_EQ(QImage{Path("picture.png")}.convertToFormat(QImage::Format_RGB32), Picture());
    EXPECT_FALSE(window_->SavePicture(Path("nowhere/picture.png")));
    EXPECT_TRUE(Message().contains("nowhere/picture.png")) << Message().toStdString();
}

TEST_F(ViewerTest, settings_and_recent_files_are_found_again)
{
    Start({folder_ / "cube.obj"});
    window_->SetProperty("FillMode", std::int32_t{D3DRMFILL_WIREFRAME});
    window_->SetProperty("KeyMoveForward", std::int32_t{tdlNavKeyDisable});
    window_->SetProperty("Enabled", false);
    const std::int32_t background = window_->View().BackColor();
    window_->close();
    window_.reset();
    EXPECT_EQ(folder_.Read("settings/viewport.json").find("BackColor"), std::string::npos)
        << "the scene's, not a setting";
    Start();
    EXPECT_EQ(window_->View().FillMode(), D3DRMFILL_WIREFRAME);
    EXPECT_EQ(window_->View().KeyMoveForward(), tdlNavKeyDisable);
    EXPECT_EQ(window_->View().KeyMoveBack(), tdlNavKeyS);
    EXPECT_TRUE(window_->View().Enabled());
    EXPECT_NE(window_->View().BackColor(), background);
    EXPECT_EQ(window_->Settings().Recent(), QStringList{Path("cube.obj")});

    std::filesystem::remove(folder_ / "cube.obj");
    window_->OpenRecent(Path("cube.obj"));
    EXPECT_TRUE(Message().contains("cube.obj")) << Message().toStdString();
    EXPECT_EQ(window_->Settings().Recent(), QStringList{});
}

TEST_F(ViewerTest, damaged_settings_are_told_of_and_left_as_they_are)
{
    std::filesystem::create_directory(folder_ / "settings");
    folder_.Write("settings/viewport.json", "{ \"FillMode\": ");
    folder_.Write("settings/window.ini", "[General]\ngeometry=@ByteArray(nonsense)\nrecentFiles=\n");
    Start();
    EXPECT_TRUE(Message().contains("viewport.json")) << Message().toStdString();
    window_->close();
    window_.reset();
    EXPECT_EQ(folder_.Read("settings/viewport.json"), "{ \"FillMode\": ");
}

TEST_F(ViewerTest, nothing_is_painted_while_nothing_moves)
{
    class Counter : public QObject
    {
    public:
        bool eventFilter(QObject* /*watched*/, QEvent* event) override
        {
            paints += event->type() == QEvent::Paint;
            return false;
        }
        int paints = 0;
    };
    Start({folder_ / "cube.obj"});
    test::Settle(); // what opening left to do
    Counter counter;
    window_->View().installEventFilter(&counter);
    test::Settle();
    EXPECT_EQ(counter.paints, 0);
    EXPECT_FALSE(window_->Motion().IsRunning());
}

TEST_F(ViewerTest, single_keys_look_from_the_axes_and_at_everything)
{
    Start({folder_ / "cube.obj"});
    window_->View().setFocus();
    const auto press = [&](Qt::Key key)
    {
        QTest::keyClick(window_->windowHandle(), key);
        QApplication::processEvents();
        return FindShown(Picture()).place;
    };
    press(Qt::Key_3);
    EXPECT_EQ(Control().GetCameraOrientation().direction, (Vector{0, -1, 0})) << "from above";
    window_->resize(500, 700);
    QApplication::processEvents();
    EXPECT_NEAR(press(Qt::Key_F).width(), 500 * (1 - stage::FramingMargin), 2);
}

TEST_F(ViewerTest, the_about_box_opens_from_the_menu_and_closes_by_keyboard)
{
    Start();
    QString title;
    QTimer user;
    user.callOnTimeout(
        [&]
        {
            if (QWidget* const dialog = QApplication::activeModalWidget())
            {
                title = dialog->windowTitle();
                QTest::keyClick(dialog, Qt::Key_Escape);
            }
        });
    user.start(10);
    window_->findChild<QAction*>("about")->trigger(); // returns when the box is closed
    EXPECT_EQ(title, "About 3D Lumora Viewport");
}

} // namespace

} // namespace lumora::viewer
