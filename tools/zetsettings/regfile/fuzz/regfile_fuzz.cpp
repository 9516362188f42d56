// libFuzzer target: arbitrary bytes as a .reg file, and what reads written and read back.
// Any broken check aborts, so the run counts it.
#include <cstdio>
#include <cstdlib>

#include "RegFileFuzzBody.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string failure = zetfuzz::runRegFile(data, size);
    if (!failure.empty()) {
        std::fprintf(stderr, ".reg fuzz check failed: %s\n", failure.c_str());
        std::abort();
    }
    return 0;
}
