// What a load and a save do one after the other, seen from the container, the property bag and the device.
#include "platform/automation/Faults.h"
#include "properties/PropertyValues.h"
#include "viewport/LiveControl.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <iterator>
#include <sstream>

using namespace lumora;
using namespace lumora::test;
using ::testing::ElementsAreArray;

namespace
{

std::vector<std::string> Words(const std::string& text)
{
    std::istringstream stream{text};
    return {std::istream_iterator<std::string>{stream}, {}};
}

// The contract, spelt out: containers written for it see their entries asked for in this order.
const std::vector<std::string> DeviceKeys = Words("Direct3DDevice AntiAlias ExposeDDSurface");
const std::vector<std::string> LimitKeys =
    Words("SceneOriginX SceneOriginY SceneOriginZ CollisionDetection CollisionSamples CollisionDistance "
          "PositionConstraints KeyVelocityMove KeyVelocityRotate KeyVelocityZoom CameraMinX CameraMinY "
          "CameraMinZ CameraMaxX CameraMaxY CameraMaxZ CameraMaxDistance KeyMoveForward KeyMoveBack "
          "KeyMoveLeft KeyMoveRight KeyMoveUp KeyMoveDown KeyRotateXCCW KeyRotateXCW KeyRotateYCCW "
          "KeyRotateYCW KeyRotateZCCW KeyRotateZCW KeyEncircleXCCW KeyEncircleXCW KeyEncircleYCCW "
          "KeyEncircleYCW KeyEncircleZCCW KeyEncircleZCW KeyZoomIn KeyZoomOut");
const std::vector<std::string> WriterKeys =
    Words("Accumulate CoolMode RenderOverlay CenterNavigation MouseNavigationMode MouseNavigationMethod "
          "KeyNavigationMethod NavControlPrimary NavControlGlide NavControlAdvance NavControlPrimaryMode "
          "NavControlGlideMode NavControlAdvanceMode NavMouseSensitivity NavMouseX NavMouseY NavMouseShiftX "
          "NavMouseShiftY NavMouseCtrlX NavMouseCtrlY NavMouseShiftCtrlX NavMouseShiftCtrlY ProjectionType "
          "ShadeMode FillMode LightMode RenderMode TextureQuality WaitForVSYNC ConstrainX ConstrainY "
          "ConstrainZ BackgroundTexture BackgroundTextureStretch BackClippingPlane FrontClippingPlane "
          "FieldOfView BackColor BorderStyle MouseIcon MousePointer Enabled CullMethod");
const std::vector<std::string> SaveHead =
    Words("MouseNavigationMode MouseNavigationMethod KeyNavigationMethod NavControlPrimary NavControlGlide "
          "NavControlAdvance NavControlPrimaryMode NavControlGlideMode NavControlAdvanceMode "
          "NavMouseSensitivity AntiAlias NavMouseX NavMouseY NavMouseShiftX NavMouseShiftY NavMouseCtrlX "
          "NavMouseCtrlY NavMouseShiftCtrlX NavMouseShiftCtrlY ProjectionType ShadeMode FillMode LightMode "
          "RenderMode ExposeDDSurface Accumulate CoolMode RenderOverlay CenterNavigation TextureQuality "
          "WaitForVSYNC ConstrainX ConstrainY ConstrainZ BackgroundTexture BackgroundTextureStretch "
          "BackClippingPlane FrontClippingPlane FieldOfView BackColor BorderStyle MouseIcon MousePointer "
          "Enabled Direct3DDevice CullMethod");

std::vector<std::string> Joined(std::vector<std::string> first, const std::vector<std::string>& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

class ObservedBag : public PropertyBag
{
public:
    Variant ReadProperty(std::string_view name, const Variant& defaultValue) override
    {
        if (beforeRead)
            beforeRead(name);
        asked.emplace_back(name);
        return stored.ReadProperty(name, defaultValue);
    }
    void WriteProperty(std::string_view name, const Variant& value, const Variant& defaultValue) override
    {
        written.emplace_back(name);
        stored.WriteProperty(name, value, defaultValue);
    }

    MemoryPropertyBag stored;
    std::vector<std::string> asked;
    std::vector<std::string> written;
    std::function<void(std::string_view)> beforeRead;
};

MemoryPropertyBag BagOfOtherValues()
{
    MemoryPropertyBag bag;
    for (const PropertyRow& row : PropertyTable())
        if (row.saved)
            bag.Set(row.name, AnotherValue(row));
    bag.Set("Direct3DDevice", std::int32_t{tdlDirect3DRGBDevice});
    bag.Set("WaitForVSYNC", false);
    return bag;
}

TEST(Load, asks_and_tells_in_the_order_that_containers_know)
{
    const auto host = MakeHost();
    host->SetUserMode(false);
    headless::HostedViewport hosted{host};
    ObservedBag bag;
    hosted.Control().Load(bag);
    EXPECT_THAT(bag.asked, ElementsAreArray(Joined(Joined(DeviceKeys, WriterKeys), LimitKeys)));
    EXPECT_THAT(host->PropertyChanges(), ElementsAreArray(Joined(WriterKeys, LimitKeys)))
        << "the device's own keys are stored without a word";
}

TEST(Load, starts_the_device_between_the_keys_it_needs_and_the_ones_that_reach_it)
{
    const auto host = MakeHost();
    headless::HostedViewport hosted{host};
    Viewport& control = hosted.Control();
    ObservedBag bag;
    bag.stored = BagOfOtherValues();
    std::vector<std::string> toldAtFirstPicture;
    bool cameraAtFirstWriter = false;
    bag.beforeRead = [&](std::string_view name)
    {
        if (name == "ExposeDDSurface")
        {
            EXPECT_FALSE(control.Camera());
        }
        if (name == "Accumulate")
            cameraAtFirstWriter = control.Camera() != nullptr;
    };
    control.UpdatePositions.Connect(
        [&]
        {
            if (toldAtFirstPicture.empty())
                toldAtFirstPicture = host->PropertyChanges();
        });
    faults::Record();
    control.Load(bag);
    const auto calls = faults::Recorded();
    faults::Clear();

    EXPECT_EQ(control.ViewportState(), tdlRunning);
    EXPECT_TRUE(cameraAtFirstWriter);
    EXPECT_EQ(control.Direct3DDeviceGUID(), "IID_IDirect3DRGBDevice");
    ASSERT_FALSE(toldAtFirstPicture.empty()) << "Enabled draws a first picture";
    EXPECT_EQ(toldAtFirstPicture.back(), "MousePointer");

    // What the device hears once it exists: each setting as its key is read.
    const auto isRead = [](const std::string& call) { return call == "PropertyBag.ReadProperty"; };
    const auto isDevice = [](const std::string& call) { return call.starts_with("RetainedMode.CreateDevice"); };
    const auto device = std::ranges::find_if(calls, isDevice);
    EXPECT_EQ(std::count_if(calls.begin(), device, isRead), static_cast<std::ptrdiff_t>(DeviceKeys.size()));
    const auto writers = std::find_if(device, calls.end(), isRead);
    EXPECT_EQ(std::count_if(device, writers, isDevice), 1);
}

TEST(Save, writes_in_its_own_order)
{
    MemoryPropertyBag empty;
    const auto hosted = headless::HostedViewport::AtDesignTime(MakeHost(), empty);
    ObservedBag bag;
    hosted->Control().Save(bag);
    EXPECT_THAT(bag.written, ElementsAreArray(Joined(SaveHead, LimitKeys)));
}

TEST(Initialise, tells_in_save_order_but_for_anti_aliasing_and_shows_the_container_s_picture_last)
{
    const auto host = MakeHost();
    headless::HostedViewport hosted{host};
    faults::Record();
    hosted.Control().Initialise();
    const auto calls = faults::Recorded();
    faults::Clear();
    auto expected = SaveHead;
    std::erase(expected, "AntiAlias");
    std::erase(expected, "Direct3DDevice");
    expected.insert(std::ranges::find(expected, "ProjectionType"), "AntiAlias");
    EXPECT_THAT(host->PropertyChanges(), ElementsAreArray(Joined(expected, LimitKeys)));
    EXPECT_EQ(calls.back(), "Container.LateBoundMember");
    EXPECT_FALSE(hosted.Control().Camera()) << "only a load starts the device";
}

// With one platform call after the other failing for good, values are lost only where the call itself kept them.
TEST(Load, stores_every_value_whatever_call_fails_in_its_middle)
{
    const auto load = [](headless::HostedViewport& hosted)
    {
        auto bag = BagOfOtherValues();
        bag.Set("AntiAlias", std::int32_t{1});
        hosted.Control().Load(bag);
    };
    headless::HostedViewport undisturbed{MakeHost(20, 20)};
    faults::Record();
    load(undisturbed);
    const auto calls = faults::Recorded();
    faults::Clear();
    ASSERT_GT(calls.size(), 200U);
    for (std::size_t i = 0; i < calls.size(); ++i)
    {
        headless::HostedViewport hosted{MakeHost(20, 20)};
        faults::FailCall(static_cast<std::int64_t>(i), error::OutOfMemory);
        ASSERT_NO_THROW(load(hosted));
        faults::Clear();
        const bool keepsValue = calls[i] == "PropertyBag.ReadProperty" || calls[i].starts_with("ControlWindow.Set");
        std::vector<std::string_view> lost;
        for (const PropertyRow& row : PropertyTable())
            if (row.saved && !VariantsEqual(row.read(hosted.Control()), row.read(undisturbed.Control())))
                lost.push_back(row.name);
        EXPECT_LE(lost.size(), keepsValue ? 1U : 0U)
            << "call " << i << ", " << calls[i] << ", loses " << testing::PrintToString(lost);
    }
}

} // namespace
