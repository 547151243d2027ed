// Random bytes as a session: understood or refused with one sentence, never more.
#include "base/RuntimeError.h"
#include "fuzz/Fuzzing.h"
#include "hosts/headless/SessionScript.h"

using lumora::fuzz::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    try
    {
        const auto script = lumora::headless::ParseSession({reinterpret_cast<const char*>(data), size}, "fuzz");
        Require(script.UnnamedShots() <= static_cast<int>(script.steps.size()));
    }
    catch (const lumora::RuntimeError& failure)
    {
        Require(failure.Number() == lumora::error::InvalidCall && failure.Description().starts_with("fuzz:"));
    }
    return 0;
}
