// What writers do beyond storing: which calls reach the platform, in which order, and whose errors come back.
#include "platform/scenegraph/SceneDoubles.h"
#include "properties/PropertyValues.h"
#include "viewport/LiveControl.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <limits>

using namespace lumora;
using namespace lumora::test;
using ::testing::Contains;
using ::testing::IsEmpty;
using ::testing::Not;

namespace
{

// A control whose driver remembers what it was told.
class RecordedControl
{
public:
    RecordedControl()
    {
        auto list = std::make_shared<const DriverList>(
            std::vector<DriverList::Entry>{{drivername::RGB, Guid{1, 0, 0, {}}, "recorder", "",
                                            [this] { return std::make_unique<RecordingDriver>(log_); }}});
        host_ = std::make_shared<headless::HeadlessHost>(list, nullptr, PixelRect{0, 0, 40, 40});
        auto bag = UsualSettings();
        hosted_ = headless::HostedViewport::Live(host_, bag);
        const auto scene = Frame::Make();
        scene->AddVisual(Square(0, 0, 10, 2, 0xFFFF0000));
        hosted_->Control().SetScene(scene);
    }

    Viewport* operator->() { return &hosted_->Control(); }

    /// The first pass of a new picture that draws something.
    DriverLog::Drawn Draw()
    {
        log_.passes.clear();
        hosted_->Control().RenderScene();
        for (const DriverLog::Drawn& pass : log_.passes)
            if (!pass.items.empty())
                return pass;
        ADD_FAILURE() << "nothing was drawn";
        return {};
    }

private:
    DriverLog log_;
    std::shared_ptr<headless::HeadlessHost> host_;
    std::unique_ptr<headless::HostedViewport> hosted_;
};

TEST(Writers, render_modes_reach_the_device_as_given_but_sorted_also_shows_highlights_from_the_camera)
{
    RecordedControl control;
    using enum Transparency;
    // Bit 1 is blended, bit 2 sorts what is blended, bit 16 is the highlights; only 3 becomes 19.
    for (const auto& [mode, transparency, viewDependentSpecular] : {std::tuple{3, Sorted, true},
                                                                    {2, Stippled, false},
                                                                    {1, Blended, false},
                                                                    {7, Sorted, false},
                                                                    {17, Blended, true}})
    {
        control->SetRenderMode(static_cast<tdlRenderMode>(mode));
        EXPECT_EQ(control->RenderMode(), mode);
        const PassState pass = control.Draw().pass;
        EXPECT_EQ(pass.transparency, transparency) << mode;
        EXPECT_EQ(pass.viewDependentSpecular, viewDependentSpecular) << mode;
    }
}

TEST(Writers, shade_fill_and_light_join_into_one_quality_and_culling_and_filter_reach_the_pass)
{
    RecordedControl control;
    const auto expect = [&](FillStyle fill, bool gouraud, bool lit)
    {
        const DrawItem item = control.Draw().items.front();
        EXPECT_EQ(std::tuple(item.fill, item.gouraud, item.lit), std::tuple(fill, gouraud, lit));
    };
    control->SetFillMode(D3DRMFILL_WIREFRAME);
    expect(FillStyle::Wireframe, true, true);
    control->SetShadeMode(D3DRMSHADE_FLAT);
    expect(FillStyle::Wireframe, false, true);
    control->SetLightMode(D3DRMLIGHT_OFF);
    expect(FillStyle::Wireframe, false, false);
    control->SetShadeMode(D3DRMSHADE_PHONG);
    control->SetFillMode(D3DRMFILL_POINTS);
    expect(FillStyle::Points, true, false);
    control->SetCullMethod(D3DCULL_CW);
    control->SetTextureQuality(D3DRMTEXTURE_NEAREST);
    const PassState pass = control.Draw().pass;
    EXPECT_EQ(pass.cull, CullMode::Clockwise);
    EXPECT_EQ(pass.filter, TextureFilter::Nearest);
}

// Dividing towards zero; a remainder has the sign of what is divided.
TEST(Writers, back_colors_are_taken_apart_without_a_look_at_their_sign)
{
    LiveControl control;
    constexpr std::int32_t SystemColor5 = std::numeric_limits<std::int32_t>::min() + 5; // is not looked up
    for (const auto& [color, red, green, blue] :
         {std::tuple{0x030201, 1.0, 2.0, 3.0}, {SystemColor5, -251.0, -255.0, -32767.0}})
    {
        control->SetBackColor(color);
        const auto share = [](double part) { return static_cast<float>(part / 255); };
        EXPECT_EQ(control->Scene()->Scene().backgroundColor, (Vector{share(red), share(green), share(blue)})) << color;
    }
}

TEST(Writers, a_new_scene_takes_the_camera_from_the_old_one_first_and_where_it_stood)
{
    LiveControl control;
    const auto first = Frame::Make();
    const auto second = Frame::Make();
    control->SetScene(first);
    control->SetCameraPosition(1, 2, 3);
    const auto calls = CallsOf([&] { control->SetScene(second); });
    EXPECT_LT(std::ranges::find(calls, "Frame.DeleteChild"), std::ranges::find(calls, "Frame.AddChild"));
    EXPECT_THAT(first->Children(), IsEmpty());
    EXPECT_EQ(control->Camera()->GetPosition(second), (Vector{1, 2, 3}));
    control->SetScene(second); // again: it holds the camera and is not held by it
    for (const auto& bad : {control->Camera(), Frame::Make(control->Camera())})
    {
        EXPECT_EQ(FailureOf([&] { control->SetScene(bad); }).Number(), error::RMBadValue);
        EXPECT_EQ(control->Scene(), second);
        EXPECT_EQ(control->Camera()->Parent(), second);
    }
    control.Host().FailNext("Frame.AddChild", 1, error::OutOfMemory);
    FailureOf([&] { control->SetScene(first); });
    EXPECT_EQ(control->Scene(), second) << "one that does not take the camera is not taken";
    EXPECT_EQ(control->Camera()->Parent(), second);

    control->SetScene(nullptr);
    EXPECT_FALSE(control->Scene());
    EXPECT_FALSE(control->Camera()->Parent());
    EXPECT_EQ(control.Host().PropertyChanges().back(), "Scene");
    EXPECT_EQ(second.use_count(), 1);
}

TEST(Writers, enabling_draws_a_picture_before_the_container_is_told_and_a_disabled_control_raises_nothing)
{
    LiveControl control;
    std::vector<std::string> toldAtPictures;
    control->UpdatePositions.Connect([&] { toldAtPictures.push_back(control.Host().PropertyChanges().back()); });
    control->SetEnabled(false);
    control->RenderScene();
    control->RenderSceneCorrectTranslucency();
    EXPECT_THAT(toldAtPictures, IsEmpty());
    EXPECT_FALSE(control.Host().ControlArea().Enabled());
    control->SetCoolMode(0);
    control->SetEnabled(true);
    EXPECT_THAT(toldAtPictures, testing::ElementsAre("CoolMode"));
    EXPECT_EQ(control.Host().PropertyChanges().back(), "Enabled");
    control->SetScene(nullptr);
    control->RenderScene();
    EXPECT_EQ(toldAtPictures.size(), 2U) << "the event, without a scene";
}

TEST(Writers, exposing_takes_effect_through_a_new_device_while_live)
{
    LiveControl control;
    control.Host().FailNext("RetainedMode.CreateDeviceFromSurface", 100, error::OutOfMemory);
    control.Host().FailNext("RetainedMode.CreateDeviceFromClipper", 100, error::OutOfMemory);
    control.Host().FailNext("ControlWindow.ScaleWidth", 1, error::OutOfMemory);
    EXPECT_EQ(FailureOf([&] { control->SetExposeDDSurface(true); }).Source(), "Viewport");
    EXPECT_THAT(control.Host().PropertyChanges(), Not(Contains("ExposeDDSurface"))) << "no device was asked for";
    faults::Clear();
    control->RenderScene();
    EXPECT_TRUE(control->DirectDrawSurface()) << "the wish was kept for the next picture";
}

TEST(Writers, the_field_rebuilds_the_navigation_controls_in_orthographic_projection_alone)
{
    LiveControl control;
    const auto framesMade = [&]
    { return std::ranges::count(CallsOf([&] { control->SetFieldOfView(0.4F); }), "RetainedMode.CreateFrame"); };
    int moves = 0;
    control->CameraMoved.Connect([&](auto&...) { ++moves; });
    control->SetProjectionType(D3DRMPROJECT_PERSPECTIVE);
    EXPECT_EQ(framesMade(), 0);
    EXPECT_EQ(moves, 1);
    control->SetProjectionType(D3DRMPROJECT_ORTHOGRAPHIC);
    EXPECT_GT(framesMade(), 0);
    EXPECT_EQ(moves, 2);
}

TEST(Writers, window_attributes_that_do_not_fit_or_are_refused_are_not_shown)
{
    LiveControl control;
    control->SetHighlightPointer(9);
    EXPECT_EQ(control->MousePointer(), 9) << "what the window shows";
    control->SetMousePointer(5);
    EXPECT_EQ(control->HighlightPointer(), 5);
    control->SetHighlightPointer(9);
    control.Host().MoveMouseTo(201, 249); // beside the controls: one answer lasts one move
    control.Host().MoveMouseTo(202, 249);
    EXPECT_EQ(control->MousePointer(), 5);
    EXPECT_EQ(FailureOf([&] { control->SetMousePointer(77); }).Number(), error::InvalidPropertyValue);
    EXPECT_EQ(FailureOf([&] { control->SetBorderStyle(static_cast<tdlBorderStyle>(40000)); }).Number(),
              error::Overflow);
    EXPECT_EQ(control->BorderStyle(), tdlBSNone);
    for (const std::int32_t value : {40000, -40000})
    {
        EXPECT_EQ(FailureOf([&] { control->SetMousePointer(value); }).Number(), error::Overflow);
        EXPECT_EQ(FailureOf([&] { control->SetHighlightPointer(value); }).Number(), error::Overflow);
        EXPECT_EQ(control->MousePointer(), 5);
    }
    control.Host().ControlArea().SetHandle(-32768);
    EXPECT_EQ(control->hwnd(), -32768);
    control.Host().ControlArea().SetHandle(-32769);
    EXPECT_EQ(FailureOf([&] { control->hwnd(); }).Number(), error::Overflow);
}

TEST(Writers, errors_of_trapped_writers_come_from_the_control_and_others_from_who_raised_them)
{
    using Row = std::tuple<const char*, Variant, const char*, bool>;
    const auto number = [](std::int32_t value) { return Variant{value}; };
    for (const auto& [name, value, operation, trapped] :
         {Row{"BackColor", number(1), "ControlWindow.SetBackColor", true},
          Row{"ProjectionType", number(1), "RMViewport.SetProjection", true},
          Row{"TextureQuality", number(0), "Device.SetTextureQuality", true},
          Row{"ShadeMode", number(0), "Device.SetQuality", true},
          Row{"FillMode", number(64), "Device.SetQuality", true},
          Row{"LightMode", number(0), "Device.SetQuality", true},
          Row{"RenderMode", number(1), "Device.SetRenderMode", true},
          Row{"BackClippingPlane", number(9), "RMViewport.SetBack", true},
          Row{"FrontClippingPlane", number(2), "RMViewport.SetFront", true},
          Row{"FieldOfView", number(2), "RMViewport.SetField", true},
          Row{"NavControlGlide", Variant{true}, "RetainedMode.CreateFrame", true},
          Row{"WaitForVSYNC", Variant{true}, "Container.PropertyChanged", true},
          Row{"ConstrainX", Variant{true}, "Container.PropertyChanged", true},
          Row{"CullMethod", number(2), "ImmediateDevice.SetRenderState", false},
          Row{"Accumulate", Variant{true}, "RMViewport.Clear", false},
          Row{"BorderStyle", number(1), "ControlWindow.SetBorderStyle", false},
          Row{"MousePointer", number(1), "ControlWindow.SetMousePointer", false},
          Row{"AntiAlias", number(2), "Container.PropertyChanged", false},
          Row{"CoolMode", number(1), "Container.PropertyChanged", false}})
    {
        const PropertyRow& property = *FindProperty(name);
        {
            LiveControl control;
            control.Host().FailNext(operation, 1, error::OutOfMemory);
            const RuntimeError failure = FailureOf([&] { property.write(control.Control(), value); });
            EXPECT_EQ(failure.Number(), error::OutOfMemory) << name;
            EXPECT_EQ(failure.Source() == "Viewport", trapped) << name << ": " << failure.Source();
            const bool kept = !std::string_view{operation}.starts_with("ControlWindow");
            EXPECT_EQ(VariantsEqual(property.read(control.Control()), value), kept) << name;
        }
        // A transient error is worth a second attempt to a trap alone.
        LiveControl control;
        control.Host().FailNext(operation, 1, error::RMBadDevice);
        if (trapped)
            EXPECT_NO_THROW(property.write(control.Control(), value)) << name;
        else
            EXPECT_EQ(FailureOf([&] { property.write(control.Control(), value); }).Number(), error::RMBadDevice);
    }
}

TEST(Writers, a_halted_control_stores_and_tells_and_touches_nothing)
{
    LiveControl control;
    control->Terminate();
    for (const PropertyRow& row : PropertyTable())
    {
        if (row.write == nullptr || row.type == PropertyType::Object)
            continue;
        const auto calls = CallsOf([&] { row.write(control.Control(), AnotherValue(row)); });
        for (const std::string& call : calls)
            EXPECT_TRUE(call.starts_with("Container.") || call.starts_with("ControlWindow."))
                << row.name << ": " << call;
        const bool ignored = row.name == "NavMouseButton";
        EXPECT_TRUE(VariantsEqual(row.read(control.Control()), ignored ? row.defaultValue : AnotherValue(row)))
            << row.name;
    }
    const auto told = control.Host().PropertyChanges().size();
    control->SetScene(Frame::Make());
    EXPECT_FALSE(control->Scene());
    EXPECT_EQ(control.Host().PropertyChanges().size(), told);
}

} // namespace
