// Models come into the window, or a sentence says why not and everything stays as it was.
#include "apps/viewer/ViewerSession.h"
#include "stage/Framing.h"

#include <QDropEvent>
#include <QMimeData>
#include <QProcess>
#include <QPushButton>

namespace lumora::viewer
{

namespace
{

using test::Eventually;

TEST_F(ViewerTest, a_model_of_the_command_line_fills_the_picture_in_every_view_and_projection)
{
    Start({folder_ / "cube.obj"});
    EXPECT_EQ(window_->windowTitle(), "cube.obj - Lumora Viewer");
    EXPECT_EQ(Message(), "");
    for (const auto projection :
         {D3DRMPROJECT_PERSPECTIVE, D3DRMPROJECT_ORTHOGRAPHIC, D3DRMPROJECT_RIGHTHANDPERSPECTIVE})
        for (int view = tdlFrontView; view <= tdlLeftView; ++view)
        {
            SCOPED_TRACE(testing::Message() << "projection " << projection << ", view " << view);
            window_->SetProperty("ProjectionType", std::int32_t{projection});
            window_->LookFrom(static_cast<tdlOrientation>(view));
            const QImage picture = Picture();
            const Shown shown = FindShown(picture);
            // A square in the middle, with the margin above and below.
            const double side = picture.height() * (1 - stage::FramingMargin);
            EXPECT_NEAR(shown.place.width(), side, 2);
            EXPECT_NEAR(shown.place.height(), side, 2);
            EXPECT_NEAR(shown.place.center().x(), picture.width() / 2, 2);
            EXPECT_EQ(shown.count, shown.place.width() * shown.place.height());
        }
}

TEST_F(ViewerTest, a_model_far_from_its_origin_is_orbited_about_its_middle)
{
    folder_.Write("far.obj", CubeAround(1000));
    Start({folder_ / "far.obj"});
    const PickResult picked = Control().Pick(tdlScene, window_->View().width() / 2.0F, window_->View().height() / 2.0F);
    ASSERT_TRUE(picked.PickedFrame);
    const Vector pivot = picked.PickedFrame->GetPosition(Control().Scene());
    EXPECT_LT(std::abs(pivot.x) + std::abs(pivot.y) + std::abs(pivot.z), 0.01F);
}

TEST_F(ViewerTest, dropped_files_open_side_by_side)
{
    folder_.Write("other.obj", CubeAround(5));
    Start();
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(Path("cube.obj")), QUrl::fromLocalFile(Path("other.obj"))});
    QDragEnterEvent enter{QPoint{50, 50}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier};
    QApplication::sendEvent(window_.get(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop{QPointF{50, 50}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier};
    QApplication::sendEvent(window_.get(), &drop);
    ASSERT_TRUE(Eventually([&] { return !window_->IsLoading(); }));
    EXPECT_EQ(window_->windowTitle(), "cube.obj and 1 more - Lumora Viewer");
    EXPECT_EQ(window_->Settings().Recent(), (QStringList{Path("other.obj"), Path("cube.obj")}));
    window_->SetProperty("ProjectionType", std::int32_t{D3DRMPROJECT_ORTHOGRAPHIC});
    window_->LookFrom(tdlFrontView);
    const QRect place = FindShown(Picture()).place;
    EXPECT_NEAR(place.width(), place.height() * 2.15, 3); // two cubes, and a gap of 0.15
}

TEST_F(ViewerTest, a_cancelled_load_leaves_the_scene_and_the_window_lives_meanwhile)
{
    UseWorker("exec sleep 1000");
    Start();
    const auto scene = Control().Scene();
    const QImage before = Picture();
    window_->Open({Path("cube.obj")});
    auto* const cancel = window_->findChild<QPushButton*>("cancel");
    ASSERT_TRUE(Eventually([&] { return cancel->isVisible(); }));
    const Vector camera = Control().GetCameraPosition();
    Control().AddCameraMovement({0, 0, 1}, tdlAdvance); // goes on while a model is read
    window_->View().RenderScene();
    EXPECT_NE(Picture(), before);
    Control().SetCameraPosition(camera.x, camera.y, camera.z);
    QTest::keyClick(window_.get(), Qt::Key_Escape);
    ASSERT_TRUE(Eventually([&] { return !window_->IsLoading(); }));
    EXPECT_FALSE(cancel->isVisible());
    EXPECT_EQ(Control().Scene(), scene);
    EXPECT_EQ(Picture().copy(0, 0, 200, 200), before.copy(0, 0, 200, 200));
    EXPECT_EQ(window_->windowTitle(), "Built-in scene - Lumora Viewer");
    EXPECT_EQ(Message(), "");
}

TEST_F(ViewerTest, another_model_takes_the_place_of_one_that_is_being_read)
{
    folder_.Write("slow.obj", CubeAround(0));
    const std::string real = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "lumora-import-worker";
    UseWorker("case \"$1\" in *slow*) exec sleep 1000 ;; esac\nexec '" + real + "' \"$1\"");
    Start();
    window_->Open({Path("slow.obj")});
    window_->Open({Path("cube.obj")});
    ASSERT_TRUE(Eventually([&] { return !window_->IsLoading(); }));
    EXPECT_EQ(window_->windowTitle(), "cube.obj - Lumora Viewer");
}

TEST_F(ViewerTest, what_cannot_be_opened_is_told_and_the_scene_stays)
{
    struct Row
    {
        const char* name;
        const char* worker;
        const char* model;
        const char* said;
    };
    const auto patient = options_.timeLimit;
    folder_.Write("empty.obj", "");
    for (const auto& [name, worker, model, said] : {Row{"missing", "exit 0", "nowhere.obj", "is not there"},
                                                    {"empty", "exit 0", "empty.obj", "empty file"},
                                                    {"crash", "kill -SEGV $$", "cube.obj", "cannot be read"},
                                                    {"hang", "exec sleep 1000", "cube.obj", "was not read within"}})
    {
        options_.timeLimit = name == std::string_view{"hang"} ? std::chrono::milliseconds{300} : patient;
        UseWorker(worker);
        Start();
        const auto scene = Control().Scene();
        window_->Open({Path(model)});
        ASSERT_TRUE(Eventually([&] { return !window_->IsLoading(); })) << name;
        EXPECT_TRUE(Message().contains(said)) << name << ": " << Message().toStdString();
        EXPECT_TRUE(Message().contains(model)) << name;
        EXPECT_EQ(Control().Scene(), scene) << name;
        EXPECT_EQ(window_->Settings().Recent(), QStringList{}) << name;
    }
    Start({folder_ / "nowhere.obj"});
    EXPECT_TRUE(Message().contains("is not there"));
    EXPECT_EQ(window_->windowTitle(), "Built-in scene - Lumora Viewer") << "something to look at all the same";
}

TEST_F(ViewerTest, a_window_that_closes_ends_its_load)
{
    const std::string written = folder_ / "written";
    UseWorker("echo $$ >'" + written + "'; mv '" + written + "' '" + folder_ / "process" + "'; exec sleep 1000");
    Start();
    window_->Open({Path("cube.obj")});
    ASSERT_TRUE(Eventually([&] { return std::filesystem::exists(folder_ / "process"); }));
    window_->close();
    window_.reset();
    const std::string process = folder_.Read("process");
    EXPECT_FALSE(std::filesystem::exists("/proc/" + process.substr(0, process.find('\n'))));
}

TEST(ViewerProgram, says_what_it_is_and_why_it_cannot_start)
{
    struct Row
    {
        QStringList arguments;
        int status;
        const char* said;
    };
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(name);
    const auto run = [&](const Row& row)
    {
        QProcess program;
        program.setProcessEnvironment(environment);
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(LUMORA_VIEWER, row.arguments);
        ASSERT_TRUE(program.waitForFinished(test::Patience));
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(program.exitCode(), row.status);
        EXPECT_TRUE(program.readAll().contains(row.said)) << row.said;
    };
    run({{"--help"}, 0, "MODEL"});
    run({{"--version"}, 0, "lumora-viewer 2"});
    run({{"--nonsense"}, 2, "--nonsense"});
    run({{}, 1, "no display"});
    environment.insert("DISPLAY", ":12345");
    environment.insert("QT_QPA_PLATFORM", "xcb");
    run({{}, 1, "lumora-viewer: "});
}

} // namespace

} // namespace lumora::viewer
