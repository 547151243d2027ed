// Events by number: handlers that change arguments, call back, fail, come and go.
#include "Session.h"

#include <gmock/gmock.h>

namespace lumora::test
{

namespace
{

constexpr std::int32_t CameraMoved = 1;
constexpr std::int32_t UpdatePositions = 13;

} // namespace

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
    const auto camera = AsDispatchable(session.viewport->Get("Camera"));
    std::vector<Variant> really{Variant{}, 0, 0, 0};
    camera->Call("GetPosition", really);
    EXPECT_EQ(really[1], Variant{0.0F});
}

TEST(Events, a_failing_handler_fails_the_call_that_raised_the_event)
{
    const Session session;
    session.viewport->Connect(std::make_shared<Listener>(
        [](std::int32_t, auto) {
            throw RuntimeError{1234, "Host", "no more of this"};
        }));
    const auto failure = ErrorOf([&] { session.viewport->CallWith("AddCameraMovement", {0, 0, 1, 1}); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->Number(), 1234);
    EXPECT_EQ(failure->Description(), "no more of this");
}

TEST(Events, a_value_of_another_type_is_refused_like_a_failure)
{
    const Session session;
    session.viewport->Connect(std::make_shared<Listener>([](std::int32_t, std::span<Variant> arguments)
                                                         { arguments[0] = std::string{"somewhere"}; }));
    EXPECT_EQ(NumberOf([&] { session.viewport->CallWith("AddCameraMovement", {0, 0, 1, 1}); }), error::TypeMismatch);
}

TEST(Events, sinks_stay_while_the_form_carries_the_control)
{
    Session session;
    int heard = 0;
    session.viewport->Connect(std::make_shared<Listener>([&](std::int32_t, auto) { ++heard; }));
    session.viewport.reset();
    session.host->Call("Click");
    session.viewport = AsDispatchable(session.host->Get("Viewport"));
    session.viewport->CallWith("AddCameraMovement", {0, 0, 1, 1});
    EXPECT_GE(heard, 1);
}

} // namespace lumora::test
