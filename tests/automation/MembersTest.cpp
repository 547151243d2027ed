// Members by name and number: what can be reached, what is refused and how, what is written back.
#include "Session.h"
#include "automation/Classes.h"

#include <gmock/gmock.h>
#include <set>

namespace lumora::test
{

TEST(Members, every_property_has_the_number_of_its_place)
{
    Session session;
    EXPECT_EQ(session.viewport->IdOf("Direct3DDevice"), 0x68030000 + 96);
    EXPECT_EQ(session.viewport->IdOf("hwnd"), 0x68030000);
}

TEST(Members, names_are_found_whatever_their_case)
{
    Session session;
    for (const char* name : {"RENDERSCENE", "renderscene", "RenderScene"})
        EXPECT_EQ(session.viewport->IdOf(name), session.viewport->IdOf("RenderScene")) << name;
    EXPECT_EQ(NumberOf([&] { session.viewport->IdOf("RenderScenes"); }), error::MemberNotFound);
    EXPECT_EQ(NumberOf([&] { session.viewport->IdOf(""); }), error::MemberNotFound);
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
    Dispatchable& viewport = *session.viewport;
    Dispatchable& scene = *session.scene;
    const auto id = [&](const char* name) { return viewport.IdOf(name); };
    std::vector<Variant> one{1.0F};
    const struct
    {
        const char* what;
        std::function<void()> step;
        std::int32_t number;
    } rows[] = {
        {"an unknown name", [&] { viewport.Get("Nothing"); }, error::MemberNotFound},
        {"an unknown id", [&] { viewport.Invoke(12345, invoke::Get, {}); }, error::DispatchIdNotFound},
        {"a method read like a property", [&] { viewport.Get("RenderScene"); }, error::DispatchIdNotFound},
        {"a property called like a method", [&] { viewport.Call("FieldOfView"); }, error::DispatchIdNotFound},
        {"a number written by reference", [&] { viewport.Invoke(id("FieldOfView"), invoke::PutReference, one); },
         error::DispatchIdNotFound},
        {"a read-only property", [&] { viewport.Put("ViewportState", 0); }, error::ReadOnlyProperty},
        {"too few arguments", [&] { viewport.Call("AddCameraZoom"); }, error::WrongArgumentCount},
        {"an argument for a reader", [&] { viewport.Invoke(id("FieldOfView"), invoke::Get, one); },
         error::WrongArgumentCount},
        {"a write without a value", [&] { viewport.Invoke(id("FieldOfView"), invoke::Put, {}); },
         error::WrongArgumentCount},
        {"a word for a number", [&] { viewport.Put("FieldOfView", std::string{"wide"}); }, error::TypeMismatch},
        {"a number for an object", [&] { viewport.Put("Scene", 3); }, error::TypeMismatch},
        {"another kind of object", [&] { viewport.Put("Scene", ObjectReference{session.factory}); },
         error::TypeMismatch},
        {"a number beyond 32 bits", [&] { viewport.Put("CoolMode", 3e9); }, error::Overflow},
        {"a child there is not", [&] { scene.CallWith("Child", {7}); }, error::SubscriptOutOfRange},
        {"a sink for what raises no events", [&] { scene.Connect(nullptr); }, error::NoEvents},
        {"members of nothing", [&] { AsDispatchable(viewport.Get("SceneOverlay")); }, error::ObjectNotSet},
        {"a driver at an index there is not",
         [&] {
             session.host->CallWith("MoveDriver", {std::string{"IID_IDirect3DRGBDevice"}, 4});
         },
         error::SubscriptOutOfRange},
        {"a driver there is not",
         [&] {
             session.host->CallWith("MoveDriver", {std::string{"x"}, 0});
         },
         error::InvalidCall},
        {"a scale mode there is not", [&] { session.host->Put("WindowScaleMode", 4); }, error::InvalidCall},
        {"a screen without pixels",
         [&] {
             session.host->CallWith("SetScreenSize", {0, 600});
         },
         error::InvalidCall},
        {"pixels without an end", [&] { session.host->Put("DpiX", 0); }, error::InvalidCall},
        {"a pointer the window has not", [&] { session.host->Put("WindowMousePointer", 20); },
         error::InvalidPropertyValue},
        {"a second control on a form", [&] { session.host->CallWith("CreateLive", {Variant{}}); }, error::InvalidCall},
    };
    for (const auto& row : rows)
    {
        const auto failure = ErrorOf(row.step);
        ASSERT_TRUE(failure) << row.what;
        EXPECT_EQ(failure->Number(), row.number) << row.what;
        EXPECT_FALSE(failure->Description().empty()) << row.what;
    }
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
}

TEST(Members, what_an_obstacle_leaves_of_a_movement_is_written_back)
{
    const Session session;
    const auto mesh = AsDispatchable(session.factory->Call("CreateMeshBuilder"));
    mesh->CallWith("AddFaces", {std::string{"-5 -5 1 -5 5 1 5 5 1 5 -5 1"}, std::string{}, std::string{"4 0 1 2 3 0"}});
    mesh->Put("AppData", 1);
    session.scene->CallWith("AddVisual", {ObjectReference{mesh}});
    for (const auto& [name, value] : {std::pair{"CollisionDetection", 1.0F},
                                      {"CollisionSamples", 5.0F},
                                      {"CollisionDistance", 0.1F},
                                      {"FrontClippingPlane", 0.01F}})
        session.viewport->Put(name, value);
    std::vector<Variant> movement{0, 0, 5, 1};
    session.viewport->Call("AddCameraMovement", movement);
    EXPECT_NEAR(std::get<float>(movement[2]), 1 - 0.01 - 0.1, 1e-3); // counted from the front plane
}

TEST(Members, a_refused_call_writes_nothing_back)
{
    const Session session;
    std::vector<Variant> place{7, 8, std::string{"north"}};
    EXPECT_EQ(NumberOf([&] { session.viewport->Call("GetCameraPosition", place); }), error::TypeMismatch);
    EXPECT_THAT(place, testing::ElementsAre(Variant{7}, Variant{8}, Variant{std::string{"north"}}));
}

TEST(Identity, an_object_has_one_face)
{
    const Session session;
    EXPECT_EQ(session.viewport->Get("Scene"), Variant{ObjectReference{session.scene}});
    EXPECT_EQ(session.host->Get("Viewport"), Variant{ObjectReference{session.viewport}});
    EXPECT_EQ(session.host->Get("RetainedMode"), Variant{ObjectReference{session.factory}});
    const auto camera = AsDispatchable(session.viewport->Get("Camera"));
    EXPECT_EQ(camera->Get("Parent"), Variant{ObjectReference{session.scene}});
    EXPECT_NE(camera, session.scene);
}

TEST(Identity, a_face_keeps_its_object_and_lets_go_of_it)
{
    std::weak_ptr<Frame> watched;
    {
        const Session session;
        auto frame = Frame::Make();
        watched = frame;
        const auto face = automation::FaceOf(frame);
        frame.reset();
        EXPECT_FALSE(watched.expired());
        face->Put("Name", std::string{"kept"});
        EXPECT_EQ(automation::FaceOf(watched.lock())->Get("Name"), Variant{std::string{"kept"}});
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
    const auto middle = [&](const char* edge, const char* size)
    { return VariantToLong(session.host->Get(edge)) + VariantToLong(session.host->Get(size)) / 2; };
    session.host->CallWith("MoveMouseTo", {middle("WindowLeft", "WindowWidth"), middle("WindowTop", "WindowHeight")});
    session.host->CallWith("PressButton", {2});
    session.host->CallWith("ReleaseButton", {2});
    session.host->Call("Click");
    session.host->CallWith("PressKey", {65});
    session.host->CallWith("ReleaseKey", {65});
    EXPECT_THAT(told, testing::ElementsAre(6, 4, 5, 2, 7, 8, 9));
}

TEST(Host, events_of_the_load_reach_sinks_that_were_connected_before_it)
{
    HostFace host;
    const auto viewport = AsDispatchable(host.Call("CreateControl"));
    std::vector<std::int32_t> heard;
    viewport->Connect(std::make_shared<Listener>([&](std::int32_t id, auto) { heard.push_back(id); }));
    host.CallWith("Load", {Variant{}});
    EXPECT_THAT(heard, testing::Contains(1)); // the camera is placed
    EXPECT_NE(viewport->Get("Scene"), Variant{ObjectReference{}});
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
    const Variant last = host.CallWith("DriverName", {3});
    host.CallWith("MoveDriver", {first, 2});
    EXPECT_EQ(host.CallWith("DriverName", {2}), first);
    EXPECT_EQ(host.CallWith("DriverName", {3}), last);
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
    EXPECT_EQ(session.host->Get("CallLogDropped"), Variant{0.0});
}

TEST(Host, settings_survive_a_save_and_a_load)
{
    const Session first;
    first.viewport->Put("FieldOfView", 0.75F);
    first.viewport->Put("KeyZoomIn", 65);
    const Variant bag = first.host->Call("Save");
    const auto second = std::make_shared<HostFace>();
    const auto loaded = AsDispatchable(second->CallWith("CreateAtDesignTime", {bag}));
    EXPECT_EQ(loaded->Get("FieldOfView"), Variant{0.75F});
    EXPECT_EQ(loaded->Get("KeyZoomIn"), Variant{65});
}

} // namespace lumora::test
