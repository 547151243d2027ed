// Which driver a control ends up with, and what it says about it.
#include "properties/DeviceNames.h"
#include "viewport/LiveControl.h"

using namespace lumora;
using namespace lumora::test;

namespace
{

std::string NameOf(const char* identifier)
{
    const auto drivers = StandardDrivers();
    for (int i = 0; i < drivers->Count(); ++i)
        if (drivers->At(i).identifierName == identifier)
            return drivers->At(i).name;
    return "no such driver";
}

std::shared_ptr<headless::HeadlessHost> HostWith(std::shared_ptr<const DriverList> drivers)
{
    return std::make_shared<headless::HeadlessHost>(std::move(drivers), nullptr, PixelRect{0, 0, Side, Side});
}

headless::MemoryPropertyBag Asking(tdlDirect3DDevice device, bool exposed)
{
    auto bag = UsualSettings();
    bag.Set("Direct3DDevice", std::int32_t{device});
    bag.Set("ExposeDDSurface", exposed);
    return bag;
}

TEST(DeviceSetup, properties_describe_the_driver_really_used)
{
    struct Row
    {
        tdlDirect3DDevice asked;
        bool exposed;
        bool fails;
        const char* identifier; ///< what Direct3DDeviceGUID reads afterwards
        const char* used;
    };
    const Row rows[] = {
        {tdlDirect3DRefDevice, false, false, drivername::Reference, drivername::Reference},
        {tdlDirect3DRefDevice, true, false, drivername::Reference, drivername::Reference},
        {tdlDirect3DRampDevice, false, false, drivername::Ramp, drivername::Ramp},
        // In the window the name that was asked for stays; exposed it is replaced.
        {tdlDirect3DRefDevice, false, true, drivername::Reference, drivername::RGB},
        {tdlDirect3DRefDevice, true, true, drivername::RGB, drivername::RGB},
    };
    for (const Row& row : rows)
    {
        auto drivers = StandardDrivers();
        if (row.fails)
            drivers = headless::FailingOnCreation(drivers, DeviceGuidName(row.asked), error::DDNo3D);
        LiveControl control{Asking(row.asked, row.exposed), HostWith(drivers)};
        EXPECT_EQ(control->ViewportState(), tdlRunning);
        EXPECT_EQ(control->Direct3DDevice(), row.asked);
        EXPECT_EQ(control->Direct3DDeviceGUID(), row.identifier);
        EXPECT_EQ(control->Direct3DDeviceName(), NameOf(row.used));
    }
}

TEST(DeviceSetup, a_name_that_no_driver_has_ends_at_the_rgb_driver)
{
    for (const bool exposed : {false, true})
    {
        auto bag = Asking(static_cast<tdlDirect3DDevice>(7), exposed);
        bag.Remove("Enabled"); // a first picture would rebuild, and an empty name means the first driver
        LiveControl control{bag};
        EXPECT_EQ(control->ViewportState(), tdlRunning);
        EXPECT_EQ(control->Direct3DDevice(), 7);
        EXPECT_EQ(control->Direct3DDeviceName(), NameOf(drivername::RGB));
        EXPECT_EQ(control->Direct3DDeviceGUID(), exposed ? drivername::RGB : "");
        control->RenderScene();
    }
}

TEST(DeviceSetup, without_a_usable_driver_load_halts_and_a_rebuild_tells_the_caller)
{
    for (const bool exposed : {false, true})
    {
        LiveControl halted{Asking(tdlDirect3DRefDevice, exposed), HostWith(nullptr)};
        EXPECT_EQ(halted->ViewportState(), tdlHalted);

        LiveControl control{Asking(tdlDirect3DRGBDevice, exposed)};
        const char* creation =
            exposed ? "RetainedMode.CreateDeviceFromSurface" : "RetainedMode.CreateDeviceFromClipper";
        control.Host().FailNext(creation, 2, error::DDNo3D);
        control->OnResize();
        const RuntimeError failure = ErrorOf([&] { control->RenderScene(); });
        EXPECT_EQ(failure.Number(), -2147221502);
        EXPECT_EQ(failure.Source(), "Viewport");
        EXPECT_EQ(failure.Description(), "Unable to create Direct3D Device");
        EXPECT_EQ(control->ViewportState(), tdlRunning);
        EXPECT_NE(ErrorOf([&] { control->RenderScene(); }).Number(), -2147221502) << "no rebuild without a reason";

        control->SetDirect3DDevice(tdlDirect3DRGBDevice);
        control->RenderScene();
        EXPECT_EQ(control->Direct3DDeviceName(), NameOf(drivername::RGB)) << "a later rebuild recovers";
    }
}

TEST(DeviceSetup, writing_the_device_takes_effect_at_the_next_picture_and_keeps_the_camera)
{
    LiveControl control;
    control->SetCameraPosition(1, 2, 3);
    control->SetCameraOrientation(1, 0, 0, 0, 1, 0);
    control->SetDirect3DDevice(tdlDirect3DRefDevice);
    EXPECT_EQ(control->Direct3DDeviceName(), NameOf(drivername::RGB));
    int moved = 0;
    control->CameraMoved.Connect([&](auto&...) { ++moved; });
    control->RenderScene();
    EXPECT_EQ(control->Direct3DDeviceName(), NameOf(drivername::Reference));
    EXPECT_GE(moved, 1);
    EXPECT_EQ(control->GetCameraPosition(), (Vector{1, 2, 3}));
    EXPECT_EQ(control->GetCameraOrientation().direction, (Vector{1, 0, 0}));
    moved = 0;
    control->RenderScene();
    EXPECT_EQ(moved, 0) << "one rebuild for one change";
}

TEST(DeviceSetup, surfaces_have_the_size_that_border_and_sampling_ask_for)
{
    struct Row
    {
        tdlBorderStyle border;
        tdlAntiAlias antiAlias;
        int render;
        int target;
    };
    for (const Row& row : {Row{tdlBSNone, tdlNone, 100, 0}, Row{tdlBSNone, tdl2X, 200, 100},
                           Row{tdlFixedSingle, tdlNone, 102, 0}, Row{tdlFixedSingle, tdl4X, 402, 102}})
    {
        auto bag = Asking(tdlDirect3DRGBDevice, true);
        bag.Set("BorderStyle", std::int32_t{row.border});
        bag.Set("AntiAlias", std::int32_t{row.antiAlias});
        LiveControl control{bag};
        control->OnResize(); // the border is loaded after the device
        control->RenderScene();
        EXPECT_EQ(control->DirectDrawSurface()->Width(), row.render);
        EXPECT_EQ(control->AntiAliasSurface() ? control->AntiAliasSurface()->Height() : 0, row.target);
    }
}

TEST(DeviceSetup, controls_of_no_size_and_of_absurd_size_do_not_break)
{
    for (const bool exposed : {false, true})
    {
        LiveControl nothing{Asking(tdlDirect3DRGBDevice, exposed), MakeHost(0, 0)};
        EXPECT_EQ(nothing->ViewportState(), tdlRunning);
        nothing->RenderScene();
        nothing.Host().ResizeWindow(40, 30);
        nothing->RenderScene();

        auto bag = Asking(tdlDirect3DRGBDevice, true);
        bag.Set("AntiAlias", std::int32_t{1000000000});
        LiveControl absurd{bag};
        EXPECT_EQ(absurd->ViewportState(), tdlHalted);
    }
}

} // namespace
