// Settings as a person keeps them: in a file, edited by hand, damaged by accident.
#include "properties/JsonPropertyBag.h"
#include "properties/PropertyValues.h"
#include "support/TemporaryFolder.h"
#include "viewport/LiveControl.h"

#include <bit>
#include <cmath>
#include <filesystem>
#include <gmock/gmock.h>
#include <random>

using namespace lumora;
using namespace lumora::test;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

namespace fs = std::filesystem;

namespace
{

JsonPropertyBag BagOf(std::string_view text)
{
    return JsonPropertyBag::FromText(text, "settings.json");
}

std::unique_ptr<headless::HostedViewport> Designed(PropertyBag& bag)
{
    return headless::HostedViewport::AtDesignTime(MakeHost(), bag);
}

TEST(SettingsFile, every_property_but_the_picture_comes_back_from_the_text)
{
    for (const PropertyRow& row : PropertyTable())
    {
        if (!row.saved || row.type == PropertyType::Object)
            continue;
        auto bag = BagOf("{}");
        bag.WriteProperty(row.name, AnotherValue(row), row.defaultValue);
        auto again = BagOf(bag.Text());
        EXPECT_THAT(again.Remarks(), IsEmpty()) << row.name;
        EXPECT_TRUE(VariantsEqual(again.ReadProperty(row.name, row.defaultValue), AnotherValue(row))) << row.name;
    }
}

TEST(SettingsFile, reads_like_something_a_person_would_write)
{
    MemoryPropertyBag empty;
    const auto hosted = Designed(empty);
    Viewport& control = hosted->Control();
    control.SetFieldOfView(0.1F);
    control.SetAccumulate(true);
    control.SetFillMode(D3DRMFILL_WIREFRAME);
    control.SetCoolMode(7);
    control.SetRenderMode(static_cast<tdlRenderMode>(2)); // no value of this enumeration
    control.SetBackgroundTexture("a \"b\"\\c\xC3\xA9.png");
    control.SetMouseNavigationMode(tdlFly);
    auto bag = BagOf("{}");
    control.Save(bag);
    EXPECT_EQ(bag.Text(), "{\n"
                          "    \"MouseNavigationMode\": \"tdlFly\",\n"
                          "    \"FillMode\": \"D3DRMFILL_WIREFRAME\",\n"
                          "    \"RenderMode\": 2,\n"
                          "    \"Accumulate\": true,\n"
                          "    \"CoolMode\": 7,\n"
                          "    \"BackgroundTexture\": \"a \\\"b\\\"\\\\c\xC3\xA9.png\",\n"
                          "    \"FieldOfView\": 0.1\n"
                          "}\n");
}

TEST(SettingsFile, takes_the_spellings_a_person_may_choose)
{
    auto bag = BagOf(R"({"FillMode":64, "ShadeMode":"d3drmshade_flat", "CoolMode":2.5,
        "FieldOfView":"0.25", "KeyZoomIn":"tdlNavKeyA", "Accumulate":"yes", "RenderOverlay":0, "SceneOriginX":1E2,
        "BackClippingPlane":1000})");
    EXPECT_THAT(bag.Remarks(), IsEmpty());
    const auto hosted = Designed(bag);
    const Viewport& control = hosted->Control();
    EXPECT_EQ(control.FillMode(), D3DRMFILL_WIREFRAME);
    EXPECT_EQ(control.ShadeMode(), D3DRMSHADE_FLAT);
    EXPECT_EQ(control.CoolMode(), 2) << "halves go to even numbers";
    EXPECT_EQ(control.FieldOfView(), 0.25F);
    EXPECT_EQ(control.KeyZoomIn(), tdlNavKeyA);
    EXPECT_TRUE(control.Accumulate());
    EXPECT_FALSE(control.RenderOverlay());
    EXPECT_EQ(control.SceneOriginX(), 100.0F);
}

TEST(SettingsFile, keeps_every_finite_single_to_the_last_bit)
{
    std::mt19937 random{7};
    for (int i = 0; i < 20000; ++i)
    {
        const auto number = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (!std::isfinite(number))
            continue;
        auto bag = BagOf("{}");
        bag.WriteProperty("SceneOriginY", number, 0.0F);
        auto again = BagOf(bag.Text());
        const auto read = std::get<float>(again.ReadProperty("SceneOriginY", 0.0F));
        ASSERT_EQ(std::bit_cast<std::uint32_t>(read), std::bit_cast<std::uint32_t>(number)) << bag.Text();
    }
}

