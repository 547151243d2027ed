// Members by name and number: what can be reached, what is refused and how, what is written back.
#include "Session.h"
#include "automation/Classes.h"

#include <gmock/gmock.h>
#include <set>

namespace lumora::test
{

using namespace invoke;

TEST(Members, have_the_number_of_their_place_and_names_of_any_case)
{
    const Session session;
    EXPECT_EQ(session.viewport->IdOf("Direct3DDevice"), 0x68030000 + 96);
    EXPECT_EQ(session.viewport->IdOf("HWND"), 0x68030000);
    EXPECT_EQ(session.viewport->IdOf("renderscene"), session.viewport->IdOf("RenderScene"));
}

TEST(Members, names_and_numbers_are_unique_in_every_class)
{
    auto classes = automation::SceneClasses();
    for (const automation::CreatableClass& creatable : automation::CreatableClasses())
        classes.push_back(creatable.describe());
    for (const auto& description : classes)
    {
        std::set<std::int32_t> ids;
        for (const MemberInfo& member : description.members)
        {
            EXPECT_TRUE(ids.insert(member.id).second) << description.name << "." << member.name;
            const auto same = [&](const MemberInfo& other) { return EqualNames(other.name, member.name); };
            EXPECT_EQ(std::ranges::count_if(description.members, same), 1) << description.name << "." << member.name;
            EXPECT_FALSE(member.help.empty()) << description.name << "." << member.name;
        }
    }
}

TEST(Members, refusals_have_numbers_that_say_what_is_wrong)
{
    const Session session;
    Dispatchable* const viewport = session.viewport.get();
    Dispatchable* const scene = session.scene.get();
    Dispatchable* const host = session.host.get();
    const std::vector<Variant> one{1.0F};
    const Variant driver = host->CallWith("DriverName", {0});
    const Variant other = viewport->Get("Camera");
    const struct
    {
        const char* what;
        Dispatchable* object;
        const char* name;
        std::uint32_t kinds;
        std::vector<Variant> arguments;
        std::int32_t number;
    } rows[] = {
        {"an unknown name", viewport, "RenderScenes", Get, {}, error::MemberNotFound},
        {"no name", viewport, "", Get, {}, error::MemberNotFound},
        {"a method read like a property", viewport, "RenderScene", Get, {}, error::DispatchIdNotFound},
        {"a property called like a method", viewport, "FieldOfView", Method, {}, error::DispatchIdNotFound},
        {"a number by reference", viewport, "FieldOfView", PutReference, one, error::DispatchIdNotFound},
        {"a read-only property", viewport, "ViewportState", Put, one, error::ReadOnlyProperty},
        {"too few arguments", viewport, "AddCameraZoom", Method, {}, error::WrongArgumentCount},
        {"an argument for a reader", viewport, "FieldOfView", Get, one, error::WrongArgumentCount},
        {"a write without a value", viewport, "FieldOfView", Put, {}, error::WrongArgumentCount},
        {"a word for a number", viewport, "FieldOfView", Put, {std::string{"wide"}}, error::TypeMismatch},
        {"a very long number", viewport, "FieldOfView", Put, {std::string(100U << 20, '7')}, error::Overflow},
        {"a number for an object", viewport, "Scene", Put, one, error::TypeMismatch},
        {"another kind of object", viewport, "Scene", Put, {ObjectReference{session.factory}}, error::TypeMismatch},
        {"a number beyond 32 bits", viewport, "CoolMode", Put, {3e9}, error::Overflow},
        {"a child there is not", scene, "Child", Method, {7}, error::SubscriptOutOfRange},
        {"a constraint there is not", scene, "LookAt", Method, {other, Variant{}, 3}, error::RMBadValue},
        {"an index there is not", host, "MoveDriver", Method, {driver, 4}, error::SubscriptOutOfRange},
        {"a driver there is not", host, "MoveDriver", Method, {std::string{"x"}, 0}, error::InvalidCall},
        {"a scale mode there is not", host, "WindowScaleMode", Put, {4}, error::InvalidCall},
        {"a screen without pixels", host, "SetScreenSize", Method, {0, 600}, error::InvalidCall},
        {"pixels without an end", host, "DpiX", Put, {0}, error::InvalidCall},
        {"a pointer the window has not", host, "WindowMousePointer", Put, {20}, error::InvalidPropertyValue},
        {"a second control on a form", host, "CreateLive", Method, {Variant{}}, error::InvalidCall},
    };
    for (const auto& row : rows)
    {
        auto arguments = row.arguments;
        const auto failure = ErrorOf([&] { row.object->Invoke(row.object->IdOf(row.name), row.kinds, arguments); });
        ASSERT_TRUE(failure) << row.what;
        EXPECT_EQ(failure->Number(), row.number) << row.what;
        EXPECT_FALSE(failure->Description().empty()) << row.what;
    }
    EXPECT_EQ(NumberOf([&] { viewport->Invoke(12345, Get, {}); }), error::DispatchIdNotFound);
    EXPECT_EQ(NumberOf([&] { scene->Connect(nullptr); }), error::NoEvents);
    EXPECT_EQ(NumberOf([&] { AsDispatchable(viewport->Get("SceneOverlay")); }), error::ObjectNotSet);
}

TEST(Members, results_come_back_in_the_arguments)
{
    const Session session;
    session.viewport->CallWith("SetCameraPosition", {1, 2, 3});
    std::vector<Variant> place(3);
    session.viewport->Call("GetCameraPosition", place);
    EXPECT_THAT(place, testing::ElementsAre(Variant{1.0F}, Variant{2.0F}, Variant{3.0F}));

    std::vector<Variant> given{std::string{"4"}, 5, 6.0};
    session.viewport->Call("SetCameraPosition", given);
    EXPECT_THAT(given, testing::ElementsAre(Variant{std::string{"4"}}, Variant{5}, Variant{6.0}));

    place = {7, 8, std::string{"north"}}; // a refused call writes nothing back
    EXPECT_EQ(NumberOf([&] { session.viewport->Call("GetCameraPosition", place); }), error::TypeMismatch);
    EXPECT_THAT(place, testing::ElementsAre(Variant{7}, Variant{8}, Variant{std::string{"north"}}));
}

TEST(Members, what_an_obstacle_leaves_of_a_movement_is_written_back)
{
    const Session session;
    const auto mesh = AsDispatchable(session.factory->Call("CreateMeshBuilder"));
    mesh->CallWith("AddFaces", {std::string{"-5 -5 1 -5 5 1 5 5 1 5 -5 1"}, std::string{}, std::string{"4 0 1 2 3 0"}});
    mesh->Put("AppData", 1);
    session.scene->CallWith("AddVisual", {ObjectReference{mesh}});
    for (const auto& [name, value] :
         {std::pair{"CollisionDetection", 1.0F}, {"CollisionSamples", 1.0F}, {"FrontClippingPlane", 0.01F}})
        session.viewport->Put(name, value);
    std::vector<Variant> movement{0, 0, 5, 1};
    session.viewport->Call("AddCameraMovement", movement);
    EXPECT_LT(std::get<float>(movement[2]), 1.0F);
}

TEST(Identity, an_object_has_one_face_that_keeps_it_and_lets_go_of_it)
{
    std::weak_ptr<Frame> watched;
    {
        const Session session;
        EXPECT_EQ(session.viewport->Get("Scene"), Variant{ObjectReference{session.scene}});
        EXPECT_EQ(session.host->Get("RetainedMode"), Variant{ObjectReference{session.factory}});
        auto frame = Frame::Make();
        watched = frame;
        const auto face = automation::FaceOf(std::exchange(frame, nullptr));
        ASSERT_FALSE(watched.expired());
        EXPECT_EQ(automation::FaceOf(watched.lock()), face);
    }
    EXPECT_TRUE(watched.expired());
}

TEST(Host, plays_the_person_and_shows_what_a_person_sees)
{
    const Session session;
    session.scene->CallWith("SetSceneBackgroundRGB", {1, 0, 0});
    session.viewport->Put("Enabled", true);
    session.host->Call("PaintNow");
    EXPECT_EQ(session.host->CallWith("PixelAt", {5, 5}), Variant{0xFF0000});

    std::vector<std::int32_t> told;
    session.viewport->Connect(std::make_shared<Listener>([&](std::int32_t id, auto) { told.push_back(id); }));
    const auto inside = [&](const char* edge) { return VariantToLong(session.host->Get(edge)) + 5; };
    session.host->CallWith("MoveMouseTo", {inside("WindowLeft"), inside("WindowTop")});
    session.host->Call("Click");
    for (const auto& [name, number] :
         {std::pair{"PressButton", 2}, {"ReleaseButton", 2}, {"PressKey", 65}, {"ReleaseKey", 65}})
        session.host->CallWith(name, {number});
    EXPECT_THAT(told, testing::ElementsAre(6, 2, 4, 5, 7, 8, 9));
}

TEST(Host, window_screen_and_keyboard_are_another_machines_by_name)
{
    const Session session;
    Dispatchable& host = *session.host;
    for (const auto& [property, attribute, value] : {std::tuple{"MousePointer", "WindowMousePointer", 2},
                                                     {"BackColor", "WindowBackColor", 0x10203},
                                                     {"BorderStyle", "WindowBorderStyle", 1},
                                                     {"Enabled", "WindowEnabled", 0}})
    {
        session.viewport->Put(property, value);
        EXPECT_TRUE(VariantsEqual(host.Get(attribute), session.viewport->Get(property))) << attribute;
    }
    host.Put("WindowEnabled", true);
    const Variant first = host.CallWith("DriverName", {0});
    host.CallWith("MoveDriver", {first, 2});
    EXPECT_EQ(host.CallWith("DriverName", {2}), first);
    host.CallWith("SetScreenSize", {300, 200});
    EXPECT_EQ(host.Get("ScreenHeight"), Variant{200});
    EXPECT_EQ(host.CallWith("ScreenPixelAt", {299, 199}), Variant{0x008080});
    host.CallWith("MoveWindow", {100, 100});
    host.Put("DpiX", 120);
    std::vector<std::vector<Variant>> heard;
    session.viewport->Connect(std::make_shared<Listener>([&](std::int32_t, std::span<Variant> arguments)
                                                         { heard.emplace_back(arguments.begin(), arguments.end()); }));
    const auto one = [](int number) { return Variant{static_cast<std::int16_t>(number)}; };
    host.Put("PositionUnit", 1);
    host.CallWith("MoveMouseTo", {110, 110}); // 12 twips a pixel, and 15
    host.Put("WindowScaleMode", 3);           // of the window alone
    host.CallWith("AdvanceTime", {100});
    host.CallWith("MoveMouseTo", {111, 111});
    host.CallWith("SetKeyRepeat", {100, 50});
    host.CallWith("PressKeyWithCharacter", {38, 228});
    host.CallWith("AdvanceTime", {149});
    using Event = std::vector<Variant>;
    EXPECT_THAT(heard,
                testing::ElementsAre(Event{one(0), one(0), 120.0F, 150.0F}, Event{one(0), one(0), 132.0F, 165.0F},
                                     Event{one(38), one(0)}, Event{one(228)}, Event{one(38), one(0)}, Event{one(228)}));
}

TEST(Host, logs_calls_and_events_in_their_order_until_told_not_to)
{
    const Session session;
    session.host->Call("StartCallLog");
    session.viewport->CallWith("AddCameraMovement", {0, 0, 1, 1});
    session.host->Call("ClearFaults");
    session.host->Call("PaintNow");
    session.host->Call("StopCallLog");
    session.host->Call("Click");
    const std::string log = VariantToString(session.host->Get("CallLog"));
    const std::size_t moved = log.find("\nevent CameraMoved\n");
    ASSERT_NE(moved, std::string::npos) << log;
    EXPECT_LT(log.find("Frame."), moved);
    EXPECT_GT(log.find("event UpdatePositions"), moved);
    EXPECT_EQ(log.find("Click"), std::string::npos);
}

TEST(Host, settings_survive_a_save_and_a_load)
{
    const Session first;
    first.viewport->Put("FieldOfView", 0.75F);
    HostFace second;
    const auto loaded = AsDispatchable(second.CallWith("CreateAtDesignTime", {first.host->Call("Save")}));
    EXPECT_EQ(loaded->Get("FieldOfView"), Variant{0.75F});
}

} // namespace lumora::test
