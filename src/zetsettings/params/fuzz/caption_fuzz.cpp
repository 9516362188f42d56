// libFuzzer target: arbitrary registry values as the two captions that LoadFromRegistry takes
// from the system. Any broken check aborts, so the run counts it.
#include <cstdio>
#include <cstdlib>

#include "CaptionFuzzBody.h"
#include "zetsettings/store/fuzz/FuzzStore.h"

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    zetfuzz::useStoreOfOwn("zetsettings-caption-fuzz");
    zetfuzz::prepareCaptionStore();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string failure = zetfuzz::runCaptionLoad(data, size);
    if (!failure.empty()) {
        std::fprintf(stderr, "caption fuzz check failed: %s\n", failure.c_str());
        std::abort();
    }
    return 0;
}
