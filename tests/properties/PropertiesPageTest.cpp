// The reference page that lies in the repository.
#include "properties/PropertiesPage.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace
{

TEST(PropertiesPage, in_the_repository_is_the_one_that_the_table_makes)
{
    std::ifstream file{LUMORA_PROPERTIES_PAGE, std::ios::binary};
    const std::string page{std::istreambuf_iterator<char>{file}, {}};
    const std::string made = lumora::PropertiesPage();
    const auto differing = std::ranges::mismatch(page, made).in1;
    EXPECT_TRUE(page == made) << LUMORA_PROPERTIES_PAGE << " is out of date from line "
                              << 1 + std::count(page.begin(), differing, '\n')
                              << " on; make it again by: build/<preset>/bin/lumora-properties-page > "
                                 "docs/properties.md";
}

} // namespace
