#include "lumora-viewer/MainWindow.h"

#include "base/RuntimeError.h"
#include "hosts/qt/QtDialogs.h"
#include "lumora-viewer/EventLog.h"
#include "lumora-viewer/Inspector.h"
#include "lumora-viewer/Menus.h"
#include "lumora-viewer/MessageBar.h"
#include "stage/BuiltInScene.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QFileInfo>
#include <QLabel>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QSaveFile>
#include <QStatusBar>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <iostream>

namespace lumora::viewer
{

namespace
{

constexpr const char* Program = "Lumora Viewer";
constexpr const char* Geometry = "geometry";
constexpr const char* Layout = "layout";

QString NameOf(const QStringList& paths)
{
    const QString first = QFileInfo{paths.value(0)}.fileName();
    return paths.size() < 2 ? first : QStringLiteral("%1 and %2 more").arg(first).arg(paths.size() - 1);
}

QStringList LocalFiles(const QMimeData& data)
{
    QStringList files;
    for (const QUrl& url : data.urls())
        if (url.isLocalFile())
            files << url.toLocalFile();
    return files;
}

} // namespace

MainWindow::MainWindow(const Options& options)
    : options_(options), settings_(options.settingsFolder.isEmpty() ? SettingsFolder() : options.settingsFolder)
{
    setWindowIcon(ViewportIcon());
    setWindowTitle(Program);
    setAcceptDrops(true);
    resize(1280, 820);
    BuildCentre();
    BuildPanels();
    BuildStatusBar();
    BuildMenus(*this);
    restoreGeometry(settings_.Window().value(Geometry).toByteArray());
    restoreState(settings_.Window().value(Layout).toByteArray());
    if (!settings_.Control().Complaint().isEmpty())
        Complain(settings_.Control().Complaint());
    viewport_->setFocus();
    age_.start();
}

// The load and what draws go before the viewport, which the window's children are.
MainWindow::~MainWindow()
{
    load_.reset();
    ended_.reset();
    motion_.reset();
    view_.reset();
}

void MainWindow::BuildCentre()
{
    auto* const centre = new QWidget{this};
    ViewportWidget::Options options;
    options.settings = &settings_.Control();
    viewport_ = new ViewportWidget{options, centre};
    viewport_->setObjectName("viewport");
    viewport_->installEventFilter(this);
    message_ = new MessageBar{centre};
    auto* const layout = new QVBoxLayout{centre};
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(message_);
    layout->addWidget(viewport_, 1);
    setCentralWidget(centre);
    view_ = std::make_unique<StageView>(*viewport_);
    motion_ = std::make_unique<CameraMotion>(*viewport_);
    flies_ = viewport_->MouseNavigationMode() == tdlFly;
    connect(viewport_, &ViewportWidget::Failed, this,
            [this](int, const QString&, const QString& description) { Complain(description + "."); });
    connect(viewport_, &ViewportWidget::ViewportStateChanged, this, [this] { LeaveIfHalted(); });
    // Each press makes drags walk again.
    connect(viewport_, &ViewportWidget::BeginNavigating, this,
            [this]
            {
                if (flies_)
                    viewport_->setMouseNavigationMode(tdlFly);
            });
}

void MainWindow::BuildPanels()
{
    const auto dock = [this](const char* name, const QString& title, QWidget* panel, Qt::DockWidgetArea area)
    {
        auto* const made = new QDockWidget{title, this};
        made->setObjectName(name);
        made->setWidget(panel);
        addDockWidget(area, made);
        made->hide();
        return made;
    };
    inspector_ = new Inspector{*viewport_, [this](const QString& sentence) { Complain(sentence); }};
    inspectorDock_ = dock("inspectorPanel", "Inspector", inspector_, Qt::RightDockWidgetArea);
    events_ = new EventLog{*viewport_};
    eventsDock_ = dock("eventsPanel", "Events", events_, Qt::BottomDockWidgetArea);
}

QList<QAction*> MainWindow::PanelActions() const
{
    return {inspectorDock_->toggleViewAction(), eventsDock_->toggleViewAction()};
}

void MainWindow::BuildStatusBar()
{
    loading_ = new QWidget{this};
    loading_->setObjectName("loading");
    loadingText_ = new QLabel{loading_};
    loadingText_->setTextFormat(Qt::PlainText);
    loadingBar_ = new QProgressBar{loading_};
    loadingBar_->setMaximumWidth(240);
    auto* const cancel = new QPushButton{"Cancel", loading_};
    cancel->setObjectName("cancel");
    cancel->setShortcut(Qt::Key_Escape);
    connect(cancel, &QPushButton::clicked, this, [this] { CancelLoad(); });
    auto* const layout = new QHBoxLayout{loading_};
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(loadingText_);
    layout->addWidget(loadingBar_);
    layout->addWidget(cancel);
    statusBar()->addWidget(loading_);
    loading_->hide();
}

void MainWindow::Start(const std::vector<std::string>& models)
{
    QStringList paths;
    for (const std::string& model : models)
        paths << QString::fromStdString(model);
    if (paths.isEmpty())
        ShowBuiltInScene();
    else
        Open(paths);
}

void MainWindow::Open(const QStringList& paths)
{
    if (paths.isEmpty())
        return;
    if (!load_)
        return BeginLoad(paths);
    nextPaths_ = paths;
    load_->Cancel();
}

void MainWindow::OpenRecent(const QString& path)
{
    if (QFileInfo::exists(path))
        return Open({path});
    settings_.RemoveRecent(path);
    Complain(QStringLiteral("The file \"%1\" is not there any more, and was taken off the list.").arg(path));
}

void MainWindow::ShowBuiltInScene()
{
    CancelLoad();
    shownPaths_.clear();
    Show(stage::MakeBuiltInScene(stage::Sky::Plain), "Built-in scene");
}

void MainWindow::CancelLoad()
{
    nextPaths_.clear();
    if (load_)
        load_->Cancel();
}

void MainWindow::BeginLoad(const QStringList& paths)
{
    std::vector<std::string> names;
    loadedPaths_.clear();
    for (const QString& path : paths)
    {
        loadedPaths_ << QFileInfo{path}.absoluteFilePath();
        names.push_back(QFile::encodeName(loadedPaths_.back()).toStdString());
    }
    message_->hide();
    loadingText_->setText("Reading " + NameOf(paths));
    ShowProgress(-1);
    loading_->show();
    stage::LoadOptions options;
    options.arrangement = stage::Arrangement::Walkable;
    options.workerPath = options_.workerPath;
    options.timeLimit = options_.timeLimit;
    load_ =
        std::make_unique<ModelLoad>(std::move(names), std::move(options),
                                    ModelLoad::Listener{[this](double fraction) { ShowProgress(fraction); },
                                                        [this](LoadOutcome outcome) { EndLoad(std::move(outcome)); }});
}

void MainWindow::ShowProgress(double fraction)
{
    loadingBar_->setRange(0, fraction < 0 ? 0 : 100); // an empty range: busy
    loadingBar_->setValue(qRound(fraction * 100));
}

void MainWindow::EndLoad(LoadOutcome outcome)
{
    ended_ = std::move(load_);
    if (!nextPaths_.isEmpty())
        return BeginLoad(std::exchange(nextPaths_, {}));
    loading_->hide();
    if (outcome.stage)
    {
        const std::vector<std::string> warnings = outcome.stage->warnings;
        Show(std::move(*outcome.stage), NameOf(loadedPaths_));
        shownPaths_ = loadedPaths_;
        for (const QString& path : loadedPaths_)
            settings_.AddRecent(path);
        for (const std::string& warning : warnings)
            Complain(QString::fromStdString(warning));
        return;
    }
    if (!showsStage_)
        ShowBuiltInScene();
    if (outcome.failure.isEmpty())
        statusBar()->showMessage(NameOf(loadedPaths_) + " was not opened: that was cancelled.", 10000);
    else
        Complain(outcome.failure);
}

void MainWindow::Show(stage::Stage stage, const QString& title)
{
    showsStage_ = Try([&] { view_->Show(std::move(stage)); });
    setWindowTitle(QStringLiteral("%1 - %2").arg(title, Program));
}

bool MainWindow::SavePicture(const QString& path)
{
    const QImage picture = viewport_->grab().toImage();
    QSaveFile file{path};
    if (file.open(QIODevice::WriteOnly) && picture.save(&file, "PNG") && file.commit())
    {
        statusBar()->showMessage("The picture was saved to " + path, 10000);
        return true;
    }
    Complain(QStringLiteral("The picture was not saved to \"%1\" (%2): choose another place.")
                 .arg(path, file.errorString()));
    return false;
}

Variant MainWindow::Property(std::string_view name) const
{
    return FindProperty(name)->read(viewport_->viewport());
}

void MainWindow::SetProperty(std::string_view name, const Variant& value)
{
    if (name == "ProjectionType")
    {
        Try([&] { view_->Project(static_cast<D3DRMPROJECTIONTYPE>(VariantToLong(value))); });
        return;
    }
    if (name == "AntiAlias" || name == "BackgroundTexture")
        inspector_->Write(*FindProperty("ExposeDDSurface"), true);
    inspector_->Write(*FindProperty(name), value);
}

// The control leaves out what it cannot load; a person who named it wants to hear of it.
void MainWindow::SetBackgroundPicture(const QString& path)
{
    const std::string name = QFile::encodeName(path).toStdString();
    if (path.isEmpty() || Try([&] { LoadPicture(name); }))
        SetProperty("BackgroundTexture", name);
}

void MainWindow::LookFrom(tdlOrientation view)
{
    Try([&] { view_->LookFrom(view); });
}

void MainWindow::LookAtAll()
{
    Try([&] { view_->LookAtAll(); });
}

void MainWindow::SetFlying(bool flies)
{
    flies_ = flies;
    const Variant mode = std::int32_t{flies ? tdlFly : tdlWalk};
    for (const std::string_view name :
         {"MouseNavigationMode", "NavControlPrimaryMode", "NavControlGlideMode", "NavControlAdvanceMode"})
        inspector_->Write(*FindProperty(name), mode);
}

void MainWindow::Complain(const QString& sentence)
{
    message_->Say(sentence);
    events_->Add(sentence);
}

bool MainWindow::Try(const std::function<void()>& action)
{
    try
    {
        action();
        return true;
    }
    catch (const RuntimeError& failure)
    {
        const QString sentence = QString::fromStdString(failure.Description());
        Complain(sentence.endsWith('.') ? sentence : sentence + '.');
        return false;
    }
}

// A control that has stopped stays so: a new window takes over. One that stops at once is not tried again.
void MainWindow::LeaveIfHalted()
{
    constexpr qint64 SoonAfterStart = 3000; // milliseconds
    if (viewport_->ViewportState() != tdlHalted || age_.elapsed() < SoonAfterStart)
        return;
    QMetaObject::invokeMethod(
        this, [] { QApplication::exit(StartAnew); }, Qt::QueuedConnection);
}

// Somebody who closes a window cannot be told in it. What made a control stop is not kept.
void MainWindow::KeepSettings()
{
    settings_.Window().setValue(Geometry, saveGeometry());
    settings_.Window().setValue(Layout, saveState());
    settings_.Window().sync();
    if (viewport_->ViewportState() == tdlHalted)
        return;
    try
    {
        settings_.Control().SetOwnBackColor(view_->OwnBackColor());
        viewport_->viewport().Save(settings_.Control());
        settings_.Control().Store();
    }
    catch (const RuntimeError& failure)
    {
        std::cerr << "lumora-viewer: The settings were not kept: " << failure.Description() << std::endl;
    }
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    CancelLoad();
    KeepSettings();
    event->accept();
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != viewport_ || event->type() != QEvent::Wheel)
        return QMainWindow::eventFilter(watched, event);
    const auto notches = static_cast<float>(static_cast<QWheelEvent*>(event)->angleDelta().y()) / 120;
    Try(
        [&]
        {
            Viewport& control = viewport_->viewport();
            if (stage::IsOrthographic(control.ProjectionType()))
                control.AddCameraZoom(notches * control.FieldOfView() / 10);
            else
                control.AddCameraMovement({0, 0, notches / 2}, tdlAdvance);
            control.RenderScene();
        });
    return true;
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (!LocalFiles(*event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event)
{
    event->acceptProposedAction();
    Open(LocalFiles(*event->mimeData()));
}

} // namespace lumora::viewer
