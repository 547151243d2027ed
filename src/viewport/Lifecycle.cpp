// Creation, the live test, window events and the halt.
#include "viewport/Handlers.h"
#include "viewport/Names.h"
#include "viewport/Viewport.h"

namespace lumora
{

Viewport::Viewport(std::shared_ptr<Container> container) : container_(std::move(container))
{
    if (!container_ || !container_->Window() || !container_->TheScreen() || !container_->Drivers())
        throw RuntimeError{error::ObjectNotSet, Source,
                           "A control needs a container with a window, a screen and a list of drivers"};
    InitializeDefaults();
}

Viewport::~Viewport()
{
    Terminate();
}

void Viewport::InitializeDefaults()
{
    properties_ = Properties{};
    camera_ = CameraState{};
}

bool Viewport::IsRunMode() const
{
    if (IsHalted())
        return false;
    bool live = false;
    if (IgnoringErrors([&] { live = VariantToBoolean(container_->LateBoundMember("blnRealUserMode")); }))
        return live;
    try
    {
        return container_->UserMode();
    }
    catch (const RuntimeError& failure)
    {
        container_->Log("UserMode failed, so the control takes this for a form designer: " + Sentence(failure));
        return false;
    }
}

void Viewport::LoadContainerGraphic()
{
    IgnoringErrors(
        [&]
        {
            const auto graphic =
                std::dynamic_pointer_cast<Picture>(VariantToObject(container_->LateBoundMember("Graphic")));
            if (graphic)
                container_->Window()->SetPicture(graphic);
        });
}

// Every step runs whatever the others do: what cannot be released in order is still released.
void Viewport::HaltViewport(std::int32_t /*ErrNumber*/, const std::string& /*ErrDescription*/)
{
    const SkippingTrap step;
    AbandonDrag();
    if (drawing_.SceneFrame && drawing_.CameraFrame)
        step([&] { drawing_.SceneFrame->DeleteChild(drawing_.CameraFrame); });
    step([&] { drawing_.CameraFrame = nullptr; });
    step([&] { widgets_.NavShaftMesh = nullptr; });
    step([&] { widgets_.NavTipMesh = nullptr; });
    step([&] { widgets_.NavKnobMesh = nullptr; });
    HaltErrorNumber_ = error::Halted;
    HaltErrorDescription_ = HaltDescription;
    step([&] { ReleaseDeviceAndViewport(); });
    step([&] { drawing_.BackgroundPicture = nullptr; });
    step([&] { drawing_.SceneFrame = nullptr; });
    step([&] { drawing_.OverlayFrame = nullptr; });
    step([&] { widgets_.NavControlFrame = nullptr; });
    step([&] { widgets_.NavControlsScene = nullptr; });
    step([&] { drawing_.RetainedMode = nullptr; });
    step([&] { ReleaseDirectDraw(); });
    properties_.ViewportState = tdlHalted;
}

// Only the failure that halts is logged: what fails afterwards fails for want of what the halt released.
void Viewport::HaltAfter(const char* handler, std::string_view property, const RuntimeError& failure)
{
    const bool wasRunning = !IsHalted();
    HaltViewport(failure.Number(), failure.Description());
    if (!wasRunning)
        return;
    const std::string entry = property.empty() ? handler : handler + (" of " + std::string{property});
    container_->Log("The control halted in " + entry + ": " + Sentence(failure));
}

bool Viewport::IsHalted() const
{
    return properties_.ViewportState == tdlHalted;
}

void Viewport::RequireRunning() const
{
    if (IsHalted())
        throw RuntimeError{HaltErrorNumber_, HaltSource, HaltErrorDescription_};
}

void Viewport::RaiseMissing() const
{
    RequireRunning();
    std::string missing = "There is no scene: set Scene";
    if (!drawing_.RetainedMode)
        missing = "There is nothing to draw with: load the control in a program whose UserMode is True";
    else if (!drawing_.RebuildFailure.empty())
        missing = "There is no rendering device: its last set-up failed (" + drawing_.RebuildFailure +
                  "). Set Direct3DDevice or resize the control, and the next picture tries again";
    throw RuntimeError{error::ObjectNotSet, Source, missing};
}

void Viewport::NotifyChanged(const char* property)
{
    container_->PropertyChanged(property);
}

void Viewport::OnShow() {}

void Viewport::OnPaint()
{
    Handle("Paint", [&] { RenderSceneCorrectTranslucency(); });
}

void Viewport::OnResize()
{
    Handle("Resize", [&] { drawing_.DeviceRebuildPending = true; });
}

void Viewport::OnClick()
{
    Handle("Click", [&] { Click.Raise(); });
}

void Viewport::OnDblClick()
{
    Handle("DblClick", [&] { DblClick.Raise(); });
}

void Viewport::OnKeyPress(std::int16_t KeyAscii)
{
    Handle("KeyPress", [&] { KeyPress.Raise(KeyAscii); });
}

void Viewport::Terminate()
{
    HaltViewport(0, {});
}

} // namespace lumora
