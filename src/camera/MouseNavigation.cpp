// Drags that move the camera: the parked cursor, the anchor that movement is measured from, and what is raised.
#include "base/Numbers.h"
#include "viewport/Handlers.h"
#include "viewport/Names.h"
#include "viewport/Viewport.h"

#include <cstdlib>

namespace lumora
{

namespace
{

constexpr std::uint32_t MoveInterval = 33; // milliseconds: moves that follow sooner are ignored
constexpr int RoamingRadius = 200;         // pixels that a parked cursor may stray from the centre of the screen
constexpr std::int16_t LeftButton = 1;
constexpr std::int16_t MiddleButton = 4;

ScreenPoint CentreOf(const Screen& screen)
{
    return {ToLong(screen.Width() / 2.0), ToLong(screen.Height() / 2.0)};
}

bool IsAstray(ScreenPoint cursor, ScreenPoint centre)
{
    return std::abs(cursor.x - centre.x) > RoamingRadius || std::abs(cursor.y - centre.y) > RoamingRadius;
}

// The pointers of on-screen controls; no entry: the control's own.
std::int32_t HoverPointerOf(std::int32_t navControl, std::int32_t own)
{
    constexpr std::int32_t Cross = 2;
    constexpr std::int32_t SizeAll = 5;
    constexpr std::int32_t SizeNorthSouth = 7;
    constexpr std::int32_t UpArrow = 10;
    switch (navControl)
    {
    case navcontrol::XArrow:
    case navcontrol::YArrow:
    case navcontrol::ZArrow:
    case navcontrol::Knob:
        return Cross;
    case navcontrol::HorizontalPlate:
    case navcontrol::OrthographicPlate:
    case navcontrol::GlideStrip:
    case navcontrol::AdvanceStrip:
        return SizeAll;
    case navcontrol::VerticalTriangle:
        return SizeNorthSouth;
    case navcontrol::ZoomStrip:
        return UpArrow;
    default:
        return own;
    }
}

} // namespace

void Viewport::OnMouseDown(std::int16_t Button, std::int16_t Shift, float X, float Y)
{
    Handle("MouseDown", [&] { PressMouse(Button, Shift, X, Y); });
}

void Viewport::OnMouseMove(std::int16_t Button, std::int16_t Shift, float X, float Y)
{
    Handle("MouseMove", [&] { MoveMouse(Button, Shift, X, Y); });
}

void Viewport::OnMouseUp(std::int16_t Button, std::int16_t Shift, float X, float Y)
{
    Handle("MouseUp", [&] { ReleaseMouse(Button, Shift, X, Y); });
}

// The control's own mouse events report places in the container's units.
void Viewport::RaiseMouse(Event<std::int16_t&, std::int16_t&, float&, float&>& event, std::int16_t Button,
                          std::int16_t Shift, float X, float Y)
{
    const Trap trap{Source};
    float x = 0;
    float y = 0;
    trap([&] { x = ToSingle(container_->PixelsToPositionX(container_->Window()->ScaleToPixelsX(X))); });
    trap([&] { y = ToSingle(container_->PixelsToPositionY(container_->Window()->ScaleToPixelsY(Y))); });
    trap([&] { event.Raise(Button, Shift, x, y); });
}

void Viewport::PressMouse(std::int16_t Button, std::int16_t Shift, float X, float Y)
{
    drag_.SavedSceneOrigin = SceneOrigin();
    if (Button == LeftButton)
    {
        const auto mesh = PickNavControl(X, Y).PickedMeshbuilder;
        drag_.ActiveNavControl = mesh ? mesh->GetAppData() : 0;
    }
    std::shared_ptr<Frame> picked;
    if (Button == MiddleButton && properties_.CenterNavigation)
        picked = PickSceneFrame(X, Y);
    if (drag_.ActiveNavControl != 0)
        drag_.Navigating = true;
    else if (properties_.CenterNavigation && Button == properties_.NavMouseButton)
    {
        ApplyCenterNavigation(picked, Shift);
        drag_.Navigating = true;
    }
    if (drag_.Navigating && drag_.NavButton == 0)
        BeginDrag(Button, Shift, X, Y);
    else
        RaiseMouse(MouseDown, Button, Shift, X, Y);
}

void Viewport::BeginDrag(std::int16_t Button, std::int16_t Shift, float X, float Y)
{
    const Trap trap{Source};
    Screen& screen = *container_->TheScreen();
    try
    {
        trap([&] { BeginNavigating.Raise(drag_.ActiveNavControl); });
        RequireRunning();
        trap([&] { drag_.PressCursor = screen.GetCursorPos(); });
        trap([&] { screen.ShowCursor(false); });
        drag_.CursorHidden = true;
        trap([&] { screen.SetCursorPos(CentreOf(screen).x, CentreOf(screen).y); });
    }
    catch (...)
    {
        // A drag that did not begin leaves the cursor to the person.
        AbandonDrag();
        throw;
    }
    drag_.NavAnchor = AnchorOnceCentred(X, Y, drag_.PressCursor);
    drag_.NavButton = Button;
    drag_.NavShift = Shift;
    drag_.NavDelta = {};
    RenderScene();
}

// What the next move will report from where the mouse is now, once the cursor sits at the centre of the screen.
MouseVector Viewport::AnchorOnceCentred(float X, float Y, ScreenPoint cursor) const
{
    const Screen& screen = *container_->TheScreen();
    const double centreX = screen.Width() * screen.TwipsPerPixelX() / 2;
    const double centreY = screen.Height() * screen.TwipsPerPixelY() / 2;
    return {static_cast<float>(X + centreX - cursor.x * screen.TwipsPerPixelX()),
            static_cast<float>(Y + centreY - cursor.y * screen.TwipsPerPixelY())};
}

void Viewport::MoveMouse(std::int16_t Button, std::int16_t Shift, float X, float Y)
{
    const std::uint32_t now = container_->TheScreen()->Milliseconds();
    if (now - drag_.LastMoveTime < MoveInterval)
        return;
    drag_.LastMoveTime = now;
    if (drag_.Navigating && drag_.NavButton != 0)
    {
        DragMouse(X, Y);
        return;
    }
    properties_.HighlightPointerSet = false;
    RaiseMouse(MouseMove, Button, Shift, X, Y);
    if (!properties_.HighlightPointerSet)
        ShowHoverPointer(X, Y);
}

void Viewport::DragMouse(float X, float Y)
{
    const Trap trap{Source};
    if (drag_.NavAnchor.x == NoAnchor.x || drag_.NavAnchor.y == NoAnchor.y)
        drag_.NavDelta = {};
    else
    {
        drag_.NavDelta.x += drag_.NavAnchor.x - X;
        drag_.NavDelta.y += drag_.NavAnchor.y - Y;
        Screen& screen = *container_->TheScreen();
        ScreenPoint cursor;
        trap([&] { cursor = screen.GetCursorPos(); });
        drag_.NavAnchor = {X, Y};
        if (const ScreenPoint centre = CentreOf(screen); IsAstray(cursor, centre))
        {
            trap([&] { screen.SetCursorPos(centre.x, centre.y); });
            drag_.NavAnchor = AnchorOnceCentred(X, Y, cursor);
        }
    }
    if (drag_.ActiveNavControl == 0)
    {
        DispatchMouseNavigation(drag_.NavDelta.x, drag_.NavDelta.y);
        if (properties_.MouseNavigationMode == tdlWalk)
            drag_.NavDelta = {};
    }
    else
        NavigateWithNavControl(drag_.NavDelta.x, drag_.NavDelta.y);
    RenderScene();
}

// The pointer says what a press here would grab.
void Viewport::ShowHoverPointer(float X, float Y)
{
    const Trap trap{Source};
    const auto mesh = PickNavControl(X, Y).PickedMeshbuilder;
    const std::int32_t own = properties_.MousePointerValue;
    if (!mesh)
        trap([&] { SetMousePointer(own); });
    else
        trap([&] { container_->Window()->SetMousePointer(ToInteger(HoverPointerOf(mesh->GetAppData(), own))); });
}

void Viewport::ReleaseMouse(std::int16_t Button, std::int16_t Shift, float X, float Y)
{
    SetSceneOrigin(drag_.SavedSceneOrigin);
    if (!drag_.Navigating || drag_.NavButton == 0)
    {
        RaiseMouse(MouseUp, Button, Shift, X, Y);
        return;
    }
    EndDrag();
    const Trap trap{Source};
    RenderSceneCorrectTranslucency();
    trap([&] { EndNavigating.Raise(); });
}

void Viewport::EndDrag()
{
    const Trap trap{Source};
    drag_.NavAnchor = NoAnchor;
    drag_.NavButton = 0;
    drag_.NavShift = 0;
    SetCameraVelocity(0, 0, 0, tdlGlide);
    SetCameraRotationalVelocity(0, 0, 0, 0, 0, 0, tdlGlide);
    SetCameraZoomVelocity(0);
    Screen& screen = *container_->TheScreen();
    trap([&] { screen.SetCursorPos(drag_.PressCursor.x, drag_.PressCursor.y); });
    trap([&] { screen.ShowCursor(true); });
    drag_.CursorHidden = false;
    drag_.ActiveNavControl = 0;
    drag_.Navigating = false;
}

// Ends a drag without its events: a halt in the middle of it must not keep the cursor.
void Viewport::AbandonDrag()
{
    const SkippingTrap step;
    if (drag_.CursorHidden)
    {
        Screen& screen = *container_->TheScreen();
        step([&] { screen.SetCursorPos(drag_.PressCursor.x, drag_.PressCursor.y); });
        step([&] { screen.ShowCursor(true); });
    }
    drag_.CursorHidden = false;
    drag_.Navigating = false;
    drag_.NavButton = 0;
    drag_.NavShift = 0;
    drag_.ActiveNavControl = 0;
    drag_.NavAnchor = NoAnchor;
}

} // namespace lumora
