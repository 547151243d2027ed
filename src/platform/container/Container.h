// What a host offers the control it carries.
#pragma once

#include "platform/container/ControlWindow.h"
#include "platform/container/Dialogs.h"
#include "platform/container/PropertyBag.h"
#include "platform/container/Screen.h"
#include "platform/drivers/DriverList.h"

#include <memory>
#include <string_view>

namespace lumora
{

class Container : public Object
{
public:
    /// The ambient property: true in a running program, false in a form designer.
    virtual bool UserMode() = 0;

    /// A member of the container object by its name. MemberNotFound when it has none of this name.
    virtual Variant LateBoundMember(std::string_view name) = 0;

    /// Told after a property of the control changed.
    virtual void PropertyChanged(std::string_view name) = 0;

    /// The control's window; lives as long as the control.
    virtual std::shared_ptr<ControlWindow> Window() = 0;
    virtual std::shared_ptr<Screen> TheScreen() = 0;
    virtual std::shared_ptr<Dialogs> TheDialogs() = 0;

    /// The Direct3D drivers that the control chooses from; asked for anew for each device.
    virtual std::shared_ptr<const DriverList> Drivers() = 0;

    /// Positions in the container's coordinate units to pixels, and back.
    virtual double PositionToPixelsX(double position) = 0;
    virtual double PositionToPixelsY(double position) = 0;
    virtual double PixelsToPositionX(double pixels) = 0;
    virtual double PixelsToPositionY(double pixels) = 0;

    /// A sentence for whoever maintains the program (why a control halted, which stored value was unusable); nothing is
    /// raised.
    virtual void Log(std::string_view message) = 0;
};

} // namespace lumora
