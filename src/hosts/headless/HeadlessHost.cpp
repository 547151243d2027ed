// What the headless host offers its control, and the form around it.
#include "hosts/headless/HeadlessHost.h"

#include "base/Faults.h"
#include "base/RuntimeError.h"

#include <algorithm>
#include <utility>

namespace lumora::headless
{

namespace
{

std::string LowerCase(std::string_view name)
{
    std::string lower{name};
    std::ranges::transform(lower, lower.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

} // namespace

HeadlessHost::HeadlessHost(std::shared_ptr<const DriverList> drivers, std::shared_ptr<VirtualScreen> screen,
                           const PixelRect& client)
    : screen_(screen ? std::move(screen) : std::make_shared<VirtualScreen>()),
      window_(VirtualWindow::Create(screen_, client))
{
    SetDrivers(std::move(drivers));
}

HeadlessHost::~HeadlessHost()
{
    faults::Clear();
    try
    {
        Close();
    }
    catch (...) // NOLINT: a control that fails to end cannot keep its host
    {
    }
}

bool HeadlessHost::UserMode()
{
    faults::Point("Container.UserMode");
    return userMode_;
}

Variant HeadlessHost::LateBoundMember(std::string_view name)
{
    faults::Point("Container.LateBoundMember");
    const auto found = lateBoundMembers_.find(LowerCase(name));
    if (found == lateBoundMembers_.end())
        throw RuntimeError{error::MemberNotFound, "Container", "The container has no member " + std::string{name}};
    return found->second;
}

void HeadlessHost::PropertyChanged(std::string_view name)
{
    faults::Point("Container.PropertyChanged");
    propertyChanges_.emplace_back(name);
}

std::shared_ptr<ControlWindow> HeadlessHost::Window()
{
    return window_;
}

std::shared_ptr<Screen> HeadlessHost::TheScreen()
{
    return screen_;
}

std::shared_ptr<Dialogs> HeadlessHost::TheDialogs()
{
    return dialogs_;
}

std::shared_ptr<const DriverList> HeadlessHost::Drivers()
{
    return drivers_;
}

double HeadlessHost::PositionToPixelsX(double position)
{
    faults::Point("Container.PositionToPixelsX");
    return positionUnit_ == PositionUnit::Pixels ? position : position / screen_->UnitsPerPixelX();
}

double HeadlessHost::PositionToPixelsY(double position)
{
    faults::Point("Container.PositionToPixelsY");
    return positionUnit_ == PositionUnit::Pixels ? position : position / screen_->UnitsPerPixelY();
}

double HeadlessHost::PixelsToPositionX(double pixels)
{
    faults::Point("Container.PixelsToPositionX");
    return positionUnit_ == PositionUnit::Pixels ? pixels : pixels * screen_->UnitsPerPixelX();
}

double HeadlessHost::PixelsToPositionY(double pixels)
{
    faults::Point("Container.PixelsToPositionY");
    return positionUnit_ == PositionUnit::Pixels ? pixels : pixels * screen_->UnitsPerPixelY();
}

void HeadlessHost::Log(std::string_view message)
{
    logged_.emplace_back(message);
}

PixelView HeadlessHost::ControlPicture()
{
    const PixelView screen = screen_->Pixels();
    const PixelRect part = Intersection(window_->ClientRect(), screen.Bounds());
    if (part.IsEmpty())
        throw RuntimeError{error::InvalidCall, "HeadlessHost", "Nothing of the window is on the screen"};
    return {screen.Row(part.top) + part.left, part.Width(), part.Height(), screen.pitch};
}

void HeadlessHost::SetDrivers(std::shared_ptr<const DriverList> drivers)
{
    drivers_ = drivers ? std::move(drivers) : std::make_shared<const DriverList>();
}

void HeadlessHost::SetLateBoundMember(std::string_view name, const Variant& value)
{
    lateBoundMembers_[LowerCase(name)] = value;
}

void HeadlessHost::RemoveLateBoundMember(std::string_view name)
{
    lateBoundMembers_.erase(LowerCase(name));
}

void HeadlessHost::FailNext(std::string_view operation, int count, std::int32_t number)
{
    faults::FailNext(operation, count, number);
}

// Every call below holds the control while it runs: a handler may close the host.

void HeadlessHost::ShowControl()
{
    if (const auto control = control_)
        control->Show();
}

void HeadlessHost::PaintNow()
{
    if (const auto control = control_)
        control->Paint();
}

void HeadlessHost::ResizeWindow(int width, int height)
{
    const PixelRect& old = window_->ClientRect();
    if (width < 0 || height < 0 || width > VirtualWindow::MaximumSide || height > VirtualWindow::MaximumSide)
        throw RuntimeError{error::InvalidCall, "HeadlessHost", "A window's sides must be between 0 and 16384 pixels"};
    window_->SetClientRect({old.left, old.top, old.left + width, old.top + height});
    if (const auto control = control_)
        control->Resize();
}

void HeadlessHost::MoveWindow(int left, int top)
{
    // Far beyond every place that a window accepts, and near enough to compute with.
    constexpr int Farthest = 1 << 24;
    left = std::clamp(left, -Farthest, Farthest);
    top = std::clamp(top, -Farthest, Farthest);
    const PixelRect& old = window_->ClientRect();
    window_->SetClientRect({left, top, left + old.Width(), top + old.Height()});
}

void HeadlessHost::Close()
{
    if (const auto control = std::exchange(control_, nullptr))
        control->Terminate();
}

} // namespace lumora::headless
