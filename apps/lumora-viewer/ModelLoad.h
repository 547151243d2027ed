// Models read on a thread of their own, while the window goes on.
#pragma once

#include "stage/Models.h"

#include <QObject>
#include <QString>
#include <atomic>
#include <functional>
#include <optional>
#include <thread>

namespace lumora::viewer
{

struct LoadOutcome
{
    std::optional<stage::Stage> stage; ///< nothing when it failed or was cancelled
    QString failure;                   ///< a sentence; empty when cancelled
};

/// The thread makes the scene and all that its first picture and first pick would otherwise have to; nobody else knows
/// the scene before `done` gets it. Both functions are called on the thread that made this object, from its event loop,
/// and not at all once the object is gone.
class ModelLoad
{
public:
    struct Listener
    {
        std::function<void(double fraction)> progress; ///< 0..1, or negative when unknown
        std::function<void(LoadOutcome)> done;         ///< once, last; must not end the object
    };

    ModelLoad(std::vector<std::string> paths, stage::LoadOptions options, Listener listener);

    /// Cancels, and waits until the thread has noticed.
    ~ModelLoad();
    ModelLoad(const ModelLoad&) = delete;
    ModelLoad& operator=(const ModelLoad&) = delete;

    void Cancel() { cancelled_ = true; }

private:
    LoadOutcome Load();
    bool Tell(double fraction);

    std::vector<std::string> paths_;
    stage::LoadOptions options_;
    Listener listener_;
    QObject receiver_; ///< where calls from the thread arrive
    std::atomic<bool> cancelled_ = false;
    int lastPercent_ = -2; ///< the thread's
    std::thread thread_;
};

} // namespace lumora::viewer
