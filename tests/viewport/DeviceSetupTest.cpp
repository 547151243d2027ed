// Which driver a control ends up with, and what it says about it.
#include "base/Faults.h"
#include "properties/DeviceNames.h"
#include "viewport/LiveControl.h"

#include <gmock/gmock.h>

using namespace lumora;
using namespace lumora::test;

namespace
{

DriverList::Entry EntryOf(const char* identifier)
{
    const auto drivers = StandardDrivers();
    for (int i = 0; i < drivers->Count(); ++i)
        if (drivers->At(i).identifierName == identifier)
            return drivers->At(i);
    return {};
}

std::string NameOf(const char* identifier)
{
    return EntryOf(identifier).name;
}

std::shared_ptr<headless::HeadlessHost> HostWith(std::shared_ptr<const DriverList> drivers)
{
    return std::make_shared<headless::HeadlessHost>(std::move(drivers), nullptr, PixelRect{0, 0, Side, Side});
}

MemoryPropertyBag Asking(tdlDirect3DDevice device, bool exposed)
{
    auto bag = UsualSettings();
    bag.Set("Direct3DDevice", std::int32_t{device});
    bag.Set("ExposeDDSurface", exposed);
    return bag;
}

TEST(DeviceSetup, properties_describe_the_driver_really_used_and_the_surface_lies_in_its_memory)
{
    struct Row
    {
        std::int32_t asked;
        bool exposed;
        const char* driver;     ///< what this machine does with it
        const char* identifier; ///< what Direct3DDeviceGUID reads afterwards
        const char* used;
        std::uint32_t memory = 0; ///< of the exposed surface
    };
    constexpr std::int32_t NoSuchDevice = 7;
    constexpr std::uint32_t System = 0x800;
    constexpr std::uint32_t Video = 0x4000;
    const Row rows[] = {
        {tdlDirect3DRefDevice, false, "works", drivername::Reference, drivername::Reference},
        {tdlDirect3DRefDevice, true, "works", drivername::Reference, drivername::Reference, System},
        {tdlDirect3DRampDevice, false, "works", drivername::Ramp, drivername::Ramp},
        {tdlDirect3DHALDevice, true, "works", drivername::HAL, drivername::HAL, Video},
        // In the window the name that was asked for stays; exposed it is replaced.
        {tdlDirect3DRefDevice, false, "fails", drivername::Reference, drivername::RGB},
        {tdlDirect3DHALDevice, true, "fails", drivername::RGB, drivername::RGB, System},
        {tdlDirect3DRefDevice, false, "missing", "", drivername::RGB},
        {NoSuchDevice, true, "works", drivername::RGB, drivername::RGB, System},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(testing::Message() << "device " << row.asked << ", exposed " << row.exposed);
        const auto asked = static_cast<tdlDirect3DDevice>(row.asked);
        auto drivers = headless::MadeBy(StandardDrivers(), drivername::HAL, EntryOf(drivername::RGB).create);
        if (std::string_view{row.driver} == "missing")
            drivers = headless::WithoutDriver(drivers, DeviceGuidName(asked));
        if (std::string_view{row.driver} == "fails")
            drivers = headless::FailingOnCreation(drivers, DeviceGuidName(asked), error::DDNo3D);
        auto bag = Asking(asked, row.exposed);
        bag.Remove("Enabled"); // a first picture would rebuild, and an empty name means the first driver
        LiveControl control{bag, HostWith(drivers)};
        EXPECT_EQ(control->ViewportState(), tdlRunning);
        EXPECT_EQ(control->Direct3DDevice(), row.asked);
        EXPECT_EQ(control->Direct3DDeviceGUID(), row.identifier);
        EXPECT_EQ(control->Direct3DDeviceName(), NameOf(row.used));
        const auto surface = control->DirectDrawSurface();
        EXPECT_EQ(surface ? surface->Description().caps & (System | Video) : 0, row.memory);
        if (!control->Direct3DDeviceGUID().empty())
            continue;
        control->SetEnabled(true);
        control->RenderScene();
        EXPECT_EQ(control->Direct3DDeviceName(), drivers->At(0).name) << "the first driver, for want of a name";
    }
}

TEST(DeviceSetup, without_a_usable_driver_load_halts_and_a_rebuild_tells_why_until_one_succeeds)
{
    for (const auto& [exposed, failsToo] :
         {std::pair{false, ""}, std::pair{true, ""}, std::pair{true, "DirectDraw.CreateClipper"}})
    {
        LiveControl halted{Asking(tdlDirect3DRefDevice, exposed), HostWith(nullptr)};
        EXPECT_EQ(halted->ViewportState(), tdlHalted);
        EXPECT_EQ(halted.Host().Logged(),
                  std::vector<std::string>{"The control halted in Load: Unable to create "
                                           "Direct3D Device (error -2147221502 from Viewport)"});

        // The machine changes under a control that runs: no driver is left, or its fall-back does not even begin.
        LiveControl control{Asking(tdlDirect3DRGBDevice, exposed)};
        const std::string operation = failsToo;
        auto drivers = headless::MadeBy(StandardDrivers(), drivername::Reference,
                                        [operation]() -> std::unique_ptr<Driver>
                                        {
                                            faults::FailNext(operation, 1, error::OutOfMemory);
                                            throw RuntimeError{error::DDNo3D, "test", "gone"};
                                        });
        if (operation.empty())
            drivers = headless::FailingOnCreation(drivers, drivername::RGB, error::DDNo3D);
        control.Host().SetDrivers(drivers);
        control->SetDirect3DDevice(tdlDirect3DRefDevice);
        const RuntimeError failure = FailureOf([&] { control->RenderScene(); });
        EXPECT_EQ(failure.Number(), -2147221502);
        EXPECT_EQ(failure.Source(), "Viewport");
        EXPECT_EQ(failure.Description(), "Unable to create Direct3D Device");
        EXPECT_EQ(control->ViewportState(), tdlRunning);
        EXPECT_EQ(control->Direct3DDeviceName(), NameOf(exposed ? drivername::RGB : drivername::Reference));
        const RuntimeError next = FailureOf([&] { control->RenderScene(); });
        EXPECT_EQ(next.Number(), error::ObjectNotSet) << "no rebuild without a reason";
        EXPECT_THAT(next.Description(), testing::HasSubstr("no rendering device: its last set-up failed (Unable to"));

        control.Host().SetDrivers(StandardDrivers());
        control->SetDirect3DDevice(tdlDirect3DRGBDevice);
        control->RenderScene();
        EXPECT_EQ(control->Direct3DDeviceName(), NameOf(drivername::RGB)) << "a later rebuild recovers";
        control->SetScene(nullptr);
        EXPECT_EQ(FailureOf([&] { control->Pick(tdlScene, 5, 5); }).Description(), "There is no scene: set Scene");
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
    control->SetDirect3DDevice(static_cast<tdlDirect3DDevice>(7));
    EXPECT_EQ(control->Direct3DDeviceGUID(), "IID_IDirect3DDefaultDevice");
}

TEST(DeviceSetup, surfaces_have_the_size_that_border_and_sampling_ask_for)
{
    for (const auto& [border, antiAlias, render, averaged] : {std::tuple{tdlBSNone, tdlNone, 100, 0},
                                                              {tdlBSNone, tdl2X, 200, 100},
                                                              {tdlFixedSingle, tdlNone, 102, 0},
                                                              {tdlFixedSingle, tdl4X, 402, 102}})
    {
        auto bag = Asking(tdlDirect3DRGBDevice, true);
        bag.Set("BorderStyle", std::int32_t{border});
        bag.Set("AntiAlias", std::int32_t{antiAlias});
        LiveControl control{bag};
        control->OnResize(); // the border is loaded after the device
        control->RenderScene();
        EXPECT_EQ(control->DirectDrawSurface()->Width(), render);
        const auto target = control->AntiAliasSurface();
        EXPECT_EQ(target ? target->Height() : 0, averaged);
        EXPECT_TRUE(!target || (target->Description().caps & surfacecaps::SystemMemory) != 0);
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
