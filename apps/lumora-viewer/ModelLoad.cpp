#include "lumora-viewer/ModelLoad.h"

#include "base/RuntimeError.h"
#include "platform/scenegraph/mesh/MeshBuilder.h"

#include <cmath>
#include <new>
#include <utility>

namespace lumora::viewer
{

namespace
{

// Answers false when it was told to stop.
bool Prepare(const Frame& frame, const std::atomic<bool>& cancelled)
{
    for (const auto& visual : frame.Visuals())
    {
        if (cancelled)
            return false;
        if (const auto mesh = std::dynamic_pointer_cast<MeshBuilder>(visual))
            mesh->PreparePicking();
    }
    for (const auto& child : frame.Children())
        if (!Prepare(*child, cancelled))
            return false;
    return true;
}

} // namespace

ModelLoad::ModelLoad(std::vector<std::string> paths, stage::LoadOptions options, Listener listener)
    : paths_(std::move(paths)), options_(std::move(options)), listener_(std::move(listener))
{
    options_.progress = [this](double fraction) { return Tell(fraction); };
    thread_ = std::thread{[this]
                          {
                              auto outcome = std::make_shared<LoadOutcome>(Load());
                              const auto tell = [this, outcome] { listener_.done(std::move(*outcome)); };
                              QMetaObject::invokeMethod(&receiver_, tell, Qt::QueuedConnection);
                          }};
}

ModelLoad::~ModelLoad()
{
    Cancel();
    thread_.join();
}

// No exception may leave the thread.
LoadOutcome ModelLoad::Load()
{
    LoadOutcome outcome;
    try
    {
        stage::Stage stage = stage::LoadModels(paths_, options_);
        if (Prepare(*stage.scene, cancelled_))
            outcome.stage = std::move(stage);
    }
    catch (const RuntimeError& failure)
    {
        outcome.failure = QString::fromStdString(failure.Description());
    }
    catch (const std::bad_alloc&)
    {
        outcome.failure = "There is not enough memory for this model: close other programs or choose a smaller one.";
    }
    catch (const std::exception& failure)
    {
        outcome.failure = QStringLiteral("The model cannot be shown: %1.").arg(QString::fromUtf8(failure.what()));
    }
    if (cancelled_)
        outcome = {};
    return outcome;
}

bool ModelLoad::Tell(double fraction)
{
    const int percent = fraction < 0 ? -1 : static_cast<int>(std::lround(fraction * 100));
    if (std::exchange(lastPercent_, percent) != percent)
        QMetaObject::invokeMethod(
            &receiver_, [this, fraction] { listener_.progress(fraction); }, Qt::QueuedConnection);
    return !cancelled_;
}

} // namespace lumora::viewer
