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

TEST(RandomCalls, texts_of_a_hundred_megabytes_are_handled)
{
    automation::HostFace host;
    const std::string huge(100U << 20, '7');
    const auto viewport = AsDispatchable(host.CallWith("CreateLive", {Variant{}}));
    EXPECT_THROW(viewport->Put("FieldOfView", huge), RuntimeError);
    EXPECT_THROW(viewport->Call(huge), RuntimeError);
    viewport->Put("BackgroundTexture", huge);
    EXPECT_EQ(std::get<std::string>(viewport->Get("BackgroundTexture")).size(), huge.size());
}

} // namespace lumora::test
