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
    if (properties_.ViewportState == tdlHalted)
        return false;
    bool live = false;
    if (IgnoringErrors([&] { live = VariantToBoolean(container_->LateBoundMember("blnRealUserMode")); }))
        return live;
    const Trap trap{Source};
    trap([&] { live = container_->UserMode(); });
    return live;
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

void Viewport::RequireRunning() const
{
    if (properties_.ViewportState == tdlHalted)
        throw RuntimeError{HaltErrorNumber_, HaltSource, HaltErrorDescription_};
}

void Viewport::NotifyChanged(const char* property)
{
    container_->PropertyChanged(property);
}

void Viewport::OnShow() {}

void Viewport::OnPaint()
{
    Handle([&] { RenderSceneCorrectTranslucency(); });
}

void Viewport::OnResize()
{
    Handle([&] { drawing_.DeviceRebuildPending = true; });
}

void Viewport::OnClick()
{
    Handle([&] { Click.Raise(); });
}

void Viewport::OnDblClick()
{
    Handle([&] { DblClick.Raise(); });
}

void Viewport::OnKeyPress(std::int16_t KeyAscii)
{
    Handle([&] { KeyPress.Raise(KeyAscii); });
}

void Viewport::Terminate()
{
    HaltViewport(0, {});
}

} // namespace lumora
