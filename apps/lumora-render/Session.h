// One run of the control on the host in memory: from its creation to the last picture.
#pragma once

#include "hosts/headless/HostedViewport.h"
#include "hosts/headless/SessionScript.h"
#include "lumora-render/CommandLine.h"
#include "lumora-render/SettingsFiles.h"
#include "stage/Framing.h"
#include "stage/Models.h"

#include <chrono>
#include <string>
#include <vector>

namespace lumora::render
{

/// Creates a screen of the picture's size with the control all over it. Errors are RuntimeError.
class Session
{
public:
    /// The first two must live as long as the session. The screen leaves room for a window that grows to `largest`.
    Session(const Request& request, const std::vector<Setting>& stored, const headless::ResizeAction& largest);

    /// Compiles the stage's meshes and hands it to the control, applies the settings and places the camera.
    void Show(const stage::Stage& shown);

    /// Draws all frames and writes their pictures.
    void Run(const stage::Stage& shown);

    /// Plays a written session and writes the pictures it takes; the last one where it takes none.
    void Play(const headless::SessionScript& script);

    headless::HostedViewport& Hosted() { return *hosted_; }

    /// After Run: one line on the run, its times and its memory. `loadMilliseconds` is passed through.
    std::string StatisticsAsJson(double loadMilliseconds) const;

private:
    void ApplySettings();
    void PlaceAsTold(const CameraPlacement& placement);
    void PlaceByFraming(const stage::Stage& shown);
    bool IsStored(std::string_view property) const;
    bool IsExplicit(std::string_view property) const { return request_.Sets(property) || IsStored(property); }
    double DrawFrame();

    const Request& request_;
    const std::vector<Setting>& stored_;
    std::unique_ptr<headless::HostedViewport> hosted_;
    std::shared_ptr<lumora::Picture> prerendered_; ///< or nothing
    std::chrono::duration<double, std::milli> compileTime_{0};
    std::vector<double> frameMilliseconds_;
};

} // namespace lumora::render
