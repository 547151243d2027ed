// Plays a written session at a control: the person's hands, the clock, and a host that draws and moves the camera.
#pragma once

#include "hosts/headless/HostedViewport.h"
#include "hosts/headless/SessionScript.h"

#include <functional>
#include <string>

namespace lumora::headless
{

/// While it lives it does in UpdatePositions what a host does: it applies the stored velocities for the time that
/// passed on the host's clock since the picture before, or since the camera began to move.
class SessionPlayer
{
public:
    /// Called after the picture of a shot line was drawn, with the line's name (may be empty).
    using TakeShot = std::function<void(const std::string& name)>;

    /// `hosted` must outlive the player.
    explicit SessionPlayer(HostedViewport& hosted, TakeShot takeShot = {});
    ~SessionPlayer();
    SessionPlayer(const SessionPlayer&) = delete;
    SessionPlayer& operator=(const SessionPlayer&) = delete;

    /// From the first line to the last. Errors: what a line ran into, its sentence starting with NAME:LINE;
    /// error::Halted after the line that halted the control.
    void Play(const SessionScript& script);

    /// How many pictures were drawn so far.
    int Pictures() const { return pictures_; }

private:
    void Do(const ResizeAction& action);
    void Do(const MoveByAction& action);
    void Do(const MoveToAction& action);
    void Do(const ButtonAction& action);
    void Do(const ClickAction& action);
    void Do(const KeyAction& action);
    void Do(const AdvanceAction& action);
    void Do(const AnimateAction& action);
    void Do(const FrameAction& action);
    void Do(const ShotAction& action);
    void Do(const SetAction& action);
    void Do(const CameraAction& action);
    void Do(const ViewAction& action);
    void Do(const ObstacleAction& action);
    void OnUpdatePositions();
    ScreenPoint OnScreen(ClientPoint point) const;

    HeadlessHost& host_;
    Viewport& control_;
    TakeShot takeShot_;
    EventConnection connection_;
    std::uint32_t lastUpdate_ = 0; // on the host's clock
    int pictures_ = 0;
};

} // namespace lumora::headless
