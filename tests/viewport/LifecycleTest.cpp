// Birth, life and halt of a control, as its container sees them.
#include "base/Faults.h"
#include "viewport/LiveControl.h"

#include <gmock/gmock.h>

using namespace lumora;
using namespace lumora::test;
using ::testing::Contains;

namespace
{

constexpr const char* HaltText =
    "Unable to Configure DirectX. Please ensure that the most recent version of DirectX is "
    "installed, and that your Video Card drivers are up to date.";

void ExpectHaltError(const std::function<void()>& call)
{
    const RuntimeError failure = FailureOf(call);
    EXPECT_EQ(failure.Number(), -2147221503);
    EXPECT_EQ(failure.Source(), "vptVantixViewport");
    EXPECT_EQ(failure.Description(), HaltText);
}

TEST(Lifecycle, a_control_in_a_designer_or_only_initialised_creates_nothing_and_stores_what_is_written)
{
    for (const bool designed : {true, false})
    {
        const auto host = MakeHost();
        host->SetUserMode(!designed);
        headless::HostedViewport hosted{host};
        Viewport& control = hosted.Control();
        auto bag = UsualSettings();
        designed ? control.Load(bag) : control.Initialise();
        if (designed)
            control.SetScene(Frame::Make()); // ignored there
        control.SetFieldOfView(0.3F);
        control.SetEnabled(true);
        control.SetExposeDDSurface(true);
        control.RenderScene();
        host->PaintNow();
        EXPECT_EQ(control.ViewportState(), tdlRunning);
        EXPECT_FALSE(control.Scene());
        EXPECT_FALSE(control.Camera());
        EXPECT_FALSE(control.DirectDraw());
        EXPECT_THAT(host->PropertyChanges(), testing::Not(Contains("Scene")));
        EXPECT_EQ(control.FieldOfView(), 0.3F);
        EXPECT_TRUE(control.ExposeDDSurface());
    }
}

TEST(Lifecycle, the_container_s_own_word_on_user_mode_wins_over_the_ambient_one)
{
    for (const auto& [ambient, own, live] :
         {std::tuple{true, Variant{false}, false}, std::tuple{false, Variant{std::int32_t{7}}, true},
          std::tuple{true, Variant{std::string{"neither"}}, true}})
    {
        const auto host = MakeHost();
        host->SetUserMode(ambient);
        host->SetLateBoundMember("blnRealUserMode", own);
        headless::HostedViewport hosted{host};
        MemoryPropertyBag bag;
        hosted.Control().Load(bag);
        EXPECT_EQ(hosted.Control().Camera() != nullptr, live);
    }
    // A container that does not answer is a designer; it is not asked twice.
    LiveControl control;
    control.Host().FailNext("Container.UserMode", 1, error::RMBadDevice);
    control->SetScene(Frame::Make());
    EXPECT_THAT(control.Host().PropertyChanges(), testing::Not(Contains("Scene")));
    EXPECT_EQ(control.Host().Logged().size(), 1U);
}

TEST(Lifecycle, a_designer_s_picture_shows_until_the_control_runs)
{
    const auto picture = std::make_shared<Picture>(std::make_shared<Bitmap>(4, 4));
    for (const bool live : {false, true})
    {
        const auto host = MakeHost();
        host->SetLateBoundMember("Graphic", ObjectReference{picture});
        auto bag = UsualSettings();
        const auto hosted =
            live ? headless::HostedViewport::Live(host, bag) : headless::HostedViewport::AtDesignTime(host, bag);
        EXPECT_EQ(host->ControlArea().GetPicture(), live ? nullptr : picture);
    }
}

TEST(Lifecycle, termination_releases_everything_and_later_calls_raise_the_halt_error)
{
    LiveControl control;
    const auto scene = Frame::Make();
    control->SetScene(scene);
    std::weak_ptr<Frame> camera = control->Camera();
    control->Terminate();

    EXPECT_EQ(control->ViewportState(), tdlHalted);
    EXPECT_FALSE(control->Scene());
    EXPECT_FALSE(control->Camera());
    EXPECT_FALSE(control->DirectDraw());
    EXPECT_TRUE(scene->Children().empty()) << "the camera stayed in the host's scene";
    EXPECT_TRUE(camera.expired());
    EXPECT_EQ(scene.use_count(), 1);

    float out = 0;
    ExpectHaltError([&] { control->RenderScene(); });
    ExpectHaltError([&] { control->SetCameraPosition(1, 2, 3); });
    ExpectHaltError([&] { control->AddCameraZoom(0.1F); });
    ExpectHaltError([&] { control->LookAt(scene, D3DRMCONSTRAIN_Z); });
    ExpectHaltError([&] { control->InitializeCameraPositionAndOrientation(tdlTopView); });
    ExpectHaltError([&] { control->SetCameraVelocity(1, 0, 0, tdlGlide); });
    ExpectHaltError([&] { control->ViewportTransform(0, 0, 0, out, out, out, out); });
    control->SetFieldOfView(0.7F);
    EXPECT_EQ(control->FieldOfView(), 0.7F) << "properties are still stored";
}

TEST(Lifecycle, a_handler_that_throws_in_a_window_event_halts_but_in_a_method_reaches_the_caller)
{
    LiveControl control;
    control->UpdatePositions.Connect([] { throw RuntimeError{1234, "host", "the host's own trouble"}; });
    const RuntimeError failure = FailureOf([&] { control->RenderScene(); });
    EXPECT_EQ(failure.Number(), 1234);
    EXPECT_EQ(failure.Source(), "Viewport");
    EXPECT_EQ(failure.Description(), "the host's own trouble");
    EXPECT_EQ(control->ViewportState(), tdlRunning);
    control.Host().PaintNow();
    control.Host().PaintNow();
    EXPECT_EQ(control->ViewportState(), tdlHalted);
    EXPECT_EQ(
        control.Host().Logged(),
        std::vector<std::string>{"The control halted in Paint: the host's own trouble (error 1234 from Viewport)"});
}

TEST(Lifecycle, a_handler_that_halts_in_the_middle_of_a_call_ends_it_with_the_halt_error)
{
    using Call = void (*)(Viewport&);
    const auto haltIn = [](auto event, Call call)
    {
        LiveControl control{ExposedSettings(tdl2X)};
        const auto scene = AmbientScene(1);
        scene->AddVisual(Square(0, 0, 10, 20, 0));
        control->SetScene(scene);
        control->SetCollisionDetection(true);
        control->SetCollisionSamples(3);
        (control.Control().*event).Connect([&](auto&...) { control->Terminate(); });
        call(control.Control());
    };
    const Call draw = [](Viewport& control) { control.RenderScene(); };
    const Call rebuild = [](Viewport& control)
    {
        control.OnResize();
        control.RenderScene();
    };
    const Call move = [](Viewport& control) { control.AddCameraMovement({0, 0, 20}, tdlAdvance); };
    const Call view = [](Viewport& control) { control.InitializeCameraPositionAndOrientation(tdlTopView); };
    ExpectHaltError([&] { haltIn(&Viewport::UpdatePositions, draw); });
    ExpectHaltError([&] { haltIn(&Viewport::CameraMoved, rebuild); });
    ExpectHaltError([&] { haltIn(&Viewport::DDSurfaceAvailable, draw); });
    ExpectHaltError([&] { haltIn(&Viewport::AntiAliasSurfaceAvailable, draw); });
    ExpectHaltError([&] { haltIn(&Viewport::Collision, move); });
    ExpectHaltError([&] { haltIn(&Viewport::CameraMoved, view); });
    haltIn(&Viewport::CameraMoved,
           [](Viewport& control) { control.SetExposeDDSurface(false); }); // a writer raises none
}

TEST(Lifecycle, a_failing_release_does_not_stop_the_halt)
{
    LiveControl control;
    control.Host().FailNext("Frame.DeleteChild", 100, error::ObjectNotSet);
    control->Terminate();
    EXPECT_EQ(control->ViewportState(), tdlHalted);
    EXPECT_FALSE(control->DirectDraw());
}

TEST(Lifecycle, an_exhausted_error_is_not_tried_again_further_up)
{
    LiveControl control;
    int attempts = 0;
    control->CameraMoved.Connect(
        [&](auto&...)
        {
            ++attempts;
            throw RuntimeError{error::Overflow, "host", "Overflow"};
        });
    // The event is raised three procedures deep; each has a trap of its own.
    EXPECT_EQ(FailureOf([&] { control->AddCameraZoom(0.1F); }).Number(), error::Overflow);
    EXPECT_EQ(attempts, 1 + MaximumRetries);
}

TEST(Lifecycle, an_unusable_stored_value_takes_its_default_and_a_refused_one_halts_and_both_are_logged)
{
    const auto host = MakeHost();
    auto bag = UsualSettings();
    bag.Set("FieldOfView", std::string{"wide"});
    bag.Set("KeyZoomIn", 1e12);
    bag.Set("FrontClippingPlane", -1.0F); // fits its property; the platform refuses it
    const auto hosted = headless::HostedViewport::Live(host, bag);
    EXPECT_EQ(hosted->Control().ViewportState(), tdlHalted);
    EXPECT_EQ(hosted->Control().FieldOfView(), 0.5F);
    EXPECT_EQ(hosted->Control().KeyZoomIn(), 0);
    using testing::HasSubstr;
    EXPECT_THAT(host->Logged(), testing::UnorderedElementsAre(HasSubstr("halted in Load of FrontClippingPlane: "),
                                                              HasSubstr("value of FieldOfView was replaced"),
                                                              HasSubstr("value of KeyZoomIn was replaced")));
}

// The whole life of a control with each platform call in turn failing once: by a transient number nothing may change,
// by any other the control must end usable or halted, never in between.
class Session
{
public:
    Session() : scene_(AmbientScene(1)) { scene_->AddVisual(Square(0, 0, 10, 2, 0xFFFF0000)); }

