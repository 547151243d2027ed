// What a person would do with the control on a form, done by a program.
#include "lumora-render/Session.h"

#include "hosts/headless/SessionPlayer.h"
#include "lumora-render/Output.h"
#include "lumora-render/Progress.h"
#include "platform/container/MemoryPropertyBag.h"
#include "platform/drivers/standard/StandardDrivers.h"
#include "platform/scenegraph/mesh/MeshBuilder.h"
#include "stage/Placing.h"
#include "viewport/Viewport.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <nlohmann/json.hpp>
#include <numbers>
#include <sys/resource.h>

namespace lumora::render
{

namespace
{

// Exactly the picture for pictures alone; in a session, a desk on which a mouse has room around the window.
struct Desk
{
    int width;
    int height;
    PixelRect client;
};

Desk DeskFor(const Request& request, const headless::ResizeAction& largest)
{
    if (request.play.empty())
        return {request.width, request.height, {0, 0, request.width, request.height}};
    constexpr int Width = 1920;
    constexpr int Height = 1080;
    constexpr int Room = 40;
    const auto side = [](int usual, int ofWindow)
    { return std::min(std::max(usual, ofWindow + 2 * Room), headless::VirtualScreen::MaximumSide); };
    const int width = side(Width, std::max(request.width, largest.width));
    const int height = side(Height, std::max(request.height, largest.height));
    const int left = std::min(Room, width - request.width);
    const int top = std::min(Room, height - request.height);
    return {width, height, {left, top, left + request.width, top + request.height}};
}

std::unique_ptr<headless::HostedViewport> HostFor(const Request& request, const std::vector<Setting>& stored,
                                                  const headless::ResizeAction& largest)
{
    MemoryPropertyBag bag = ChosenSettings(request, stored);
    // Pictures are drawn whatever a file says, and nobody sees the screen they are drawn on.
    bag.Set("Enabled", true);
    bag.Set("WaitForVSYNC", false);
    const Desk desk = DeskFor(request, largest);
    auto screen = std::make_shared<headless::VirtualScreen>(desk.width, desk.height);
    auto host = std::make_shared<headless::HeadlessHost>(StandardDrivers(), std::move(screen), desk.client);
    return headless::HostedViewport::Live(std::move(host), bag);
}

// Visits each mesh once, however many frames show it: a compiled mesh is kept.
void CompileMeshes(const Frame& frame)
{
    for (const auto& visual : frame.Visuals())
        if (const auto mesh = std::dynamic_pointer_cast<MeshBuilder>(visual))
            mesh->Compiled();
    for (const auto& child : frame.Children())
        CompileMeshes(*child);
}

// Bytes that were resident at most, of this program or of those it has started.
std::uint64_t PeakMemory(__rusage_who whose)
{
    rusage usage{};
    getrusage(whose, &usage);
    return static_cast<std::uint64_t>(usage.ru_maxrss) * 1024;
}

double MedianOf(std::vector<double> values)
{
    std::ranges::sort(values);
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

} // namespace

Session::Session(const Request& request, const std::vector<Setting>& stored, const headless::ResizeAction& largest)
    : request_(request), stored_(stored), hosted_(HostFor(request, stored, largest))
{
    // The control leaves a background out that it cannot load; a person who named one wants to hear of it.
    if (!request.background.empty())
        LoadPicture(request.background);
    if (!request.prerendered.empty())
        prerendered_ = LoadPicture(request.prerendered);
    hosted_->Host().ShowControl();
    const Viewport& control = hosted_->Control();
    if (control.ViewportState() != tdlHalted)
        return;
    const auto factor = static_cast<long>(control.ExposeDDSurface() ? control.AntiAlias() : 1);
    throw RuntimeError{error::NoDevice, "lumora-render",
                       "No driver could be started that draws " + std::to_string(request.width * factor) + " by " +
                           std::to_string(request.height * factor) + " pixels: ask for a smaller picture."};
}

void Session::Show(const stage::Stage& shown)
{
    const auto start = std::chrono::steady_clock::now();
    CompileMeshes(*shown.scene);
    compileTime_ = std::chrono::steady_clock::now() - start;
    Viewport& viewport = hosted_->Control();
    viewport.SetScene(shown.scene);
    viewport.SetBackColor(IsStored("BackColor") ? viewport.BackColor() : stage::ToBackColor(shown.background));
    if (request_.accumulate)
        viewport.SetAccumulate(true); // once more: it clears, now in the right colour
    if (!shown.hasLights)
        stage::AddCameraLights(viewport.Camera());
    ApplySettings();
    if (request_.camera)
        PlaceAsTold(*request_.camera);
    else
        PlaceByFraming(shown);
}

bool Session::IsStored(std::string_view property) const
{
    return std::ranges::any_of(stored_, [&](const Setting& setting) { return setting.row->name == property; });
}

void Session::ApplySettings()
{
    for (const Setting& setting : request_.settings)
    {
        try
        {
            setting.row->write(hosted_->Control(), setting.value);
        }
        catch (const RuntimeError& failure)
        {
            throw RuntimeError{failure.Number(), failure.Source(),
                               "The property " + std::string{setting.row->name} +
                                   " did not take its value: " + failure.Description()};
        }
    }
}

void Session::PlaceAsTold(const CameraPlacement& placement)
{
    stage::StandAt(hosted_->Control(), {placement.position, placement.direction, placement.up});
}

void Session::PlaceByFraming(const stage::Stage& shown)
{
    Viewport& viewport = hosted_->Control();
    stage::Standpoint look{{}, stage::ThreeQuarterDirection, {0, 1, 0}};
    if (request_.view)
    {
        viewport.InitializeCameraPositionAndOrientation(static_cast<tdlOrientation>(*request_.view));
        const Orientation orientation = viewport.GetCameraOrientation();
        look = {{}, orientation.direction, orientation.up};
    }
    stage::FramingOptions options{look.direction, look.up,         stage::IsOrthographic(viewport.ProjectionType()),
                                  request_.width, request_.height, std::nullopt};
    if (IsExplicit("FrontClippingPlane"))
        options.front = viewport.FrontClippingPlane();
    const auto cornersOf = request_.turntable ? stage::TurnedCornersOf : stage::CornersOf;
    stage::Framing framing = stage::FramePoints(cornersOf(shown.focus), cornersOf(shown.extent), options);
    if (request_.IsForWalking())
        framing = stage::ForWalking(framing, look.direction, options.orthographic);
    if (!IsExplicit("BackClippingPlane"))
        viewport.SetBackClippingPlane(framing.back);
    if (!IsExplicit("FrontClippingPlane"))
        viewport.SetFrontClippingPlane(framing.front);
    if (!IsExplicit("FieldOfView"))
        viewport.SetFieldOfView(framing.field);
    stage::StandAt(viewport, {framing.position, stage::AsSeen(viewport, look.direction), look.up});
}

double Session::DrawFrame()
{
    const auto start = std::chrono::steady_clock::now();
    if (prerendered_)
        hosted_->Control().DisplayPreRenderedImage(prerendered_);
    else
        hosted_->Control().RenderScene();
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    return time.count();
}

void Session::Run(const stage::Stage& shown)
{
    Viewport& viewport = hosted_->Control();
    const stage::Standpoint start = stage::StandpointOf(viewport);
    const Vector centre = shown.focus.IsEmpty() ? Vector{} : shown.focus.Centre();
    const bool everyFrame = HasFrameNumber(request_.output);
    Progress progress{"Drawing"};
    for (int frame = 0; frame < request_.frames; ++frame)
    {
        if (request_.turntable && frame > 0)
            stage::StandAt(viewport, stage::Turned(start, centre, 2 * std::numbers::pi * frame / request_.frames));
        frameMilliseconds_.push_back(DrawFrame());
        const bool kept = everyFrame || frame + 1 == request_.frames;
        if (kept && !request_.output.empty())
            WritePicture(NameOfFrame(request_.output, frame), hosted_->Picture());
        progress.Report((frame + 1.0) / request_.frames);
    }
}

void Session::Play(const headless::SessionScript& script)
{
    ShotNames names{request_.output, script.UnnamedShots()};
    bool took = false;
    headless::SessionPlayer player{*hosted_, [&](const std::string& name)
                                   {
                                       took = true;
                                       WritePicture(names.Next(name), hosted_->Picture());
                                   }};
    player.Play(script);
    if (!took && !request_.output.empty())
    {
        DrawFrame();
        WritePicture(NameOfFrame(request_.output, 0), hosted_->Picture());
    }
}

std::string Session::StatisticsAsJson(double loadMilliseconds) const
{
    const auto rounded = [](double milliseconds) { return std::round(milliseconds * 1000) / 1000; };
    Viewport& viewport = hosted_->Control();
    const DriverMemory memory = viewport.MemoryOfDriver();
    nlohmann::ordered_json statistics{
        {"driver", viewport.Direct3DDeviceName()},
        {"triangles", viewport.LastFrame().Triangles},
        {"width", request_.width},
        {"height", request_.height},
        {"frames", request_.frames},
        {"medianFrameMilliseconds", rounded(MedianOf(frameMilliseconds_))},
        {"worstFrameMilliseconds", rounded(*std::ranges::max_element(frameMilliseconds_))},
        {"loadMilliseconds", rounded(loadMilliseconds)},
        {"compileMilliseconds", rounded(compileTime_.count())},
        {"firstFrameMilliseconds", rounded(frameMilliseconds_.front())},
    };
    if (frameMilliseconds_.size() > 1)
        statistics["laterFrameMilliseconds"] =
            rounded(MedianOf({frameMilliseconds_.begin() + 1, frameMilliseconds_.end()}));
    statistics["peakMemoryBytes"] = PeakMemory(RUSAGE_SELF);
    statistics["readerPeakMemoryBytes"] = PeakMemory(RUSAGE_CHILDREN);
    if (memory.bound != 0)
    {
        statistics["driverMemoryBytes"] = memory.held;
        statistics["driverMemoryBoundBytes"] = memory.bound;
    }
    return statistics.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace lumora::render
