#include "automation/ViewportFace.h"

#include "base/Faults.h"
#include "properties/PropertyTable.h"

#include <algorithm>

namespace lumora::automation
{

// clang-format off
template<> inline constexpr const char* EnumerationName<tdlNavigationMethod> = "tdlNavigationMethod";
template<> inline constexpr const char* EnumerationName<tdlOrientation> = "tdlOrientation";
template<> inline constexpr const char* EnumerationName<tdlPickMethod> = "tdlPickMethod";
template<> inline constexpr const char* EnumerationName<D3DRMFRAMECONSTRAINT> = "D3DRMFRAMECONSTRAINT";
// clang-format on

namespace
{

constexpr std::int32_t FirstMethodId = 0x60030000;
constexpr std::int32_t AboutBoxId = -552;

// The methods. A method's id never changes.
std::vector<MemberRow<Viewport>> MethodRows()
{
    using Single = float&;
    constexpr auto id = [](std::int32_t place) { return FirstMethodId + place; };
    constexpr const char* PickArguments =
        "PickMethod, PickScreenX, PickScreenY, PickWireframe, PickZeroAppData, PickedFrame, PickedMeshbuilder, "
        "PickedFaceID, PickedWorldX, PickedWorldY, PickedWorldZ";
    return {
        Method("RenderScene", "", &Viewport::RenderScene, "draws one picture", id(0)),
        Method("RenderSceneCorrectTranslucency", "", &Viewport::RenderSceneCorrectTranslucency,
               "draws one picture, with an extra flat pass where a pick needed one", id(1)),
        Method("SetCameraPosition", "PositionX, PositionY, PositionZ", &Viewport::SetCameraPosition,
               "places the camera", id(2)),
        Method(
            "GetCameraPosition", "PositionX, PositionY, PositionZ",
            [](Viewport& viewport, Single x, Single y, Single z) { viewport.GetCameraPosition(x, y, z); },
            "the camera's place", id(3)),
        Method("SetCameraOrientation", "DirX, DirY, DirZ, UpX, UpY, UpZ", &Viewport::SetCameraOrientation,
               "turns the camera to a direction", id(4)),
        Method(
            "GetCameraOrientation", "DirX, DirY, DirZ, UpX, UpY, UpZ",
            [](Viewport& viewport, Single dirX, Single dirY, Single dirZ, Single upX, Single upY, Single upZ)
            { viewport.GetCameraOrientation(dirX, dirY, dirZ, upX, upY, upZ); },
            "where the camera looks", id(5)),
        Method("SetCameraVelocity", "VelocityX, VelocityY, VelocityZ, MovementMethod", &Viewport::SetCameraVelocity,
               "stores a velocity, scene units a second", id(6)),
        Method("GetCameraVelocity", "VelocityX, VelocityY, VelocityZ, MovementMethod", &Viewport::GetCameraVelocity,
               "the stored velocity", id(7)),
        Method("SetCameraRotationalVelocity",
               "RotationalVelocityX, RotationalVelocityY, RotationalVelocityZ, RotationOriginX, RotationOriginY, "
               "RotationOriginZ, RotationMethod",
               &Viewport::SetCameraRotationalVelocity, "stores a rotational velocity, radians a second", id(8)),
        Method("GetCameraRotationalVelocity",
               "RotationalVelocityX, RotationalVelocityY, RotationalVelocityZ, RotationOriginX, RotationOriginY, "
               "RotationOriginZ, RotationMethod",
               &Viewport::GetCameraRotationalVelocity, "the stored rotational velocity", id(9)),
        Method("SetCameraZoomVelocity", "ZoomVelocity", &Viewport::SetCameraZoomVelocity,
               "stores a zoom velocity, field-of-view units a second", id(10)),
        Method("GetCameraZoomVelocity", "ZoomVelocity", &Viewport::GetCameraZoomVelocity, "the stored zoom velocity",
               id(11)),
        Method(
            "AddCameraMovement", "DistanceX, DistanceY, DistanceZ, MovementMethod",
            [](Viewport& viewport, Single x, Single y, Single z, tdlNavigationMethod method)
            { viewport.AddCameraMovement(x, y, z, method); },
            "moves the camera; writes back what obstacles left of the distances", id(12)),
        Method("AddCameraRotation",
               "RotationX, RotationY, RotationZ, RotationOriginX, RotationOriginY, RotationOriginZ, RotationMethod",
               &Viewport::AddCameraRotation, "turns the camera, radians", id(13)),
        Method("AddCameraZoom", "Zoom", &Viewport::AddCameraZoom, "narrows the view, or widens it", id(14)),
        Method("InitializeCameraPositionAndOrientation", "Orientation",
               &Viewport::InitializeCameraPositionAndOrientation, "puts the camera on an axis, looking at the origin",
               id(15)),
        Method("LookAt", "TargetFrame, Constrain", &Viewport::LookAt, "turns the camera to a frame", id(16)),
        Method("ViewportTransform", "WorldX, WorldY, WorldZ, ScreenW, ScreenX, ScreenY, ScreenZ",
               &Viewport::ViewportTransform, "a world point on the screen", id(17)),
        Method("ViewportInverseTransform", "ScreenW, ScreenX, ScreenY, ScreenZ, WorldX, WorldY, WorldZ",
               &Viewport::ViewportInverseTransform, "a screen point in the world", id(18)),
        Method(
            "Pick", PickArguments,
            [](Viewport& viewport, tdlPickMethod method, float x, float y, bool wireframe, bool zeroAppData,
               std::shared_ptr<Frame>& frame, std::shared_ptr<MeshBuilder>& mesh, std::int32_t& face, Single worldX,
               Single worldY, Single worldZ)
            { viewport.Pick(method, x, y, wireframe, zeroAppData, frame, mesh, face, worldX, worldY, worldZ); },
            "what lies under a point of the control", id(19)),
        Method("PickFixScrewyD3DBug", PickArguments, &Viewport::PickFixScrewyD3DBug,
               "as Pick, at the nearest pixel and by the ray alone", id(20)),
        Method("DisplayPreRenderedImage", "picPicture", &Viewport::DisplayPreRenderedImage,
               "shows a picture in place of the scene, while the surface is exposed", id(21)),
        Method("ShowAboutBox", "", &Viewport::ShowAboutBox, "shows the about box", AboutBoxId),
    };
}

ValueType TypeOf(const PropertyRow& row)
{
    switch (row.type)
    {
    case PropertyType::Boolean:
        return ValueType::Boolean;
    case PropertyType::Integer:
        return ValueType::Integer;
    case PropertyType::Long:
        return ValueType::Long;
    case PropertyType::Single:
        return ValueType::Single;
    case PropertyType::String:
        return ValueType::String;
    case PropertyType::Object:
        return ValueType::Object;
    }
    return ValueType::Any;
}

// What a property's type is called: an enumeration's or a class's name where it has one.
std::string TypeNameOf(const PropertyRow& row)
{
    if (FindEnumeration(row.typeName) != nullptr)
        return std::string{row.typeName};
    if (row.type != PropertyType::Object)
        return std::string{NameOf(TypeOf(row))};
    // std::shared_ptr<lumora::Name>
    std::string_view name = row.typeName.substr(row.typeName.find('<') + 1);
    name = name.substr(0, name.find('>'));
    const std::size_t colon = name.rfind(':');
    return std::string{colon == std::string_view::npos ? name : name.substr(colon + 1)};
}

// A row of the property table as a member.
MemberRow<Viewport> PropertyMember(const PropertyRow& row)
{
    const bool object = row.type == PropertyType::Object;
    MemberRow<Viewport> member;
    member.info = {std::string{row.name},
                   row.dispatchId,
                   invoke::Get,
                   {},
                   TypeOf(row),
                   TypeNameOf(row),
                   std::string{row.help},
                   object ? Variant{} : row.defaultValue,
                   row.hidden};
    member.get = MakeAction<Viewport>([&row](Viewport& viewport) { return row.read(viewport); },
                                      std::type_identity<std::tuple<>>{});
    if (row.write == nullptr)
        return member;
    member.info.kinds |= invoke::Put | (object ? invoke::PutReference : 0U);
    member.put = MakeAction<Viewport>([&row](Viewport& viewport, const Variant& value) { row.write(viewport, value); },
                                      std::type_identity<std::tuple<const Variant&>>{});
    return member;
}

const MemberTable<Viewport>& Table()
{
    static const MemberTable<Viewport> table = []
    {
        std::vector<MemberRow<Viewport>> rows = MethodRows();
        std::ranges::transform(PropertyTable(), std::back_inserter(rows), PropertyMember);
        return MemberTable<Viewport>{"Viewport", std::move(rows)};
    }();
    return table;
}

template<typename... Arguments>
MemberInfo EventRow(std::int32_t id, const char* name, const char* arguments, Event<Arguments...> Viewport::*,
                    const char* help)
{
    return {name,
            id,
            0,
            DescribeArguments(arguments, std::type_identity<std::tuple<Arguments...>>{}),
            ValueType::Nothing,
            "Nothing",
            help,
            {}};
}

// Every event once: its id, what it is called, and its arguments' names.
#define LUMORA_EVENTS(row)                                                                                             \
    row(1, CameraMoved,                                                                                                \
        "PositionX, PositionY, PositionZ, OrientationDirX, OrientationDirY, OrientationDirZ, OrientationUpX, "         \
        "OrientationUpY, OrientationUpZ",                                                                              \
        "the camera was moved and constrained");                                                                       \
    row(2, Click, "", "the control was clicked");                                                                      \
    row(3, DblClick, "", "the control was double-clicked");                                                            \
    row(4, MouseDown, "Button, Shift, x, Y", "a button was pressed");                                                  \
    row(5, MouseUp, "Button, Shift, x, Y", "a button was released");                                                   \
    row(6, MouseMove, "Button, Shift, x, Y", "the mouse moved");                                                       \
    row(7, KeyDown, "KeyCode, Shift", "a key was pressed");                                                            \
    row(8, KeyPress, "KeyAscii", "a key stood for a character");                                                       \
    row(9, KeyUp, "KeyCode, Shift", "a key was released");                                                             \
    row(10, DDSurfaceAvailable, "", "the exposed surface holds a new picture");                                        \
    row(11, AntiAliasSurfaceAvailable, "", "the averaged surface holds a new picture");                                \
    row(12, Collision, "Frame, MeshBuilder", "an obstacle stopped the camera");                                        \
    row(13, UpdatePositions, "", "a picture is about to be drawn");                                                    \
    row(14, BeginNavigating, "udtNavControl", "a drag begins to navigate");                                            \
    row(15, EndNavigating, "", "a drag has ended");

const std::vector<MemberInfo>& EventTable()
{
    static const std::vector<MemberInfo> table = []
    {
        std::vector<MemberInfo> rows;
#define LUMORA_EVENT_ROW(id, name, arguments, help)                                                                    \
    rows.push_back(EventRow(id, #name, arguments, &Viewport::name, help))
        LUMORA_EVENTS(LUMORA_EVENT_ROW)
#undef LUMORA_EVENT_ROW
        return rows;
    }();
    return table;
}

// Gives an event's argument what a sink made of it.
template<typename Argument>
void TakeBack(Argument& argument, const Variant& before, const Variant& after)
{
    if (!VariantsEqual(before, after))
        argument = Crossing<Argument>::In(after);
}

} // namespace

ViewportFace::ViewportFace(std::shared_ptr<Viewport> control) : control_(std::move(control))
{
    ForwardEvents();
}

ViewportFace::~ViewportFace()
{
    for (const auto& disconnect : disconnections_)
        disconnect();
}

std::span<const MemberInfo> ViewportFace::Members() const
{
    return Table().Members();
}

std::span<const MemberInfo> ViewportFace::Events() const
{
    return EventTable();
}

Variant ViewportFace::Invoke(std::int32_t id, std::uint32_t kinds, std::span<Variant> arguments)
{
    return InvokeWrapped(Table(), Control(), id, kinds, arguments);
}

ClassDescription ViewportFace::Description()
{
    return {"Viewport", Table().Members(), EventTable(), "_Viewport", "__Viewport"};
}

template<typename... Arguments>
void ViewportFace::Forward(Event<Arguments...>& event, std::int32_t id, const char* noted)
{
    const EventConnection connection = event.Connect(
        [this, id, noted](Arguments... arguments)
        {
            faults::Note(noted);
            if (!HasSinks())
                return;
            std::vector<Variant> values{Crossing<std::remove_reference_t<Arguments>>::Out(arguments)...};
            std::ranges::for_each(values, WrapObject);
            const std::vector<Variant> before = values;
            RaiseEvent(id, values);
            [[maybe_unused]] std::size_t place = 0;
            ((TakeBack(arguments, before[place], values[place]), ++place), ...);
        });
    disconnections_.push_back([&event, connection] { event.Disconnect(connection); });
}

void ViewportFace::ForwardEvents()
{
#define LUMORA_FORWARD(id, name, arguments, help) Forward(Control().name, id, "event " #name)
    LUMORA_EVENTS(LUMORA_FORWARD)
#undef LUMORA_FORWARD
}

} // namespace lumora::automation
