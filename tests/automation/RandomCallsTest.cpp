#include "RandomCalls.h"

#include "support/TemporaryFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <random>

namespace lumora::test
{

TEST(RandomCalls, end_in_an_answer_or_an_error_with_a_number)
{
    const tests::TemporaryFolder folder;
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder / ""); // numbers make file names too
    int accepted = 0;
    for (unsigned session = 0; session < 12; ++session)
    {
        std::mt19937 random{session};
        RandomCalls calls{[&] { return static_cast<std::uint32_t>(random()); }};
        for (int i = 0; i < 500; ++i)
            accepted += calls.One() ? 1 : 0;
    }
    EXPECT_GT(accepted, 600); // the calls reach something
    std::filesystem::current_path(before);
}

} // namespace lumora::test
