// Pages that lie in the repository and follow the code.
#include "properties-page/PropertiesPage.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <regex>

namespace
{

std::string TextOf(const std::string& name)
{
    std::ifstream file{LUMORA_REPOSITORY + name, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

TEST(PropertiesPage, in_the_repository_is_the_one_that_the_table_makes)
{
    const std::string page = TextOf("docs/properties.md");
    const std::string made = lumora::PropertiesPage();
    const auto differing = std::ranges::mismatch(page, made).in1;
    EXPECT_TRUE(page == made) << "docs/properties.md is out of date from line "
                              << 1 + std::count(page.begin(), differing, '\n')
                              << " on; make it again by: build/<preset>/bin/lumora-properties-page > "
                                 "docs/properties.md";
}

TEST(Conventions, list_every_error_number_that_has_a_name)
{
    const std::string conventions = TextOf("docs/conventions.md");
    const std::regex named{"constexpr std::int32_t (\\w+) = (-?\\d+);"};
    for (const char* header : {"base/RuntimeError.h", "automation/Dispatch.h", "import/Import.h"})
    {
        const std::string text = TextOf(std::string{"src/"} + header);
        ASSERT_TRUE(std::regex_search(text, named)) << header;
        for (std::sregex_iterator row{text.begin(), text.end(), named}; row != std::sregex_iterator{}; ++row)
            EXPECT_NE(conventions.find("\n| " + row->str(2) + " "), std::string::npos) << row->str(1);
    }
}

} // namespace