TEST(SettingsFile, says_what_it_does_not_understand_and_writes_it_back_as_it_was)
{
    const std::string kept = "\"$comment\": \"left alone\",\n"
                             "    \"other program\": { \"a\" : [1.50, {}],\n"
                             "\t\"b\": null },\n"
                             "    \"big\": 123456789012345678901234567890,\n"
                             "    \"FieldOfVeiw\": 1.0e0,\n"
                             "    \"Enabled\": [true],\n"
                             "    \"ViewportID\": 3";
    auto bag = BagOf("{\n    " + kept + ",\n \"CoolMode\": 1 }");
    EXPECT_THAT(bag.Remarks(),
                ElementsAre(StartsWith("settings.json:2: "), StartsWith("settings.json:3: "),
                            StartsWith("settings.json:5: "), HasSubstr("did you mean \"FieldOfView\"?"),
                            HasSubstr("settings.json:7: the value of Enabled"), HasSubstr("ViewportID is not kept")));
    const auto hosted = Designed(bag);
    EXPECT_THAT(hosted->Host().Logged(), IsEmpty()) << "told once";
    hosted->Control().Save(bag);
    EXPECT_EQ(bag.Text(), "{\n    " + kept + ",\n    \"CoolMode\": 1\n}\n");

    hosted->Control().SetEnabled(true);
    hosted->Control().Save(bag);
    EXPECT_THAT(bag.Text(), HasSubstr("\"Enabled\": true\n}"));
    EXPECT_THAT(bag.Text(), testing::Not(HasSubstr("[true]")));
}

TEST(SettingsFile, a_value_its_property_cannot_hold_counts_as_missing_and_is_explained)
{
    struct Row
    {
        const char* text;
        const char* property;
        const char* reason;
    };
    for (const Row& row :
         {Row{R"({"FillMode":"D3DRMFILL_WIREFAME"})", "FillMode", "D3DRMFILL_WIREFRAME"},
          Row{R"({"CoolMode":3e9})", "CoolMode", "Overflow"}, Row{R"({"FieldOfView":true})", "FieldOfView", "Boolean"},
          Row{R"({"BackgroundTexture":1})", "BackgroundTexture", "double quotes"},
          Row{R"({"Accumulate":2})", "Accumulate", "True or False"},
          Row{R"({"Enabled":null})", "Enabled", "single value"},
          Row{R"({"MouseIcon":"cursor.png"})", "MouseIcon", "not kept"}})
    {
        auto bag = BagOf(row.text);
        EXPECT_THAT(bag.Remarks(), ElementsAre(testing::AllOf(StartsWith("settings.json:1: "), HasSubstr(row.property),
                                                              HasSubstr(row.reason))));
        const PropertyRow& property = *FindProperty(row.property);
        EXPECT_EQ(bag.ReadProperty(row.property, property.defaultValue), property.defaultValue) << row.text;
    }
}

TEST(SettingsFile, leaves_out_what_json_cannot_say_and_tells_so)
{
    auto bag = BagOf(R"({"SceneOriginX": 1})");
    const Variant picture = AnotherValue(*FindProperty("MouseIcon"));
    for (const auto& [name, value] : {std::pair{"BackgroundTexture", Variant{std::string{"\xFF"}}},
                                      {"MouseIcon", picture},
                                      {"SceneOriginX", std::nanf("")},
                                      {"SceneOriginY", INFINITY}})
        bag.WriteProperty(name, value, FindProperty(name)->defaultValue);
    EXPECT_EQ(bag.Text(), "{\n}\n");
    EXPECT_THAT(bag.Remarks(), ElementsAre(HasSubstr("BackgroundTexture"), HasSubstr("MouseIcon"),
                                           HasSubstr("SceneOriginX"), HasSubstr("SceneOriginY")));
}

TEST(SettingsFile, many_remarks_are_counted_instead_of_listed)
{
    std::string text = "{";
    for (int i = 0; i < 5000; ++i)
        text += "\"unknown" + std::to_string(i) + "\":0,";
    text.back() = '}';
    const auto remarks = BagOf(text).Remarks();
    EXPECT_THAT(remarks, SizeIs(JsonPropertyBag::MaximumRemarks + 1));
    EXPECT_THAT(remarks.back(), HasSubstr("4980 more"));
}

std::string Nested(std::size_t depth)
{
    return "{\"a\":" + std::string(depth - 1, '[') + std::string(depth - 1, ']') + "}";
}

