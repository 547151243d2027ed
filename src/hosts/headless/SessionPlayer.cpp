#include "hosts/headless/SessionPlayer.h"

#include "base/RuntimeError.h"
#include "camera/Velocities.h"

#include <algorithm>

namespace lumora::headless
{

namespace
{

constexpr std::uint32_t StepTime = SessionScript::StepTime;

// At and below a frame; returns whether there is such a mesh.
bool SetObstacles(const Frame& frame, const ObstacleAction& action)
{
    bool isFound = false;
    for (const auto& visual : frame.Visuals())
        if (const auto mesh = std::dynamic_pointer_cast<MeshBuilder>(visual); mesh && mesh->Name() == action.mesh)
        {
            mesh->SetObstacle(action.obstacle);
            isFound = true;
        }
    for (const auto& child : frame.Children())
        isFound = SetObstacles(*child, action) || isFound;
    return isFound;
}

} // namespace

SessionPlayer::SessionPlayer(HostedViewport& hosted, TakeShot takeShot)
    : host_(hosted.Host()), control_(hosted.Control()), takeShot_(std::move(takeShot)),
      connection_(control_.UpdatePositions.Connect([this] { OnUpdatePositions(); })),
      lastUpdate_(host_.Display().Clock())
{
}

SessionPlayer::~SessionPlayer()
{
    control_.UpdatePositions.Disconnect(connection_);
}

void SessionPlayer::Play(const SessionScript& script)
{
    for (const SessionStep& step : script.steps)
    {
        const auto at = [&] { return script.name + ":" + std::to_string(step.line) + ": "; };
        try
        {
            // A camera that stands still has no time to catch up on.
            if (!IsCameraMoving(control_))
                lastUpdate_ = host_.Display().Clock();
            std::visit([this](const auto& action) { Do(action); }, step.action);
        }
        catch (const RuntimeError& failure)
        {
            throw RuntimeError{failure.Number(), failure.Source(), at() + failure.Description()};
        }
        if (control_.ViewportState() == tdlHalted)
            throw RuntimeError{error::Halted, "session", at() + "The control failed here and has halted"};
    }
}

void SessionPlayer::OnUpdatePositions()
{
    ++pictures_;
    const std::uint32_t now = host_.Display().Clock();
    const std::uint32_t passed = now - lastUpdate_;
    lastUpdate_ = now;
    constexpr float MillisecondsPerSecond = 1000;
    if (IsCameraMoving(control_))
        ApplyCameraVelocities(control_, static_cast<float>(passed) / MillisecondsPerSecond);
}

ScreenPoint SessionPlayer::OnScreen(ClientPoint point) const
{
    const PixelRect& client = host_.ControlArea().ClientRect();
    return {client.left + point.x, client.top + point.y};
}

void SessionPlayer::Do(const ResizeAction& action)
{
    host_.ResizeWindow(action.width, action.height);
}

void SessionPlayer::Do(const MoveByAction& action)
{
    if (action.milliseconds == 0)
        return host_.MoveMouseBy(action.x, action.y);
    // No step is shorter than the time that the control takes between moves, so that none is lost.
    const std::uint32_t steps = std::max(1U, action.milliseconds / StepTime);
    for (std::uint32_t step = 0; step < steps; ++step)
    {
        const auto share = [&](std::int64_t whole)
        { return static_cast<int>(whole * (step + 1) / steps - whole * step / steps); };
        host_.AdvanceTime(static_cast<std::uint32_t>(share(action.milliseconds)));
        host_.MoveMouseBy(share(action.x), share(action.y));
    }
}

void SessionPlayer::Do(const MoveToAction& action)
{
    const ScreenPoint to = OnScreen(action.to);
    host_.MoveMouseTo(to.x, to.y);
}

void SessionPlayer::Do(const ButtonAction& action)
{
    if (action.at)
    {
        const ScreenPoint at = OnScreen(*action.at);
        host_.Display().PlaceCursor(at.x, at.y);
    }
    if (action.down)
        host_.PressButton(action.button);
    else
        host_.ReleaseButton(action.button);
}

void SessionPlayer::Do(const ClickAction& action)
{
    if (action.twice)
        host_.DoubleClick();
    else
        host_.Click();
}

void SessionPlayer::Do(const KeyAction& action)
{
    if (action.motion != KeyMotion::Up)
        host_.PressKey(action.code);
    if (action.motion != KeyMotion::Down)
        host_.ReleaseKey(action.code);
}

void SessionPlayer::Do(const AdvanceAction& action)
{
    host_.AdvanceTime(action.milliseconds);
}

void SessionPlayer::Do(const AnimateAction& action)
{
    for (std::uint32_t left = action.milliseconds; left > 0;)
    {
        const std::uint32_t step = std::min(StepTime, left);
        left -= step;
        host_.AdvanceTime(step);
        control_.RenderScene();
    }
}

void SessionPlayer::Do(const FrameAction&)
{
    control_.RenderScene();
}

void SessionPlayer::Do(const ShotAction& action)
{
    control_.RenderScene();
    if (takeShot_)
        takeShot_(action.name);
}

void SessionPlayer::Do(const SetAction& action)
{
    action.row->write(control_, action.value);
}

void SessionPlayer::Do(const CameraAction& action)
{
    const auto& [position, direction, up] = action;
    control_.SetCameraPosition(position.x, position.y, position.z);
    control_.SetCameraOrientation(direction.x, direction.y, direction.z, up.x, up.y, up.z);
}

void SessionPlayer::Do(const ViewAction& action)
{
    control_.InitializeCameraPositionAndOrientation(action.view);
}

void SessionPlayer::Do(const ObstacleAction& action)
{
    const auto& scene = control_.Scene();
    if (!scene || !SetObstacles(*scene, action))
        throw RuntimeError{error::InvalidCall, "SessionPlayer",
                           "The scene has no mesh of the name \"" + action.mesh + "\"; --events tells names"};
}

} // namespace lumora::headless
