// Events by number: handlers that change arguments, call back, fail, come and go.
#include "Session.h"

#include <gmock/gmock.h>

namespace lumora::test
{

constexpr std::int32_t CameraMoved = 1;

TEST(Events, have_the_numbers_and_arguments_of_the_control)
{
    const Session session;
    std::vector<std::string> shown;
    std::int32_t next = 1;
    for (const MemberInfo& event : session.viewport->Events())
    {
        EXPECT_EQ(event.id, next++);
        shown.push_back(event.name + "/" + std::to_string(event.arguments.size()));
        for (const ArgumentInfo& argument : event.arguments)
            EXPECT_TRUE(argument.byReference) << event.name;
    }
    EXPECT_THAT(shown, testing::ElementsAre("CameraMoved/9", "Click/0", "DblClick/0", "MouseDown/4", "MouseUp/4",
                                            "MouseMove/4", "KeyDown/2", "KeyPress/1", "KeyUp/2", "DDSurfaceAvailable/0",
                                            "AntiAliasSurfaceAvailable/0", "Collision/2", "UpdatePositions/0",
                                            "BeginNavigating/1", "EndNavigating/0"));
}

TEST(Events, a_changed_argument_reaches_the_next_handler_and_the_control)
{
    const Session session;
    float seen = 0;
    session.viewport->Connect(std::make_shared<Listener>(
        [](std::int32_t id, std::span<Variant> arguments)
        {
            if (id == CameraMoved)
                arguments[0] = std::string{"42"};
        }));
    session.viewport->Connect(std::make_shared<Listener>(
        [&](std::int32_t id, std::span<Variant> arguments)
        {
            if (id == CameraMoved)
                seen = VariantToSingle(arguments[0]);
        }));
    session.viewport->CallWith("AddCameraMovement", {0, 0, 1, 1});
    EXPECT_EQ(seen, 42.0F);
    std::vector<Variant> place(3);
    session.viewport->Call("GetCameraPosition", place);
    EXPECT_EQ(place[0], Variant{42.0F}); // the stored value; the camera itself stands at 0
    std::vector<Variant> really(4);
    AsDispatchable(session.viewport->Get("Camera"))->Call("GetPosition", really);
    EXPECT_EQ(really[1], Variant{0.0F});
}

TEST(Events, a_failing_handler_and_a_value_of_another_type_fail_the_call_that_raised_the_event)
{
    const Session session;
    session.viewport->Connect(std::make_shared<Listener>(
        [failing = true](std::int32_t, std::span<Variant> arguments) mutable
        {
            if (std::exchange(failing, false))
                throw RuntimeError{1234, "Host", "no more of this"};
            arguments[0] = std::string{"somewhere"};
        }));
    const auto failureOfMoving = [&] {
        return ErrorOf([&] { session.viewport->CallWith("AddCameraMovement", {0, 0, 1, 1}); }).value();
    };
    EXPECT_EQ(failureOfMoving().Description(), "no more of this");
    EXPECT_EQ(failureOfMoving().Number(), error::TypeMismatch);
}

TEST(Events, sinks_hear_the_load_and_stay_while_the_form_carries_the_control)
{
    HostFace host;
    std::vector<std::int32_t> heard;
    AsDispatchable(host.Call("CreateControl"))
        ->Connect(std::make_shared<Listener>([&](std::int32_t id, auto) { heard.push_back(id); }));
    host.CallWith("Load", {Variant{}});
    EXPECT_THAT(heard, testing::Contains(CameraMoved)); // the camera is placed
}

} // namespace lumora::test
