// Every call a fuzzer can think of: its bytes choose the objects, members and arguments.
#include "automation/RandomCalls.h"

#include <cstddef>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::size_t at = 0;
    lumora::test::RandomCalls calls{[&]() -> std::uint32_t
                                    {
                                        const std::uint32_t low = at < size ? data[at] : 0;
                                        const std::uint32_t high = at + 1 < size ? data[at + 1] : 0;
                                        at += 2;
                                        return high << 8 | low;
                                    }};
    while (at < size)
        calls.One();
    return 0;
}
