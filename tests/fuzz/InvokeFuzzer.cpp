// Every call a fuzzer can think of: its bytes choose the objects, members and arguments.
#include "automation/RandomCalls.h"
#include "fuzz/Fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    lumora::fuzz::Bytes bytes{data, size};
    lumora::test::RandomCalls calls{[&]() -> std::uint32_t
                                    {
                                        const std::uint32_t low = bytes.Next();
                                        return std::uint32_t{bytes.Next()} << 8 | low;
                                    }};
    while (bytes.AreLeft())
        calls.One();
    return 0;
}
