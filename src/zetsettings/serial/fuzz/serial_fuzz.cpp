// libFuzzer target: arbitrary bytes into the read of every record and of the fallback key
// map, and what was read written back. Any broken check aborts, so the run counts it.
#include <cstdio>
#include <cstdlib>

#include "SerialFuzzBody.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string failure = zetfuzz::runOne(data, size);
    if (!failure.empty()) {
        std::fprintf(stderr, "serial fuzz check failed: %s\n", failure.c_str());
        std::abort();
    }
    return 0;
}
