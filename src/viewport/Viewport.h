// The control: a window on a three-dimensional scene, with a camera that a person can move through it.
#pragma once

#include "base/Event.h"
#include "base/Trap.h"
#include "camera/CameraState.h"
#include "camera/MouseDrag.h"
#include "platform/container/Container.h"
#include "platform/container/PropertyBag.h"
#include "properties/Properties.h"
#include "viewport/DrawingObjects.h"
#include "viewport/PickResult.h"
#include "widgets/NavControls.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace lumora
{

struct KeyAction;

/// An embeddable viewport control.
///
/// A host creates it with its container, calls Load (an empty bag gives the defaults), sets Scene and whatever
/// properties it likes, and calls RenderScene whenever it wants a picture. Nothing is drawn or moved on the control's
/// own schedule. All calls come from one thread; events are raised on it, synchronously, and their handlers may call
/// back.
///
/// Coordinates are left-handed: x right, y up, z forward. Positions and orientations of the camera are relative to
/// Scene. Angles are radians, distances scene units.
///
/// Errors are RuntimeError. Methods and most writers raise them with source "Viewport" and the number of whatever
/// failed. A failure in a handler that the container calls halts the control for good: everything it draws with is
/// released, ViewportState reads tdlHalted, and each method raises the halt error (number error::Halted, source
/// "vptVantixViewport"). Every method does so first and then changes nothing; the two render methods do so unless
/// Enabled is False.
class Viewport
{
public:
    /// Created, running, with the defaults of a new object; draws nothing before Load.
    explicit Viewport(std::shared_ptr<Container> container);
    ~Viewport();
    Viewport(const Viewport&) = delete;
    Viewport& operator=(const Viewport&) = delete;

    // Properties. One reader and, unless it is read-only, one writer `Set...` for each row of
    // properties/PropertyTable.def. Readers and writers work in every state. No writer checks its value: it is stored
    // as given, pushed to the device and viewport when the control is live, and the container is told; what the
    // platform refuses is raised after it was stored. docs/properties.md lists them all.

#define LUMORA_DECLARE_Plain(name, type) void Set##name(type value);
#define LUMORA_DECLARE_Trapped(name, type) void Set##name(type value);
#define LUMORA_DECLARE_Ignored(name, type) void Set##name(type value);
#define LUMORA_DECLARE_Custom(name, type) void Set##name(type value);
#define LUMORA_DECLARE_None(name, type)
#define LUMORA_PROPERTY(name, type, initial, reader, writer, saved, help)                                              \
    type name() const;                                                                                                 \
    LUMORA_DECLARE_##writer(name, type)
#include "properties/PropertyTable.def"
#undef LUMORA_PROPERTY
#undef LUMORA_DECLARE_None
#undef LUMORA_DECLARE_Custom
#undef LUMORA_DECLARE_Ignored
#undef LUMORA_DECLARE_Trapped
#undef LUMORA_DECLARE_Plain

    // Drawing.

    /// Raises UpdatePositions and draws one picture, visible on return. Without a scene, and at design time, nothing is
    /// drawn; while Enabled is False not even the event is raised. A resize, or a property that needs another device,
    /// takes effect first: then CameraMoved is raised too. With ExposeDDSurface, DDSurfaceAvailable follows (and
    /// AntiAliasSurfaceAvailable when anti-aliasing). Errors of the device leave the control running: the next call
    /// tries a whole picture again.
    void RenderScene();

    /// The same, with an extra flat pass after a pick that had to fall back to the viewport's.
    void RenderSceneCorrectTranslucency();

    /// Shows a picture in place of the scene, from its top-left corner, unscaled; what it does not cover is black. With
    /// Accumulate the next picture is drawn over it. Needs ExposeDDSurface: without it, with nothing, or after a halt
    /// nothing is shown. Raises no event and no error.
    void DisplayPreRenderedImage(const std::shared_ptr<Picture>& picPicture);

    // Camera. Everything that moves it applies PositionConstraints and, unless said otherwise, raises CameraMoved.

    /// Places the camera; raises no event.
    void SetCameraPosition(float PositionX, float PositionY, float PositionZ);
    void GetCameraPosition(float& PositionX, float& PositionY, float& PositionZ);
    Vector GetCameraPosition();

    /// Turns the camera to a direction, its up as near to the given one as it goes; raises no event. The vectors need
    /// not have unit length. A zero direction, or an up parallel to it, is refused by number error::RMBadValue.
    void SetCameraOrientation(float DirX, float DirY, float DirZ, float UpX, float UpY, float UpZ);
    void GetCameraOrientation(float& DirX, float& DirY, float& DirZ, float& UpX, float& UpY, float& UpZ);
    Orientation GetCameraOrientation();

    /// Stores a velocity (scene units a second) and how to apply it. Nothing moves: the host applies velocities.
    void SetCameraVelocity(float VelocityX, float VelocityY, float VelocityZ, tdlNavigationMethod MovementMethod);
    void GetCameraVelocity(float& VelocityX, float& VelocityY, float& VelocityZ, tdlNavigationMethod& MovementMethod);

    /// Stores a rotational velocity (radians a second), the point to turn about, and how to apply it.
    void SetCameraRotationalVelocity(float RotationalVelocityX, float RotationalVelocityY, float RotationalVelocityZ,
                                     float RotationOriginX, float RotationOriginY, float RotationOriginZ,
                                     tdlNavigationMethod RotationMethod);
    void GetCameraRotationalVelocity(float& RotationalVelocityX, float& RotationalVelocityY, float& RotationalVelocityZ,
                                     float& RotationOriginX, float& RotationOriginY, float& RotationOriginZ,
                                     tdlNavigationMethod& RotationMethod);

    /// Stores a zoom velocity (field-of-view units a second).
    void SetCameraZoomVelocity(float ZoomVelocity);
    void GetCameraZoomVelocity(float& ZoomVelocity);

    /// Moves the camera: glide in the horizontal plane with y along the world's y axis, advance (any non-zero method)
    /// along the camera's own axes. With CollisionDetection the move stops CollisionDistance short of obstacles, raises
    /// Collision, and writes what is left of a distance back into its argument.
    void AddCameraMovement(float& DistanceX, float& DistanceY, float& DistanceZ, tdlNavigationMethod MovementMethod);

    /// The same; answers the distances that obstacles left of it.
    Vector AddCameraMovement(Vector distance, tdlNavigationMethod MovementMethod);

    /// Turns the camera by radians: glide about the origin point (y about the world's y axis), position and all;
    /// advance (any non-zero method) about the camera's own axes, where the origin has no effect. With
    /// CollisionDetection a turn that ends in front of an obstacle is undone and raises Collision.
    void AddCameraRotation(float RotationX, float RotationY, float RotationZ, float RotationOriginX,
                           float RotationOriginY, float RotationOriginZ, tdlNavigationMethod RotationMethod);

    /// Narrows the view (positive `Zoom`) or widens it: FieldOfView falls by `Zoom` and stops at 0.1 (orthographic:
    /// 0.05 for results below that). Takes effect at once; CameraMoved follows while the control is live.
    void AddCameraZoom(float Zoom);

    /// Puts the camera on an axis, looking at the scene's origin: 15 units away in perspective, else 1000. Raises
    /// CameraMoved twice. Values outside the enumeration take the left view and are remembered as given.
    void InitializeCameraPositionAndOrientation(tdlOrientation Orientation);

    /// Turns the camera to the origin of `TargetFrame` without turning about the constrained axis. error::RMBadObject
    /// for nothing.
    void LookAt(const std::shared_ptr<Frame>& TargetFrame, D3DRMFRAMECONSTRAINT Constrain);

    // Coordinates. Screen x is right and y down in pixels, z 0 at the front and 1 at the back plane; x, y and z are
    // multiplied by w.

    void ViewportTransform(float WorldX, float WorldY, float WorldZ, float& ScreenW, float& ScreenX, float& ScreenY,
                           float& ScreenZ);
    void ViewportInverseTransform(float ScreenW, float ScreenX, float ScreenY, float ScreenZ, float& WorldX,
                                  float& WorldY, float& WorldZ);

    // Picking. Pixels are found by their centres; positions are in the container's coordinate units.

    /// Finds what lies under a point of the control: the frame that shows it, its mesh, the face, and where in the
    /// world it was hit.
    ///
    /// Searched are, by method, the scene with the overlay in it, the scene, or the overlay alone. Objects whose
    /// application data is 0 or a multiple of 100 count only with PickZeroAppData, those that are not drawn solid only
    /// with PickWireframe. Of what counts, the nearest is taken. A ray that meets nothing but boxes leaves frame and
    /// mesh as they are, except in the scene, where a second way of picking follows and the next
    /// RenderSceneCorrectTranslucency draws an extra flat pass. When only objects that do not count are met, frame and
    /// mesh become nothing; when nothing at all is, the world position becomes (0, 0, 0) and the rest stays.
    /// Another method than the three changes nothing. Errors: 6 for a position that is no pixel, error::ObjectNotSet
    /// without a scene, error::RMBadObject for tdlAll without an overlay.
    void Pick(tdlPickMethod PickMethod, float PickScreenX, float PickScreenY, bool PickWireframe, bool PickZeroAppData,
              std::shared_ptr<Frame>& PickedFrame, std::shared_ptr<MeshBuilder>& PickedMeshbuilder,
              std::int32_t& PickedFaceID, float& PickedWorldX, float& PickedWorldY, float& PickedWorldZ);

    /// The same for callers who have nothing to keep; nothing found is a result without a frame.
    PickResult Pick(tdlPickMethod PickMethod, float PickScreenX, float PickScreenY, bool PickWireframe = true,
                    bool PickZeroAppData = true);

    /// As Pick, with positions rounded to the nearest pixel (halves to even), and without the second way in the scene.
    void PickFixScrewyD3DBug(tdlPickMethod PickMethod, float PickScreenX, float PickScreenY, bool PickWireframe,
                             bool PickZeroAppData, std::shared_ptr<Frame>& PickedFrame,
                             std::shared_ptr<MeshBuilder>& PickedMeshbuilder, std::int32_t& PickedFaceID,
                             float& PickedWorldX, float& PickedWorldY, float& PickedWorldZ);

    /// Shows the about box, which names the control and its version, and returns when it is closed. Works in every
    /// state. What its System Info button cannot start is a message box, no error.
    void ShowAboutBox();

    // Events. Arguments are by reference; a handler's changes reach later handlers and the control.

    /// Position, direction and up of the camera, after it was placed and constrained. The arguments are the stored
    /// values: assigning changes what the getters answer until the next update, and does not move the camera.
    Event<float&, float&, float&, float&, float&, float&, float&, float&, float&> CameraMoved;
    Event<> Click;
    Event<> DblClick;
    Event<std::int16_t&, std::int16_t&, float&, float&> MouseDown; ///< Button, Shift, x, y in container units
    Event<std::int16_t&, std::int16_t&, float&, float&> MouseUp;
    Event<std::int16_t&, std::int16_t&, float&, float&> MouseMove;
    Event<std::int16_t&, std::int16_t&> KeyDown; ///< KeyCode, Shift
    Event<std::int16_t&> KeyPress;               ///< KeyAscii
    Event<std::int16_t&, std::int16_t&> KeyUp;
    Event<> DDSurfaceAvailable;        ///< the exposed surface holds a new picture; draw on it now
    Event<> AntiAliasSurfaceAvailable; ///< so does the averaged one
    Event<std::shared_ptr<Frame>&, std::shared_ptr<MeshBuilder>&> Collision;
    Event<> UpdatePositions; ///< a picture is about to be drawn: move things, apply velocities
    /// A drag begins, before the cursor is hidden. The argument is the on-screen control that was grabbed (0: none);
    /// what a handler assigns to it gets the drag.
    Event<std::int32_t&> BeginNavigating;
    Event<> EndNavigating; ///< a drag has ended: the cursor is back where it was pressed, and velocities are 0

    // Called by the container. No error reaches it: a failure halts the control, and the container's log says which.

    /// A new instance without saved settings: sets the defaults. Starts no drawing objects; Load does.
    void Initialise();

    /// Restores saved settings; in a live host it first creates everything the control draws with. Entries that are
    /// missing take their defaults. Goes on to the last entry whatever fails.
    void Load(PropertyBag& bag);

    /// Writes every saved property that differs from its default.
    void Save(PropertyBag& bag);

    // Mouse: a drag with the middle button while CenterNavigation is True, or with the left one on an on-screen
    // control, moves the camera; the control's own mouse events are raised for everything else. Keys: the twenty key
    // properties set and clear stored velocities, then KeyDown and KeyUp are raised.

    void OnShow();
    void OnPaint();  ///< draws a picture
    void OnResize(); ///< the next picture is drawn in the new size
    void OnClick();
    void OnDblClick();
    void OnMouseDown(std::int16_t Button, std::int16_t Shift, float X, float Y); ///< in the window's scale units
    void OnMouseMove(std::int16_t Button, std::int16_t Shift, float X, float Y);
    void OnMouseUp(std::int16_t Button, std::int16_t Shift, float X, float Y);
    void OnKeyDown(std::int16_t KeyCode, std::int16_t Shift);
    void OnKeyPress(std::int16_t KeyAscii);
    void OnKeyUp(std::int16_t KeyCode, std::int16_t Shift);

    /// The end: releases everything; objects and reads go on working.
    void Terminate();

    /// What the last picture was drawn with.
    struct FrameStatistics
    {
        std::uint64_t Triangles = 0; ///< handed to the driver, all passes together
    };
    const FrameStatistics& LastFrame() const
    {
        return lastFrame_;
    }

    /// What the driver holds beside the surfaces; nothing without a device.
    DriverMemory MemoryOfDriver() const;

private:
    // viewport/Lifecycle.cpp
    void InitializeDefaults();
    bool IsRunMode() const;
    void LoadContainerGraphic();
    void HaltViewport(std::int32_t ErrNumber, const std::string& ErrDescription);
    void HaltAfter(const char* handler, std::string_view property, const RuntimeError& failure);
    bool IsHalted() const;
    void RequireRunning() const;
    void NotifyChanged(const char* property);
    template<typename Step>
    bool Handle(const char* handler, Step&& step);
    template<typename Step>
    bool Handle(const char* handler, std::string_view property, Step&& step);
    template<typename Type>
    Type& Required(const std::shared_ptr<Type>& object) const;
    [[noreturn]] void RaiseMissing() const;

    // properties/Writers.cpp
    void WriteNavControl(bool& member, bool value, const char* name);
    template<typename Type, typename Push>
    void WriteLive(const char* name, const std::shared_ptr<Type>& object, Push&& push);

    // properties/Persistence.cpp
    void StartDrawing();

    // viewport/DeviceSetup.cpp
    void InitializeDirectX(WindowHandle Window, const std::string& DeviceName, const ClientRect& client);
    void RecreateDirectX(const std::string& DeviceName, const ClientRect& client);
    void ReplaceDirectX(const std::string& DeviceName, const ClientRect& client);
    void CreateDirectDraw(WindowHandle Window);
    void CreateDevice(const std::string& DeviceName, const ClientRect& client);
    void ReapplyCamera();
    void TakeDriver(const DeviceRecord& record);
    void CreateExposedDevice(const DeviceRecord& record, const ClientRect& client);
    bool TryExposedFallback(const ClientRect& client);
    bool TryExposedDevice(const DeviceRecord& record, const ClientRect& client);
    void CreateWindowDevice(const DeviceRecord& record, const ClientRect& client);
    bool TryWindowDevice(const DeviceRecord& record, const ClientRect& client);
    void CompleteDevice(const ClientRect& client);
    void CreateSecondarySurfaces();
    void CreateAntiAliasSurface();
    SurfaceDescription ClientSurface() const;
    void RequireFreeSurfaces() const;
    void ApplyDeviceSettings();
    void ReleaseDirectDraw();
    void ReleaseDeviceAndViewport();
    DeviceRecord QueryDeviceDriver(const std::string& DeviceName) const;
    ClientRect ClientPixels() const;
    void ClientSizePixels(double& width, double& height) const;
    std::int32_t BorderPixels() const;

    // viewport/Background.cpp
    std::shared_ptr<Surface> SurfaceShowing(const std::shared_ptr<Picture>& picture, bool stretched);
    void DrawBackgroundTexture();

    // viewport/FrameStep.cpp
    void RenderFrame(bool CorrectTranslucency);
    void RebuildPending();
    void ClearExposed(bool CorrectTranslucency);
    void FirstPass();
    void OverlayAndWidgetPasses();
    void MainPass();
    void RenderRoot(std::uint32_t quality, const std::shared_ptr<Frame>& root);

    // viewport/Presentation.cpp
    PixelRect PresentationRect() const;
    void PresentExposed(const PixelRect& destination);
    void ShowSurface(const std::shared_ptr<Surface>& picture, const PixelRect& destination);
    void AverageIntoTarget(int factor);

    // camera/CameraMotion.cpp
    void UpdateCameraState(bool Raise);
    void MoveCameraGlide(float& DistanceX, float& DistanceY, float& DistanceZ);
    void MoveCameraAdvance(float& DistanceX, float& DistanceY, float& DistanceZ);
    void TranslateAlong(int axis, float& distance);
    void UndoGlideIntoObstacle(Vector start);
    void RotateCameraGlide(Vector rotation, Vector origin);
    void RotateCameraAdvance(Vector rotation, Vector origin);

    // camera/Constraints.cpp
    void ApplyPositionConstraints();
    void PlaceNavControls();

    // camera/Collision.cpp
    void ShortenByCollision(int axis, float& distance);
    float ProbeCollision(std::int32_t Samples, mudtDirection Direction, std::shared_ptr<Frame>& Frame,
                         std::shared_ptr<MeshBuilder>& MeshBuilder);
    bool IsTooNear(Vector start, std::shared_ptr<Frame>& Frame, std::shared_ptr<MeshBuilder>& MeshBuilder);
    bool ProbeRotationCollision(Vector start);
    float ProbeGrid(std::int32_t Samples, std::shared_ptr<Frame>& Frame, std::shared_ptr<MeshBuilder>& MeshBuilder);
    float RayPickScreenPoint(std::int32_t X, std::int32_t Y, Vector look, std::shared_ptr<Frame>& Frame,
                             std::shared_ptr<MeshBuilder>& MeshBuilder);

    // viewport/Picking.cpp
    void PickScreenPoint(const std::shared_ptr<Frame>& frame, std::int32_t pixelX, std::int32_t pixelY,
                         const PickFilter& filter, PickResult& picked);
    void PickScreenPointFixed(const std::shared_ptr<Frame>& frame, std::int32_t pixelX, std::int32_t pixelY,
                              const PickFilter& filter, PickResult& picked, bool& NothingPicked);
    void PickSceneWithFallback(std::int32_t pixelX, std::int32_t pixelY, const PickFilter& filter, PickResult& picked);
    void PickInOverlaidScene(std::int32_t pixelX, std::int32_t pixelY, const PickFilter& filter, PickResult& picked);
    void PickFromCameraIn(const std::shared_ptr<Frame>& root, std::int32_t pixelX, std::int32_t pixelY,
                          const PickFilter& filter, PickResult& picked);
    void PickByMethod(tdlPickMethod method, ScreenPoint pixel, const PickFilter& filter, bool withFallback,
                      PickResult& picked);
    ScreenPoint PixelOfPosition(float x, float y, double lowered) const;
    Ray RayThrough(std::int32_t pixelX, std::int32_t pixelY, const std::shared_ptr<Frame>& frame);

    // camera/MouseNavigation.cpp
    void PressMouse(std::int16_t Button, std::int16_t Shift, float X, float Y);
    void BeginDrag(std::int16_t Button, std::int16_t Shift, float X, float Y);
    void MoveMouse(std::int16_t Button, std::int16_t Shift, float X, float Y);
    void DragMouse(float X, float Y);
    void ReleaseMouse(std::int16_t Button, std::int16_t Shift, float X, float Y);
    void EndDrag();
    void AbandonDrag();
    void ShowHoverPointer(float X, float Y);
    MouseVector AnchorOnceCentred(float X, float Y, ScreenPoint cursor) const;
    void RaiseMouse(Event<std::int16_t&, std::int16_t&, float&, float&>& event, std::int16_t Button, std::int16_t Shift,
                    float X, float Y);

    // camera/CenterNavigation.cpp
    PickResult PickNavControl(float X, float Y);
    std::shared_ptr<Frame> PickSceneFrame(float X, float Y);
    ScreenPoint PixelOf(float X, float Y) const;
    void ApplyCenterNavigation(const std::shared_ptr<Frame>& picked, std::int16_t Shift);
    void ApplyPerspectiveScheme(const std::shared_ptr<Frame>& picked, std::int16_t Shift);
    void ApplyOrthographicScheme(const std::shared_ptr<Frame>& picked);
    void SetSceneOrigin(Vector origin);
    Vector SceneOrigin() const;

    // camera/MouseActions.cpp
    void DispatchMouseNavigation(float& DeltaX, float& DeltaY);
    void ApplyMouseNavigationAction(tdlNavigation Action, float Amount);
    std::optional<Turning> TurningOf(tdlNavigation action) const;
    void StepCamera(tdlNavigation action, float amount);
    void SetCameraFlying(tdlNavigation action, float amount);

    // camera/KeyboardNavigation.cpp
    void NavigateByKeyDown(std::int16_t KeyCode);
    void NavigateByKeyUp(std::int16_t KeyCode);
    void StoreKeyVelocity(const KeyAction& action, float value, Vector rotationOrigin);

    // widgets/BuildNavControls.cpp
    void BuildNavControls();
    float NavControlSize() const;

    // widgets/DragNavControl.cpp
    void NavigateWithNavControl(float& DeltaX, float& DeltaY);
    void StepByNavControl(std::int32_t id, float dx, float dy);
    void FlyByNavControl(std::int32_t id, float dx, float dy);

    std::shared_ptr<Container> container_;
    Properties properties_;
    CameraState camera_;
    MouseDrag drag_;
    DrawingObjects drawing_;
    NavControls widgets_;
    FrameStatistics lastFrame_;

    std::int32_t HaltErrorNumber_ = 0;
    std::string HaltErrorDescription_;
};

/// Dereferences, or raises error::ObjectNotSet: what a call on nothing means.
template<typename Type>
Type& Required(const std::shared_ptr<Type>& object)
{
    if (!object)
        throw RuntimeError{error::ObjectNotSet, "Viewport", "Object variable not set"};
    return *object;
}

/// The same for what the control draws with, in words: what there is not, and what to do. When a handler halted the
/// control in the middle of a call, the halt error.
template<typename Type>
Type& Viewport::Required(const std::shared_ptr<Type>& object) const
{
    if (!object)
        RaiseMissing();
    return *object;
}

} // namespace lumora
