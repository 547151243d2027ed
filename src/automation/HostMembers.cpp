#include "automation/HostMembers.h"

#include "automation/PackedNumbers.h"
#include "platform/automation/Faults.h"
#include "platform/headless/DriverLists.h"

#include <algorithm>
#include <iterator>

namespace lumora::automation
{

namespace
{

using headless::HeadlessHost;
using Rows = std::vector<MemberRow<HostFace>>;

// A member of the form, its screen or its window as one of the host face.
template<typename Answer, typename... Parameters>
auto OnForm(Answer (HeadlessHost::*member)(Parameters...))
{
    return [member](HostFace& host, Parameters... given) -> Answer { return (host.Form().*member)(given...); };
}

template<typename Answer, typename... Parameters>
auto OnForm(Answer (HeadlessHost::*member)(Parameters...) const)
{
    return [member](HostFace& host, Parameters... given) -> Answer { return (host.Form().*member)(given...); };
}

PixelRect ClientOf(HostFace& host)
{
    return host.Form().ControlArea().ClientRect();
}

template<typename List>
auto& ElementOf(const List& list, std::int32_t index)
{
    if (index < 0 || static_cast<std::size_t>(index) >= list.size())
        throw RuntimeError{error::SubscriptOutOfRange, "Host",
                           "Subscript out of range: " + std::to_string(index) + " of " + std::to_string(list.size())};
    return list[static_cast<std::size_t>(index)];
}

std::uint32_t PixelAt(HostFace& host, std::int32_t x, std::int32_t y)
{
    const PixelRect client = ClientOf(host);
    if (x < 0 || y < 0 || x >= client.Width() || y >= client.Height())
        throw RuntimeError{error::SubscriptOutOfRange, "Host", "Subscript out of range: no such pixel in the window"};
    return host.Form().Display().PixelAt(client.left + x, client.top + y);
}

const DriverList& DriversOf(HostFace& host)
{
    return *host.Form().Drivers();
}

Rows LifeRows()
{
    return {
        Method("CreateLive", "Bag", &HostFace::CreateLive, "a running control, loaded from a bag (nothing: defaults)"),
        Method("CreateAtDesignTime", "Bag", &HostFace::CreateAtDesignTime, "a control in a form designer"),
        Method("CreateInitialised", "", &HostFace::CreateInitialised,
               "a new control that was never saved; it draws nothing before Load"),
        Property(
            "Viewport", [](HostFace& host) { return host.TheViewport(); }, "the form's control, or nothing"),
        Method("Load", "Bag", &HostFace::Load, "restores the control's settings"),
        Method("Save", "", &HostFace::Save, "the control's settings that differ from their defaults"),
        Method(
            "CreateBag", "", [](HostFace&) { return std::make_shared<MemoryPropertyBag>(); }, "an empty property bag"),
        Method("Terminate", "", OnForm(&HeadlessHost::Close), "ends the control"),
        Property("RetainedMode", &HostFace::SceneFactory, "what creates frames, meshes and lights"),
        Property("UserMode", OnForm(&HeadlessHost::UserMode), OnForm(&HeadlessHost::SetUserMode),
                 "True in a running program, False in a form designer"),
        Method(
            "SetLateBoundMember", "Name, Value",
            [](HostFace& host, const std::string& name, const Variant& value)
            { host.Form().SetLateBoundMember(name, value); },
            "gives the form a member that the control asks for by name"),
        Method(
            "RemoveLateBoundMember", "Name",
            [](HostFace& host, const std::string& name) { host.Form().RemoveLateBoundMember(name); },
            "takes the member away"),
    };
}

Rows WindowRows()
{
    return {
        Method("ShowControl", "", OnForm(&HeadlessHost::ShowControl), "tells the control that it is shown"),
        Method("PaintNow", "", OnForm(&HeadlessHost::PaintNow), "tells the control to paint"),
        Method("ResizeWindow", "Width, Height", OnForm(&HeadlessHost::ResizeWindow), "client area, pixels"),
        Method("MoveWindow", "Left, Top", OnForm(&HeadlessHost::MoveWindow), "client area on the screen, pixels"),
        Property(
            "WindowLeft", [](HostFace& host) { return std::int32_t{ClientOf(host).left}; }, "screen pixels"),
        Property(
            "WindowTop", [](HostFace& host) { return std::int32_t{ClientOf(host).top}; }, "screen pixels"),
        Property(
            "WindowWidth", [](HostFace& host) { return std::int32_t{ClientOf(host).Width()}; }, "pixels"),
        Property(
            "WindowHeight", [](HostFace& host) { return std::int32_t{ClientOf(host).Height()}; }, "pixels"),
        Property(
            "WindowHandle",
            [](HostFace& host) { return static_cast<std::int32_t>(host.Form().ControlArea().Handle()); },
            [](HostFace& host, std::int32_t handle) { host.Form().ControlArea().SetHandle(handle); },
            "the number of the control's window"),
        Method("PixelAt", "X, Y", &PixelAt, "what a person sees in the window, 0x00RRGGBB"),
        Method(
            "ScreenPixelAt", "X, Y",
            [](HostFace& host, std::int32_t x, std::int32_t y) { return host.Form().Display().PixelAt(x, y); },
            "what a person sees on the screen, 0x00RRGGBB"),
        Method(
            "SavePicture", "Path",
            [](HostFace& host, const std::string& path) { SavePicture(path, host.Form().ControlPicture()); },
            "writes what a person sees in the window to a PNG file"),
        Method(
            "SaveScreen", "Path",
            [](HostFace& host, const std::string& path) { SavePicture(path, host.Form().Display().Pixels()); },
            "writes the whole screen to a PNG file"),
        Method(
            "LoadPicture", "Path", [](HostFace&, const std::string& path) { return LoadPicture(path); },
            "decodes a picture file"),
        Method(
            "CreatePicture", "Width, Height, Color",
            [](HostFace&, std::int32_t width, std::int32_t height, std::uint32_t color)
            { return NewPicture(width, height, color); },
            "a picture of one colour, 0xAARRGGBB"),
    };
}

Rows PersonRows()
{
    return {
        Method("MoveMouseTo", "X, Y", OnForm(&HeadlessHost::MoveMouseTo), "screen pixels"),
        Method("MoveMouseBy", "X, Y", OnForm(&HeadlessHost::MoveMouseBy), "screen pixels"),
        Method(
            "PressButton", "Button", [](HostFace& host, std::int16_t button) { host.Form().PressButton(button); },
            "1 left, 2 right, 4 middle, where the cursor is"),
        Method(
            "ReleaseButton", "Button", [](HostFace& host, std::int16_t button) { host.Form().ReleaseButton(button); },
            "1 left, 2 right, 4 middle"),
        Method("Click", "", OnForm(&HeadlessHost::Click), "a click"),
        Method("DoubleClick", "", OnForm(&HeadlessHost::DoubleClick), "a double click"),
        Property("ButtonsHeld", OnForm(&HeadlessHost::ButtonsHeld), "sum of the buttons that are down"),
        Method("PressKey", "Code", OnForm(&HeadlessHost::PressKey), "a virtual key goes down, or repeats"),
        Method("RepeatKey", "Code", OnForm(&HeadlessHost::RepeatKey), "a key that is held repeats"),
        Method("ReleaseKey", "Code", OnForm(&HeadlessHost::ReleaseKey), "a key goes up"),
        Property("ModifiersHeld", OnForm(&HeadlessHost::ModifiersHeld), "sum of 1 Shift, 2 Ctrl, 4 Alt"),
        Property(
            "CursorX", [](HostFace& host) { return std::int32_t{host.Form().Display().Cursor().x}; }, "screen pixels"),
        Property(
            "CursorY", [](HostFace& host) { return std::int32_t{host.Form().Display().Cursor().y}; }, "screen pixels"),
        Property(
            "CursorVisible", [](HostFace& host) { return host.Form().Display().IsCursorVisible(); },
            "whether a person sees the cursor"),
        Method(
            "PlaceCursor", "X, Y",
            [](HostFace& host, std::int32_t x, std::int32_t y) { host.Form().Display().PlaceCursor(x, y); },
            "puts the cursor somewhere; nobody is told of a move"),
        Property(
            "Clock", [](HostFace& host) { return host.Form().Display().Clock(); }, "milliseconds"),
        Method(
            "AdvanceClock", "Milliseconds",
            [](HostFace& host, std::uint32_t milliseconds) { host.Form().Display().AdvanceClock(milliseconds); },
            "lets time go by"),
    };
}

Rows RecordRows()
{
    return {
        Property(
            "PropertyChangeCount",
            [](HostFace& host) { return static_cast<std::int32_t>(host.Form().PropertyChanges().size()); },
            "how many property changes the control told of"),
        Method(
            "PropertyChange", "Index",
            [](HostFace& host, std::int32_t index) -> std::string
            { return ElementOf(host.Form().PropertyChanges(), index); },
            "the name of a property that changed, from 0"),
        Property(
            "LogCount", [](HostFace& host) { return static_cast<std::int32_t>(host.Form().Logged().size()); },
            "how many sentences were logged"),
        Method(
            "LogEntry", "Index",
            [](HostFace& host, std::int32_t index) -> std::string { return ElementOf(host.Form().Logged(), index); },
            "a logged sentence, from 0"),
        Property(
            "MessageCount",
            [](HostFace& host) { return static_cast<std::int32_t>(host.Form().Display().Messages().size()); },
            "how many message boxes were shown"),
        Method(
            "Message", "Index",
            [](HostFace& host, std::int32_t index) -> std::string
            { return ElementOf(host.Form().Display().Messages(), index).text; },
            "the text of a message box, from 0"),
    };
}

Rows MachineRows()
{
    return {
        Property(
            "DriverCount", [](HostFace& host) { return std::int32_t{DriversOf(host).Count()}; },
            "how many drivers the machine names"),
        Method(
            "DriverName", "Index",
            [](HostFace& host, std::int32_t index) -> std::string { return DriversOf(host).At(index).identifierName; },
            "a driver's identifier name, from 0"),
        Method(
            "RemoveDriver", "Name",
            [](HostFace& host, const std::string& name)
            { host.Form().SetDrivers(headless::WithoutDriver(host.Form().Drivers(), name)); },
            "takes a driver out of the machine, by identifier name; devices made from now on lack it"),
        Method(
            "FailDriver", "Name, Number",
            [](HostFace& host, const std::string& name, std::int32_t number)
            { host.Form().SetDrivers(headless::FailingOnCreation(host.Form().Drivers(), name, number)); },
            "lets the creation of a driver fail with a number, from the next device on"),
        Method(
            "FailNext", "Operation, Count, Number",
            [](HostFace& host, const std::string& operation, std::int32_t count, std::int32_t number)
            { host.Form().FailNext(operation, count, number); },
            "lets the next calls of a platform operation fail with a number"),
        Method(
            "FailCall", "Index, Number",
            [](HostFace&, std::int32_t index, std::int32_t number) { faults::FailCall(index, number); },
            "lets one platform call fail, 0 being the next, whatever it is"),
        Method(
            "ClearFaults", "", [](HostFace&) { faults::Clear(); }, "forgets every fault that was set"),
    };
}

} // namespace

const MemberTable<HostFace>& HostTable()
{
    static const MemberTable<HostFace> table = []
    {
        Rows rows;
        for (auto make : {LifeRows, WindowRows, PersonRows, RecordRows, MachineRows})
            std::ranges::move(make(), std::back_inserter(rows));
        return MemberTable<HostFace>{"Host", std::move(rows)};
    }();
    return table;
}

} // namespace lumora::automation