TEST(SettingsFile, that_is_damaged_is_refused_whole_with_place_and_reason_and_never_overwritten)
{
    const struct
    {
        std::string text;
        std::string place; // line:column of the first byte that is wrong
        const char* reason;
    } rows[] = {{"", ":1:1: ", "end of input"},
                {"\n [1]", ":2:2: ", "one object"},
                {"{\n\"CoolMode\": 1,", ":2:15: ", "end of input"},
                {"{\n  \"CoolMode\": 1\n  \"AntiAlias\": 2\n}", ":3:", "unexpected"},
                {"{} {}", ":1:4: ", "expected end of input"},
                {"{ // no\n}", ":1:3: ", "invalid literal"},
                {"{\"a\":{\"b\":1,\"b\":1}}", ":1:", "second time"},
                {"{\"FieldOfView\": 1e999}", ":1:", "number overflow"},
                {"{\"BackgroundTexture\": \"\xC3(\"}", ":1:", "UTF-8"},
                {std::string("{}\0{}", 5), ":1:3: ", "zero byte"},
                {Nested(33), ":1:37: ", "32 deep"},
                {"{\"a\":" + std::string(100000, '['), ":1:37: ", "32 deep"},
                {"{}" + std::string(LongestSettingsText, ' '), " is too long", "1048576"}};
    const tests::TemporaryFolder folder;
    const std::string path = folder / "settings.json";
    for (const auto& row : rows)
    {
        folder.Write("settings.json", row.text);
        for (const auto& open : {JsonPropertyBag::Open, JsonPropertyBag::OpenOrCreate})
        {
            const RuntimeError failure = FailureOf([&] { open(path); });
            EXPECT_EQ(failure.Number(), error::InvalidCall);
            EXPECT_THAT(failure.Description(), testing::AllOf(StartsWith(path + row.place), HasSubstr(row.reason)));
        }
        EXPECT_EQ(folder.Read("settings.json"), row.text);
        EXPECT_THAT(folder.Names(), ElementsAre("settings.json"));
    }
}

TEST(SettingsFile, may_be_as_deep_and_as_long_as_the_limits_say)
{
    EXPECT_THAT(BagOf(Nested(32)).Remarks(), SizeIs(1));
    EXPECT_THAT(BagOf("{}" + std::string(LongestSettingsText - 2, ' ')).Remarks(), IsEmpty());
}

TEST(SettingsFile, must_exist_to_be_read_and_is_created_to_be_written)
{
    const tests::TemporaryFolder folder;
    EXPECT_EQ(FailureOf([&] { JsonPropertyBag::Open(folder / "settings.json"); }).Number(), error::FileNotFound);
    auto bag = JsonPropertyBag::OpenOrCreate(folder / "settings.json");
    EXPECT_THAT(folder.Names(), IsEmpty());
    bag.WriteProperty("CoolMode", std::int32_t{1}, std::int32_t{0});
    bag.Store();
    EXPECT_EQ(folder.Read("settings.json"), "{\n    \"CoolMode\": 1\n}\n");
    EXPECT_THAT(folder.Names(), ElementsAre("settings.json"));

    for (const std::string& path : {folder / "missing/settings.json", folder / ".", std::string{"/dev/null"}})
        EXPECT_EQ(FailureOf([&] { JsonPropertyBag::OpenOrCreate(path); }).Number(), error::PathFileAccess) << path;
    EXPECT_EQ(FailureOf([&] { BagOf("{}").Store(); }).Number(), error::PathFileAccess);
}

TEST(SettingsFile, keeps_permissions_and_links_and_stays_as_it_was_when_the_new_one_cannot_be_written)
{
    const tests::TemporaryFolder folder;
    folder.Write("real.json", "{}");
    fs::permissions(folder / "real.json", fs::perms{0640});
    fs::create_symlink("real.json", folder / "link.json");
    auto bag = JsonPropertyBag::Open(folder / "link.json");
    bag.WriteProperty("CoolMode", std::int32_t{1}, std::int32_t{0});
    // The name of the new file is taken, whoever tries and whatever they may do.
    const std::string taken = folder / ("real.json.new-" + std::to_string(::getpid()));
    fs::create_directory(taken);
    EXPECT_EQ(FailureOf([&] { bag.Store(); }).Number(), error::PathFileAccess);
    fs::remove(taken);
    EXPECT_EQ(folder.Read("real.json"), "{}");
    EXPECT_THAT(folder.Names(), testing::UnorderedElementsAre("link.json", "real.json"));
    bag.Store();
    EXPECT_TRUE(fs::is_symlink(folder / "link.json"));
    EXPECT_THAT(folder.Read("real.json"), HasSubstr("CoolMode"));
    EXPECT_EQ(fs::status(folder / "real.json").permissions(), fs::perms{0640});
}

} // namespace
