// The viewer's window: a viewport, what is opened in it, and the panels around it.
#pragma once

#include "lumora-viewer/CameraMotion.h"
#include "lumora-viewer/ModelLoad.h"
#include "lumora-viewer/StageView.h"
#include "lumora-viewer/ViewerSettings.h"

#include <QElapsedTimer>
#include <QMainWindow>
#include <chrono>
#include <memory>

class QAction;
class QDockWidget;
class QLabel;
class QMenu;
class QProgressBar;

namespace lumora::viewer
{

class EventLog;
class Inspector;
class MessageBar;

/// What goes wrong is told in one sentence above the picture, and leaves what is shown as it was.
class MainWindow : public QMainWindow
{
public:
    struct Options
    {
        QString settingsFolder; ///< empty: this user's
        std::string workerPath; ///< the program that reads models; empty: the usual one
        std::chrono::milliseconds timeLimit = std::chrono::minutes{10}; ///< for reading a model
    };

    /// What the program's event loop answers when the control has stopped for good: a new window is wanted.
    static constexpr int StartAnew = 86;

    explicit MainWindow(const Options& options);
    ~MainWindow() override;

    /// Opens models, or shows the built-in scene. Call it once, after the window was shown.
    void Start(const std::vector<std::string>& models);

    /// In place of what is shown, once they are read; a load under way is cancelled.
    void Open(const QStringList& paths);
    void OpenRecent(const QString& path);
    void ShowBuiltInScene();
    bool IsLoading() const { return load_ != nullptr; }

    /// The files that are shown; none while it is the built-in scene.
    const QStringList& Shown() const { return shownPaths_; }
    void CancelLoad();

    /// A PNG file of what the viewport shows. False after a complaint.
    bool SavePicture(const QString& path);

    /// Writes a property of the control and draws. Anti-aliasing and backgrounds expose the surface that they need.
    void SetProperty(std::string_view name, const Variant& value);
    Variant Property(std::string_view name) const;

    /// Behind the scene; an empty path takes it away.
    void SetBackgroundPicture(const QString& path);

    void LookFrom(tdlOrientation view);
    void LookAtAll();

    /// Drags set speeds instead of moving the camera.
    void SetFlying(bool flies);
    bool IsFlying() const { return flies_; }

    /// Says a sentence above the picture.
    void Complain(const QString& sentence);

    ViewportWidget& View() { return *viewport_; }
    const CameraMotion& Motion() const { return *motion_; }
    ViewerSettings& Settings() { return settings_; }
    QList<QAction*> PanelActions() const;

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

    /// The wheel over the picture: the camera goes forward and back, or narrows the view where that shows nothing.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void BuildCentre();
    void BuildPanels();
    void BuildStatusBar();
    void BeginLoad(const QStringList& paths);
    void EndLoad(LoadOutcome outcome);
    void ShowProgress(double fraction);
    void Show(stage::Stage stage, const QString& title);
    void KeepSettings();
    void LeaveIfHalted();

    /// Runs what may raise a RuntimeError; a complaint when it does.
    bool Try(const std::function<void()>& action);

    Options options_;
    ViewerSettings settings_;
    ViewportWidget* viewport_ = nullptr;
    std::unique_ptr<StageView> view_;
    std::unique_ptr<CameraMotion> motion_;
    MessageBar* message_ = nullptr;
    Inspector* inspector_ = nullptr;
    EventLog* events_ = nullptr;
    QDockWidget* inspectorDock_ = nullptr;
    QDockWidget* eventsDock_ = nullptr;
    QWidget* loading_ = nullptr; ///< what the status bar shows of a load
    QLabel* loadingText_ = nullptr;
    QProgressBar* loadingBar_ = nullptr;
    std::unique_ptr<ModelLoad> load_;
    std::unique_ptr<ModelLoad> ended_; ///< it is still telling that it has
    QStringList loadedPaths_;          ///< of load_
    QStringList nextPaths_;            ///< to load once load_ has noticed that it was cancelled
    QStringList shownPaths_;
    QElapsedTimer age_;
    bool showsStage_ = false;
    bool flies_ = false;
};

} // namespace lumora::viewer
