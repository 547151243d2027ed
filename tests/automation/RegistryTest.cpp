// The registry file and JSON: what is written reads back, and a damaged file stays as it is.
#include "base/Registry.h"

#include "base/Json.h"
#include "base/RuntimeError.h"
#include "support/TemporaryFolder.h"

#include <fstream>
#include <gmock/gmock.h>

namespace lumora::test
{

namespace
{

class RegistryFile : public testing::Test
{
protected:
    const tests::TemporaryFolder folder_;
    const std::filesystem::path file_ = folder_ / "below/registry";
};

} // namespace

TEST_F(RegistryFile, gives_back_every_text_it_was_given)
{
    const std::string texts[] = {"", "\\", "\"=\"", "two\nlines", "back\\nslash", "[key]", "ä \xF0\x9F\x98\x80", "end"};
    Registry registry;
    for (const std::string& key : texts)
        for (const std::string& name : texts)
            registry.Set(key, name, key + name);
    registry.Write(file_);
    const Registry read = Registry::Read(file_);
    for (const std::string& key : texts)
        for (const std::string& name : texts)
            EXPECT_THAT(read.Find(key, name), testing::Pointee(key + name)) << key << " " << name;
}

TEST_F(RegistryFile, looks_values_up_whatever_their_case_and_refuses_long_ones)
{
    Registry registry;
    registry.Set("SOFTWARE\\Tools", "Path", "/usr/bin/info");
    registry.Set("SOFTWARE\\Tools", "Fits", std::string(Registry::MaximumValue - 1, 'x'));
    registry.Set("SOFTWARE\\Tools", "Long", std::string(Registry::MaximumValue, 'x'));
    registry.Write(file_);
    std::string value;
    EXPECT_TRUE(GetKeyValue(file_, "software\\TOOLS", "PATH", value));
    EXPECT_EQ(value, "/usr/bin/info");
    EXPECT_TRUE(GetKeyValue(file_, "SOFTWARE\\Tools", "Fits", value));
    for (const char* name : {"Long", "None"})
    {
        value = "before";
        EXPECT_FALSE(GetKeyValue(file_, "SOFTWARE\\Tools", name, value)) << name;
        EXPECT_EQ(value, "");
    }
}

TEST_F(RegistryFile, removing_a_key_takes_what_is_below_it_and_nothing_beside_it)
{
    Registry registry;
    for (const char* key : {"a", "A\\b", "a\\b\\c", "ab", "b\\a"})
        registry.Set(key, "", key);
    registry.RemoveKey("a");
    for (const auto& [key, kept] :
         {std::pair{"a", false}, {"a\\b", false}, {"a\\b\\c", false}, {"ab", true}, {"b\\a", true}})
        EXPECT_EQ(registry.Find(key, "") != nullptr, kept) << key;
}

TEST_F(RegistryFile, a_damaged_file_is_refused_with_its_line)
{
    Registry registry;
    registry.Set("key", "name", "value");
    registry.Write(file_);
    const std::string whole = folder_.Read("below/registry");
    for (std::size_t length = 0; length + 1 < whole.size(); ++length)
    {
        std::ofstream{file_, std::ios::trunc} << whole.substr(0, length);
        EXPECT_THROW(Registry::Read(file_), RuntimeError) << length;
        std::string value;
        EXPECT_FALSE(GetKeyValue(file_, "key", "name", value)) << length;
    }
    for (const char* damaged : {"registry\n", "lumora-registry 1\n\"a\"=\"b\"\nend\n",
                                "lumora-registry 1\n[\"a\"]\n\"a\"=\"b\\\nend\n", "lumora-registry 1\nend\nmore\n"})
    {
        std::ofstream{file_, std::ios::trunc} << damaged;
        EXPECT_THROW(Registry::Read(file_), RuntimeError) << damaged;
    }
}

TEST(Json, escapes_what_a_text_must_not_hold)
{
    JsonWriter json;
    json.BeginArray().String("a\"b\\c\n\t\x01").String("\xC3\xA4\xFF").Number(0.1F).Number(1e300 * 10).EndArray();
    EXPECT_EQ(json.Text(),
              "[\n  \"a\\\"b\\\\c\\n\\u0009\\u0001\",\n  \"\xC3\xA4\xEF\xBF\xBD\",\n  0.1,\n  1e+301\n]\n");
}

} // namespace lumora::test
