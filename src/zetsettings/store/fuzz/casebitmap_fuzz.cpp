// libFuzzer target: arbitrary wide names through the network name to value name conversion
// and back. Any broken check aborts, so the run counts it.
#include <cstdio>
#include <cstdlib>

#include "CaseBitmapFuzzBody.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string failure = zetfuzz::runCaseBitmap(data, size);
    if (!failure.empty()) {
        std::fprintf(stderr, "case bitmap fuzz check failed: %s\n", failure.c_str());
        std::abort();
    }
    return 0;
}