    void Run()
    {
        auto bag = ExposedSettings(tdl2X);
        hosted_ = std::make_unique<headless::HostedViewport>(MakeHost());
        Viewport& control = hosted_->Control();
        EXPECT_NO_THROW(control.Load(bag)) << "no error reaches a container";
        control.SetScene(scene_);
        control.SetBackColor(0x400000);
        control.AddCameraMovement({0.5F, 0, 0}, tdlGlide);
        control.AddCameraRotation(0, 0.1F, 0, 0, 0, 10, tdlGlide);
        hosted_->Host().ResizeWindow(60, 60);
        control.SetProjectionType(D3DRMPROJECT_PERSPECTIVE);
        control.RenderScene();
    }

    std::vector<std::uint32_t> Picture() { return PictureOf(*hosted_); }

    /// Nothing when not even the object came into being.
    headless::HostedViewport* Hosted() { return hosted_.get(); }

private:
    std::unique_ptr<headless::HostedViewport> hosted_;
    std::shared_ptr<Frame> scene_;
};

TEST(Lifecycle, a_transient_failure_of_any_single_platform_call_leaves_no_trace)
{
    Session undisturbed;
    faults::Record();
    undisturbed.Run();
    const auto calls = faults::Recorded();
    faults::Clear();
    const auto expected = undisturbed.Picture();
    ASSERT_GT(calls.size(), 100U);
    for (std::size_t i = 0; i < calls.size(); ++i)
    {
        // What is asked with errors ignored is not retried: it answers by itself.
        if (calls[i] == "Container.LateBoundMember" || calls[i] == "Container.UserMode" ||
            calls[i].starts_with("RetainedMode.CreateDevice") || calls[i] == "DirectDraw.CreateSurface" ||
            calls[i] == "Surface.SetClipper" || calls[i] == "Clipper.SetHWnd")
            continue;
        SCOPED_TRACE(testing::Message() << "call " << i << ", " << calls[i]);
        Session session;
        faults::FailCall(static_cast<std::int64_t>(i), error::RMBadDevice);
        ASSERT_NO_THROW(session.Run());
        faults::Clear();
        EXPECT_EQ(session.Picture(), expected);
    }
}

TEST(Lifecycle, a_lasting_failure_of_any_single_platform_call_leaves_a_control_that_runs_or_has_halted)
{
    Session undisturbed;
    faults::Record();
    undisturbed.Run();
    const auto count = faults::Recorded().size();
    faults::Clear();
    for (std::size_t i = 0; i < count; ++i)
    {
        Session session;
        faults::FailCall(static_cast<std::int64_t>(i), error::OutOfMemory);
        try
        {
            session.Run();
        }
        catch (const RuntimeError& failure)
        {
            // Its own number, what it led to, or an averaged surface that could not be had.
            EXPECT_THAT(failure.Number(),
                        testing::AnyOf(error::OutOfMemory, error::Halted, error::NoDevice, error::ObjectNotSet))
                << "call " << i << ": " << failure.Number() << " " << failure.Description();
        }
        faults::Clear();
        if (!session.Hosted())
            continue;
        Viewport& control = session.Hosted()->Control();
        if (control.ViewportState() == tdlHalted || !control.Camera()) // the latter: taken for one in a designer
        {
            EXPECT_FALSE(control.Camera());
            continue;
        }
        control.OnResize();
        control.RenderScene();
        EXPECT_EQ(control.Camera()->Parent(), control.Scene()) << "call " << i;
    }
}

} // namespace
