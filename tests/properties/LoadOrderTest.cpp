// What a load and a save do one after the other, seen from the container, the property bag and the device.
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
const std::string DeviceKeys = "Direct3DDevice AntiAlias ExposeDDSurface ";
const std::string LimitKeys =
    "SceneOriginX SceneOriginY SceneOriginZ CollisionDetection CollisionSamples CollisionDistance PositionConstraints "
    "KeyVelocityMove KeyVelocityRotate KeyVelocityZoom CameraMinX CameraMinY CameraMinZ CameraMaxX CameraMaxY "
    "CameraMaxZ CameraMaxDistance KeyMoveForward KeyMoveBack KeyMoveLeft KeyMoveRight KeyMoveUp KeyMoveDown "
    "KeyRotateXCCW KeyRotateXCW KeyRotateYCCW KeyRotateYCW KeyRotateZCCW KeyRotateZCW KeyEncircleXCCW KeyEncircleXCW "
    "KeyEncircleYCCW KeyEncircleYCW KeyEncircleZCCW KeyEncircleZCW KeyZoomIn KeyZoomOut ";
const std::string WriterKeys =
    "Accumulate CoolMode RenderOverlay CenterNavigation MouseNavigationMode MouseNavigationMethod KeyNavigationMethod "
    "NavControlPrimary NavControlGlide NavControlAdvance NavControlPrimaryMode NavControlGlideMode "
    "NavControlAdvanceMode NavMouseSensitivity NavMouseX NavMouseY NavMouseShiftX NavMouseShiftY NavMouseCtrlX "
    "NavMouseCtrlY NavMouseShiftCtrlX NavMouseShiftCtrlY ProjectionType ShadeMode FillMode LightMode RenderMode "
    "TextureQuality WaitForVSYNC ConstrainX ConstrainY ConstrainZ BackgroundTexture BackgroundTextureStretch "
    "BackClippingPlane FrontClippingPlane FieldOfView BackColor BorderStyle MouseIcon MousePointer Enabled CullMethod ";
const std::string SaveHead =
    "MouseNavigationMode MouseNavigationMethod KeyNavigationMethod NavControlPrimary NavControlGlide "
    "NavControlAdvance NavControlPrimaryMode NavControlGlideMode NavControlAdvanceMode NavMouseSensitivity AntiAlias "
    "NavMouseX NavMouseY NavMouseShiftX NavMouseShiftY NavMouseCtrlX NavMouseCtrlY NavMouseShiftCtrlX "
    "NavMouseShiftCtrlY ProjectionType ShadeMode FillMode LightMode RenderMode ExposeDDSurface Accumulate CoolMode "
    "RenderOverlay CenterNavigation TextureQuality WaitForVSYNC ConstrainX ConstrainY ConstrainZ BackgroundTexture "
    "BackgroundTextureStretch BackClippingPlane FrontClippingPlane FieldOfView BackColor BorderStyle MouseIcon "
    "MousePointer Enabled Direct3DDevice CullMethod ";

class ObservedBag : public MemoryPropertyBag
{
public:
    Variant ReadProperty(std::string_view name, const Variant& defaultValue) override
    {
        asked.emplace_back(name);
        return MemoryPropertyBag::ReadProperty(name, defaultValue);
    }

    std::vector<std::string> asked;
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
    EXPECT_THAT(bag.asked, ElementsAreArray(Words(DeviceKeys + WriterKeys + LimitKeys)));
    EXPECT_THAT(host->PropertyChanges(), ElementsAreArray(Words(WriterKeys + LimitKeys)))
        << "the device's own keys are stored without a word";
}

TEST(Load, starts_the_device_between_the_keys_it_needs_and_the_ones_that_reach_it)
{
    headless::HostedViewport hosted{MakeHost()};
    auto bag = BagOfOtherValues();
    std::vector<std::string> calls = CallsOf([&] { hosted.Control().Load(bag); });
    std::erase_if(calls, [](const std::string& call)
                  { return call != "PropertyBag.ReadProperty" && !call.starts_with("RetainedMode.CreateDevice"); });
    ASSERT_GT(calls.size(), 4U);
    EXPECT_NE(calls[3], "PropertyBag.ReadProperty") << "after the three keys of the device";
    EXPECT_EQ(calls[4], "PropertyBag.ReadProperty") << "one device is made";
}

TEST(Save, writes_in_its_own_order)
{
    auto other = BagOfOtherValues();
    MemoryPropertyBag saved;
    headless::HostedViewport::AtDesignTime(MakeHost(), other)->Control().Save(saved);
    std::vector<std::string> written;
    for (const auto& [name, value] : saved.Entries())
        written.push_back(name);
    EXPECT_THAT(written, ElementsAreArray(Words(SaveHead + LimitKeys)));
}

TEST(Initialise, tells_in_save_order_but_for_anti_aliasing_and_shows_the_container_s_picture_last)
{
    const auto host = MakeHost();
    headless::HostedViewport hosted{host};
    EXPECT_EQ(CallsOf([&] { hosted.Control().Initialise(); }).back(), "Container.LateBoundMember");
    auto expected = Words(SaveHead + LimitKeys);
    std::erase(expected, "AntiAlias");
    std::erase(expected, "Direct3DDevice");
    expected.insert(std::ranges::find(expected, "ProjectionType"), "AntiAlias");
    EXPECT_THAT(host->PropertyChanges(), ElementsAreArray(expected));
    EXPECT_FALSE(hosted.Control().Camera()) << "only a load starts the device";
}

// With one platform call after the other failing for good, values are lost only where the call itself kept them.
TEST(Load, stores_every_value_whatever_call_fails_in_its_middle)
{
    auto bag = BagOfOtherValues();
    bag.Set("AntiAlias", std::int32_t{1});
    headless::HostedViewport undisturbed{MakeHost(20, 20)};
    const auto calls = CallsOf([&] { undisturbed.Control().Load(bag); });
    ASSERT_GT(calls.size(), 200U);
    for (std::size_t i = 0; i < calls.size(); ++i)
    {
        headless::HostedViewport hosted{MakeHost(20, 20)};
        faults::FailCall(static_cast<std::int64_t>(i), error::OutOfMemory);
        ASSERT_NO_THROW(hosted.Control().Load(bag));
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
