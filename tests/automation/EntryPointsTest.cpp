// The shared library from outside: what it exports, counts and survives. Its entry points are not linked, but found.
#include "LumoraViewport.h"
#include "automation/ViewportFace.h"
#include "automation/abi/DispatchObject.h"
#include "hosts/headless/HostedViewport.h"
#include "support/TemporaryFolder.h"

#include <array>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <map>
#include <span>
#include <thread>
#include <vector>
#if __has_include(<nlohmann/json.hpp>)
#include <nlohmann/json.hpp>
#define LUMORA_READS_JSON 1
#endif

namespace lumora::test
{

namespace
{

template<typename Function>
Function* Entry(const char* name)
{
    static void* const library = dlopen(LUMORA_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    return library == nullptr ? nullptr : reinterpret_cast<Function*>(dlsym(library, name));
}

LumoraResult CanUnload()
{
    return Entry<LumoraResult()>("DllCanUnloadNow")();
}

LumoraClassObject* ClassObjectFor(const LumoraId& id)
{
    constexpr LumoraId Interface = LUMORA_INTERFACE_CLASS_OBJECT;
    void* object = nullptr;
    Entry<LumoraResult(const LumoraId*, const LumoraId*, void**)>("DllGetClassObject")(&id, &Interface, &object);
    return static_cast<LumoraClassObject*>(object);
}

LumoraDispatch* Create(const LumoraId& id)
{
    constexpr LumoraId Interface = LUMORA_INTERFACE_DISPATCH;
    LumoraClassObject* creator = ClassObjectFor(id);
    void* object = nullptr;
    creator->functions->CreateInstance(creator, nullptr, &Interface, &object);
    creator->functions->Release(creator);
    return static_cast<LumoraDispatch*>(object);
}

LumoraValue Number(std::int32_t number)
{
    LumoraValue value{};
    value.type = LumoraLong;
    value.value.number = number;
    return value;
}

// Calls a member by name; answers the error's number, 0 for success.
std::int32_t Use(LumoraDispatch* object, const char* name, std::uint32_t kinds, std::vector<LumoraValue> arguments,
                 LumoraValue* result = nullptr)
{
    std::int32_t id = 0;
    LumoraError error{};
    if (object->functions->GetIdOfName(object, name, &id, &error) >= 0)
        object->functions->Invoke(object, id, kinds, arguments.data(), static_cast<std::int32_t>(arguments.size()),
                                  result, &error);
    object->functions->FreeText(object, error.source);
    object->functions->FreeText(object, error.description);
    return error.number;
}

LumoraDispatch* ObjectFrom(LumoraDispatch* object, const char* name, std::uint32_t kinds,
                           std::vector<LumoraValue> arguments = {})
{
    LumoraValue result{};
    EXPECT_EQ(Use(object, name, kinds, std::move(arguments), &result), 0) << name;
    return result.value.object;
}

std::int32_t Move(LumoraDispatch* viewport)
{
    return Use(viewport, "AddCameraMovement", LUMORA_METHOD, {Number(0), Number(0), Number(1), Number(1)});
}

class Sink
{
public:
    using Handler = std::function<LumoraResult(std::span<LumoraValue>, LumoraError*)>;
    explicit Sink(Handler handler) : handler_(std::move(handler)) {}

    LumoraResult Join(LumoraDispatch* object)
    {
        const LumoraSink sink{
            this,
            [](void* self, std::int32_t, LumoraValue* arguments, std::int32_t count, LumoraError* error)
            {
                const auto size = static_cast<std::size_t>(count);
                return static_cast<Sink*>(self)->handler_({arguments, size}, error);
            },
            [](void* self) { ++static_cast<Sink*>(self)->released; }};
        return object->functions->Advise(object, &sink, &connection, nullptr);
    }

    std::uint32_t connection = 0;
    int released = 0;

private:
    Handler handler_;
};

constexpr LumoraId Host = LUMORA_CLASS_HOST;
constexpr LumoraId ViewportClass = LUMORA_CLASS_VIEWPORT;

} // namespace

TEST(EntryPoints, four_functions_are_exported_and_nothing_else)
{
    std::FILE* list = popen("nm -D --defined-only --format=posix " LUMORA_LIBRARY " | cut -d' ' -f1 | sort", "r");
    ASSERT_NE(list, nullptr);
    std::vector<std::string> names;
    std::array<char, 256> line{};
    while (std::fgets(line.data(), line.size(), list) != nullptr)
        names.emplace_back(line.data(), std::strcspn(line.data(), "\n"));
    ASSERT_EQ(pclose(list), 0);
    EXPECT_THAT(names, testing::ElementsAre("DllCanUnloadNow", "DllGetClassObject", "DllRegisterServer",
                                            "DllUnregisterServer"));
}

TEST(EntryPoints, unknown_classes_interfaces_and_null_pointers_are_refused)
{
    const auto get = Entry<LumoraResult(const LumoraId*, const LumoraId*, void**)>("DllGetClassObject");
    constexpr LumoraId Factory = LUMORA_INTERFACE_CLASS_FACTORY;
    constexpr LumoraId Unknown = LUMORA_ID(0x77);
    void* object = &object;
    EXPECT_EQ(get(&Unknown, &Factory, &object), LUMORA_NO_CLASS);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(get(&Host, &Unknown, &object), LUMORA_NO_INTERFACE);
    EXPECT_EQ(get(nullptr, &Factory, &object), LUMORA_POINTER);
    EXPECT_EQ(get(&Host, nullptr, &object), LUMORA_POINTER);
    EXPECT_EQ(get(&Host, &Factory, nullptr), LUMORA_POINTER);
    LumoraClassObject* creator = ClassObjectFor(Host);
    EXPECT_EQ(creator->functions->CreateInstance(creator, creator, &Factory, &object), LUMORA_NO_AGGREGATION);
    EXPECT_EQ(creator->functions->CreateInstance(creator, nullptr, &Unknown, &object), LUMORA_NO_INTERFACE);
    creator->functions->Release(creator);
    EXPECT_EQ(CanUnload(), LUMORA_OK);
}

TEST(EntryPoints, the_library_stays_while_anything_is_held)
{
    EXPECT_EQ(CanUnload(), LUMORA_OK);
    LumoraClassObject* creator = ClassObjectFor(Host);
    EXPECT_EQ(CanUnload(), LUMORA_FALSE);
    creator->functions->LockServer(creator, 1);
    creator->functions->Release(creator);
    EXPECT_EQ(CanUnload(), LUMORA_FALSE);
    creator = ClassObjectFor(Host);
    creator->functions->LockServer(creator, 0);
    creator->functions->Release(creator);
    EXPECT_EQ(CanUnload(), LUMORA_OK);
}

TEST(EntryPoints, objects_may_be_released_in_any_order)
{
    std::array<int, 4> order{0, 1, 2, 3};
    do
    {
        LumoraDispatch* host = Create(Host);
        LumoraDispatch* viewport = ObjectFrom(host, "CreateLive", LUMORA_METHOD, {LumoraValue{}});
        LumoraDispatch* scene = ObjectFrom(viewport, "Scene", LUMORA_GET);
        LumoraDispatch* again = ObjectFrom(host, "Viewport", LUMORA_GET);
        EXPECT_EQ(viewport, again);
        LumoraDispatch* const held[] = {host, viewport, scene, again};
        for (const int which : order)
        {
            EXPECT_EQ(CanUnload(), LUMORA_FALSE);
            held[which]->functions->Release(held[which]);
        }
        EXPECT_EQ(CanUnload(), LUMORA_OK);
    } while (std::ranges::next_permutation(order).found);
}

TEST(EntryPoints, a_sink_is_let_go_of_once_and_only_when_it_was_taken)
{
    LumoraDispatch* viewport = Create(ViewportClass);
    int events = 0;
    Sink* leaving = nullptr;
    Sink sink{[&](auto...)
              {
                  if (++events == 1)
                      viewport->functions->Unadvise(viewport, leaving->connection);
                  return LUMORA_OK;
              }};
    leaving = &sink;
    LumoraDispatch* host = Create(Host);
    EXPECT_LT(sink.Join(host), 0) << "a host raises no events";
    host->functions->Release(host);
    EXPECT_EQ(sink.released, 0);
    ASSERT_EQ(sink.Join(viewport), LUMORA_OK);
    EXPECT_EQ(Move(viewport), 0);
    EXPECT_EQ(Move(viewport), 0);
    EXPECT_EQ(std::pair(events, sink.released), std::pair(1, 1));
    EXPECT_EQ(viewport->functions->Unadvise(viewport, sink.connection), LUMORA_NO_CONNECTION);
    sink.Join(viewport);
    viewport->functions->Release(viewport);
    EXPECT_EQ(sink.released, 2);
}

TEST(EntryPoints, a_sink_may_replace_texts_and_fail)
{
    LumoraDispatch* viewport = Create(ViewportClass);
    Sink sink{[&](std::span<LumoraValue> arguments, LumoraError* error)
              {
                  if (!arguments.empty())
                  {
                      viewport->functions->ClearValue(viewport, &arguments[0]);
                      arguments[0].type = LumoraString;
                      arguments[0].value.text = viewport->functions->MakeTextFromUtf8(viewport, "1.5");
                  }
                  error->number = 77;
                  error->description = viewport->functions->MakeTextFromUtf8(viewport, "stop");
                  return arguments.empty() ? LUMORA_POINTER : LUMORA_OK; // only the second kind fails
              }};
    sink.Join(viewport);
    EXPECT_EQ(Move(viewport), 0);
    Use(viewport, "Enabled", LUMORA_PUT, {Number(1)});
    EXPECT_EQ(Use(viewport, "RenderScene", LUMORA_METHOD, {}), 77);
    viewport->functions->Release(viewport);
    EXPECT_EQ(CanUnload(), LUMORA_OK);
}

TEST(EntryPoints, foreign_values_are_refused_without_being_looked_into)
{
    LumoraDispatch* viewport = Create(ViewportClass);
    LumoraDispatch stranger{nullptr};
    LumoraValue object{};
    object.type = LumoraObject;
    object.value.object = &stranger;
    EXPECT_EQ(Use(viewport, "Scene", LUMORA_PUT_REFERENCE, {object}), 13);
    object.value.object = ObjectFrom(viewport, "Scene", LUMORA_GET);
    object.value.object->functions->Release(object.value.object);
    EXPECT_EQ(Use(viewport, "Scene", LUMORA_PUT_REFERENCE, {object}), 13) << "released";
    for (const std::int32_t type : {1, 6, 7, 10, 12, 13, 0x4003, -1})
    {
        LumoraValue odd{};
        odd.type = type;
        EXPECT_EQ(Use(viewport, "FieldOfView", LUMORA_PUT, {odd}), 13) << type;
    }
    LumoraValue text{};
    text.type = LumoraString; // a null text is the empty one
    EXPECT_EQ(Use(viewport, "BackgroundTexture", LUMORA_PUT, {text}), 0);
    struct
    {
        std::uint32_t length = 100U << 20;
        std::uint16_t unit = 0;
    } huge;
    text.value.text = &huge.unit;
    EXPECT_EQ(Use(viewport, "BackgroundTexture", LUMORA_PUT, {text}), 14);
    EXPECT_EQ(viewport->functions->MakeText(viewport, &huge.unit, 50U << 20), nullptr);
    EXPECT_EQ(viewport->functions->Invoke(viewport, 0, 1, nullptr, 3, nullptr, nullptr), LUMORA_POINTER);
    EXPECT_EQ(viewport->functions->Invoke(viewport, 0, 1, nullptr, -3, nullptr, nullptr), LUMORA_POINTER);
    viewport->functions->Release(viewport);
}

TEST(EntryPoints, buffers_are_refused_that_cannot_be_looked_into)
{
    LumoraDispatch* factory = Create(LUMORA_CLASS_RETAINED_MODE);
    LumoraDispatch* mesh = ObjectFrom(factory, "CreateMeshBuilder", LUMORA_METHOD);
    float corners[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    const auto adding = [&](LumoraBuffer* vertices)
    {
        LumoraValue value{};
        value.type = LumoraNumbers;
        value.value.buffer = vertices;
        LumoraValue none{};
        LumoraBuffer closing{corners, 1, LumoraElementLong, 0}; // a single 0
        LumoraValue faces{};
        faces.type = LumoraNumbers;
        faces.value.buffer = &closing;
        const std::int32_t number = Use(mesh, "AddFaces", LUMORA_METHOD, {value, none, faces});
        mesh->functions->ClearValue(mesh, &value); // the record is the test's own: it stays
        return number;
    };
    EXPECT_EQ(adding(nullptr), 13);
    constexpr std::uint64_t Wrapping = (std::uint64_t{1} << 61) + 1; // in bytes
    for (auto [buffer, number] : {std::pair{LumoraBuffer{nullptr, 3, LumoraElementSingle, 0}, 13},
                                  {{corners, 9, 5000, 0}, 13},
                                  {{corners, LUMORA_MAXIMUM_BUFFER / 4 + 1, LumoraElementSingle, 0}, 7},
                                  {{corners, Wrapping, LumoraElementDouble, 0}, 7},
                                  {{corners, 9, LumoraElementSingle, 0}, 0}})
        EXPECT_EQ(adding(&buffer), number) << buffer.count;

    LumoraValue read{};
    EXPECT_EQ(Use(mesh, "Vertices", LUMORA_GET, {}, &read), 0);
    mesh->functions->Release(mesh);
    ASSERT_EQ(read.type, LumoraNumbers);
    ASSERT_EQ(read.value.buffer->count, 9U); // and outlives the mesh
    EXPECT_EQ(std::memcmp(read.value.buffer->data, corners, sizeof corners), 0);
    factory->functions->ClearValue(factory, &read);
    factory->functions->Release(factory);
    EXPECT_EQ(CanUnload(), LUMORA_OK);
}

TEST(EntryPoints, texts_cross_in_every_script)
{
    LumoraDispatch* viewport = Create(ViewportClass);
    const std::u16string given = u"h\u00e4 \u6f22 \U0001F600";
    LumoraValue text{};
    text.type = LumoraString;
    text.value.text = viewport->functions->MakeText(viewport, reinterpret_cast<const std::uint16_t*>(given.data()),
                                                    static_cast<std::uint32_t>(given.size()));
    EXPECT_EQ(Use(viewport, "BackgroundTexture", LUMORA_PUT, {text}), 0);
    LumoraValue read{};
    EXPECT_EQ(Use(viewport, "BackgroundTexture", LUMORA_GET, {}, &read), 0);
    ASSERT_EQ(read.type, LumoraString);
    EXPECT_EQ(std::u16string_view(reinterpret_cast<const char16_t*>(read.value.text)), given);
    viewport->functions->ClearValue(viewport, &text);
    viewport->functions->ClearValue(viewport, &read);
    viewport->functions->Release(viewport);
}

TEST(EntryPoints, other_threads_may_release_and_are_refused_the_rest)
{
    LumoraDispatch* viewport = Create(ViewportClass);
    LumoraClassObject* creator = ClassObjectFor(Host);
    std::thread{[=]
                {
                    constexpr LumoraId Interface = LUMORA_INTERFACE_DISPATCH;
                    const auto& object = *viewport->functions;
                    std::int32_t id = 0;
                    LumoraMember member{};
                    LumoraArgument argument{};
                    LumoraError error{};
                    LumoraText text = nullptr;
                    void* made = nullptr;
                    const LumoraSink sink{nullptr, [](auto...) { return LUMORA_OK; }, nullptr};
                    std::uint32_t connection = 0;
                    const LumoraResult answers[] = {
                        object.GetIdOfName(viewport, "Scene", &id, nullptr),
                        object.GetMember(viewport, 0, &member),
                        object.GetMemberArgument(viewport, 2, 0, &argument),
                        object.GetEvent(viewport, 0, &member),
                        object.GetEventArgument(viewport, 0, 0, &argument),
                        object.Advise(viewport, &sink, &connection, nullptr),
                        object.Unadvise(viewport, 1),
                        creator->functions->CreateInstance(creator, nullptr, &Interface, &made),
                        creator->functions->LockServer(creator, 1),
                        creator->functions->GetTypeLibrary(creator, &text),
                        Entry<LumoraResult(const LumoraId*, const LumoraId*, void**)>("DllGetClassObject")(
                            &Host, &Interface, &made),
                        Entry<LumoraResult()>("DllRegisterServer")(),
                        object.Invoke(viewport, 0x60030000, LUMORA_METHOD, nullptr, 0, nullptr, &error),
                    };
                    EXPECT_THAT(answers, testing::Each(LUMORA_WRONG_THREAD));
                    EXPECT_EQ(error.number, LUMORA_WRONG_THREAD);
                    EXPECT_NE(error.description, nullptr);
                    object.FreeText(viewport, error.source);
                    object.FreeText(viewport, error.description);
                    EXPECT_STREQ(object.GetClassName(viewport), "Viewport");
                    EXPECT_EQ(CanUnload(), LUMORA_FALSE);
                    EXPECT_EQ(object.AddRef(viewport), 2U);
                    EXPECT_EQ(object.Release(viewport), 1U);
                    object.Release(viewport);
                    creator->functions->Release(creator);
                }}
        .join();
    EXPECT_EQ(CanUnload(), LUMORA_OK);
}

// A C++ program of its own: a form, its control, and the control's face, which keeps both.
TEST(EntryPoints, a_control_of_another_host_is_handed_out_and_driven_like_any)
{
    const auto form = std::make_shared<headless::HeadlessHost>();
    auto hosted = std::make_shared<headless::HostedViewport>(form);
    auto face = std::make_shared<automation::ViewportFace>(std::shared_ptr<Viewport>{hosted, &hosted->Control()});
    hosted.reset();
    LumoraDispatch* viewport = automation::DispatchObjectFor(face);
    face.reset();
    EXPECT_EQ(CanUnload(), LUMORA_FALSE);
    std::vector<std::vector<std::int32_t>> types;
    Sink sink{[&](std::span<LumoraValue> arguments, auto)
              {
                  auto& seen = types.emplace_back();
                  for (const LumoraValue& argument : arguments)
                      seen.push_back(argument.type);
                  arguments[0].value.integer = 300;
                  return LUMORA_OK;
              }};
    ASSERT_EQ(sink.Join(viewport), LUMORA_OK);
    form->PressButton(1, 200, 200);
    form->PressKey('A');
    EXPECT_THAT(types, testing::ElementsAre(
                           testing::ElementsAre(LumoraInteger, LumoraInteger, LumoraSingle, LumoraSingle),
                           testing::ElementsAre(LumoraInteger, LumoraInteger), testing::ElementsAre(LumoraInteger)));
    LumoraValue handle{};
    EXPECT_EQ(Use(viewport, "hwnd", LUMORA_GET, {}, &handle), 0);
    EXPECT_EQ(handle.type, LumoraInteger);
    EXPECT_EQ(handle.value.integer, form->ControlArea().Handle());
    viewport->functions->Release(viewport);
    EXPECT_EQ(CanUnload(), LUMORA_OK);
}

class Registration : public testing::Test
{
protected:
    Registration() { setenv("XDG_DATA_HOME", (folder_ / "").c_str(), 1); }

    std::string Registry() const { return folder_.Read("lumora/registry"); }

    const tests::TemporaryFolder folder_;
    const std::filesystem::path library_ = folder_ / "lumora/LumoraViewport.json";
    LumoraResult (*register_)() = Entry<LumoraResult()>("DllRegisterServer");
    LumoraResult (*unregister_)() = Entry<LumoraResult()>("DllUnregisterServer");
};

TEST_F(Registration, writes_classes_and_type_library_and_takes_them_away)
{
    ASSERT_EQ(register_(), LUMORA_OK);
    const std::string written = Registry();
    for (const char* name : {"LumoraViewport.Viewport", "LumoraViewport.clsTDLViewportPNC", "InprocServer"})
        EXPECT_THAT(written, testing::HasSubstr(name));
    EXPECT_TRUE(std::filesystem::exists(library_));
    ASSERT_EQ(register_(), LUMORA_OK);
    EXPECT_EQ(Registry(), written);
    ASSERT_EQ(unregister_(), LUMORA_OK);
    EXPECT_THAT(Registry(), testing::Not(testing::HasSubstr("Viewport")));
    EXPECT_FALSE(std::filesystem::exists(library_));
}

TEST_F(Registration, leaves_a_damaged_registry_as_it_is)
{
    const std::string before = "lumora-registry 1\n[\"somebody else's\"]\n\"half";
    std::filesystem::create_directory(folder_ / "lumora");
    folder_.Write("lumora/registry", before);
    EXPECT_EQ(register_(), LUMORA_REGISTRATION);
    EXPECT_EQ(unregister_(), LUMORA_REGISTRATION);
    EXPECT_EQ(Registry(), before);
}

#ifdef LUMORA_READS_JSON
TEST_F(Registration, the_type_library_is_json_that_tells_every_member)
{
    ASSERT_EQ(register_(), LUMORA_OK);
    const auto document = nlohmann::json::parse(folder_.Read("lumora/LumoraViewport.json"));
    const auto& viewport = document["classes"][0];
    EXPECT_EQ(viewport["interface"], "_Viewport");
    EXPECT_EQ(viewport["eventInterface"], "__Viewport");
    EXPECT_EQ(viewport["events"].size(), 15U);
    std::map<std::string, nlohmann::json> members;
    std::string hidden;
    for (const auto& member : viewport["members"])
    {
        members[member["name"]] = member;
        hidden += member.contains("hidden") ? member["name"].get<std::string>() + " " : "";
    }
    EXPECT_EQ(hidden, "Direct3DDeviceGUID ViewportState ");
    EXPECT_EQ(std::ranges::count_if(members, [](const auto& row) { return row.second["kinds"][0] == "get"; }), 97);
    EXPECT_EQ(members["KeyVelocityRotate"]["type"], "Single");
    EXPECT_EQ(members["KeyVelocityRotate"]["default"].get<float>(), 1.571F);
    EXPECT_GE(document["enumerations"].size(), 13U);
    EXPECT_EQ(document["enumerations"][0]["values"][0]["value"], 0);
}
#endif

} // namespace lumora::test
