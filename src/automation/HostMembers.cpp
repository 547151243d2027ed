#include "automation/HostMembers.h"

#include "automation/PackedNumbers.h"
#include "base/Faults.h"
#include "hosts/headless/DriverLists.h"

#include <algorithm>
#include <iterator>

namespace lumora::automation
{

namespace
{

using headless::HeadlessHost;
using headless::PositionUnit;
using headless::ScaleMode;
using headless::WindowAttributes;
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

constexpr double TwipsPerInch = 1440;
constexpr std::int32_t MaxTime = 3600000; // milliseconds; a key may repeat in each

std::int32_t Checked(std::int32_t value, std::int32_t lowest, std::int32_t highest, const char* what)
{
    if (value < lowest || value > highest)
        throw RuntimeError{error::InvalidCall, "Host",
                           std::string{what} + " is " + std::to_string(lowest) + " to " + std::to_string(highest)};
    return value;
}

// An attribute that the window keeps for its control: read as it is, written like the control writes it.
template<typename Value, typename Given>
MemberRow<HostFace> Attribute(const char* name, Value WindowAttributes::*attribute, void (ControlWindow::*write)(Given),
                              const char* help)
{
    return Property(
        name, [attribute](HostFace& host) -> Value { return host.Form().ControlArea().Attributes().*attribute; },
        [write](HostFace& host, const Value& value)
        { (static_cast<ControlWindow&>(host.Form().ControlArea()).*write)(value); },
        help);
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
            "ClearFaults", "", [](HostFace&) { faults::ClearFaults(); }, "forgets every fault that was set"),
    };
}

Rows LoadingRows()
{
    return {
        Method("CreateControl", "", &HostFace::CreateControl,
               "a control that has loaded nothing yet: connect sinks, then Load"),
    };
}

Rows AttributeRows()
{
    return {
        Attribute("WindowBackColor", &WindowAttributes::backColor, &ControlWindow::SetBackColor,
                  "0x00BBGGRR, or 0x80000000 plus a system color's number"),
        Attribute("WindowBorderStyle", &WindowAttributes::borderStyle, &ControlWindow::SetBorderStyle,
                  "0 none, 1 fixed single"),
        Attribute("WindowMousePointer", &WindowAttributes::mousePointer, &ControlWindow::SetMousePointer,
                  "0 to 15, or 99 for the icon"),
        Attribute("WindowMouseIcon", &WindowAttributes::mouseIcon, &ControlWindow::SetMouseIcon,
                  "the cursor's picture, or nothing"),
        Attribute("WindowEnabled", &WindowAttributes::enabled, &ControlWindow::SetEnabled,
                  "whether the window gets input"),
        Attribute("WindowPicture", &WindowAttributes::picture, &ControlWindow::SetPicture,
                  "the picture at design time, or nothing"),
    };
}

Rows ScreenRows()
{
    return {
        Property(
            "ScreenWidth", [](HostFace& host) { return std::int32_t{host.Form().Display().Bounds().Width()}; },
            "pixels"),
        Property(
            "ScreenHeight", [](HostFace& host) { return std::int32_t{host.Form().Display().Bounds().Height()}; },
            "pixels"),
        Method(
            "SetScreenSize", "Width, Height",
            [](HostFace& host, std::int32_t width, std::int32_t height)
            { host.Form().Display().SetSize(width, height); },
            "gives the screen another size, 1 to 16384 pixels a side"),
        Property(
            "DpiX", [](HostFace& host) { return TwipsPerInch / host.Form().Display().UnitsPerPixelX(); },
            [](HostFace& host, double dots)
            { host.Form().Display().SetTwipsPerPixel(TwipsPerInch / dots, host.Form().Display().UnitsPerPixelY()); },
            "pixels an inch; a pixel has 1440 / DpiX twips"),
        Property(
            "DpiY", [](HostFace& host) { return TwipsPerInch / host.Form().Display().UnitsPerPixelY(); },
            [](HostFace& host, double dots)
            { host.Form().Display().SetTwipsPerPixel(host.Form().Display().UnitsPerPixelX(), TwipsPerInch / dots); },
            "pixels an inch"),
        Property(
            "WindowScaleMode",
            [](HostFace& host) { return static_cast<std::int32_t>(host.Form().ControlArea().CurrentScaleMode()); },
            [](HostFace& host, std::int32_t mode)
            { host.Form().ControlArea().SetScaleMode(static_cast<ScaleMode>(Checked(mode, 1, 3, "A scale mode"))); },
            "1 twips, 2 points, 3 pixels"),
        Property(
            "PositionUnit", [](HostFace& host) { return static_cast<std::int32_t>(host.Form().CurrentPositionUnit()); },
            [](HostFace& host, std::int32_t unit)
            { host.Form().SetPositionUnit(static_cast<PositionUnit>(Checked(unit, 0, 1, "A position unit"))); },
            "of the form's coordinates: 0 pixels, 1 twips"),
    };
}

Rows KeyboardRows()
{
    return {
        Method("PressKeyWithCharacter", "Code, Character", OnForm(&HeadlessHost::PressKeyWithCharacter),
               "a virtual key goes down that stands for this character, or for none (0)"),
        Method("SetKeyRepeat", "Delay, Interval", OnForm(&HeadlessHost::SetKeyRepeat),
               "when a held key repeats, milliseconds"),
        Method(
            "AdvanceTime", "Milliseconds",
            [](HostFace& host, std::int32_t milliseconds)
            { host.Form().AdvanceTime(static_cast<std::uint32_t>(Checked(milliseconds, 0, MaxTime, "A time"))); },
            "lets up to an hour go by while the key that is held repeats"),
    };
}

std::string CallLog()
{
    std::string lines;
    for (const std::string& name : faults::Recorded())
        (lines += name) += '\n';
    return lines;
}

Rows CallLogRows()
{
    return {
        Method(
            "StartCallLog", "", [](HostFace&) { faults::Record(); },
            "begins to log platform calls and the control's events, and forgets the log before"),
        Method(
            "StopCallLog", "", [](HostFace&) { faults::StopRecording(); }, "ends the log, which can still be read"),
        Property(
            "CallLog", [](HostFace&) { return CallLog(); },
            "platform calls (Frame.SetPosition) and events (event CameraMoved) in their order, a line each; the last "
            "65536"),
        Property(
            "CallLogDropped", [](HostFace&) { return static_cast<double>(faults::DroppedCount()); },
            "how many lines came before those"),
    };
}

Rows DriverOrderRows()
{
    return {
        Method(
            "MoveDriver", "Name, Index",
            [](HostFace& host, const std::string& name, std::int32_t index)
            { host.Form().SetDrivers(headless::WithDriverAt(host.Form().Drivers(), name, index)); },
            "moves a driver to an index of the machine's list, from 0"),
    };
}

} // namespace

const MemberTable<HostFace>& HostTable()
{
    static const MemberTable<HostFace> table = []
    {
        Rows rows;
        for (auto make : {LifeRows, WindowRows, PersonRows, RecordRows, MachineRows, LoadingRows, AttributeRows,
                          ScreenRows, KeyboardRows, CallLogRows, DriverOrderRows})
            std::ranges::move(make(), std::back_inserter(rows));
        return MemberTable<HostFace>{"Host", std::move(rows)};
    }();
    return table;
}

} // namespace lumora::automation
