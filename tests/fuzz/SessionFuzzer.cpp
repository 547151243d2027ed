// Random bytes as a session: understood or refused with one sentence, never more.
#include "platform/automation/RuntimeError.h"
#include "platform/headless/SessionScript.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    try
    {
        const auto script = lumora::headless::ParseSession({reinterpret_cast<const char*>(data), size}, "fuzz");
        if (script.UnnamedShots() > static_cast<int>(script.steps.size()))
            std::abort();
    }
    catch (const lumora::RuntimeError& failure)
    {
        if (failure.Number() != lumora::error::InvalidCall || failure.Description().rfind("fuzz:", 0) != 0)
            std::abort();
    }
    return 0;
}
