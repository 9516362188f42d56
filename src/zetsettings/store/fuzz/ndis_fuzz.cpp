// libFuzzer target: arbitrary registry values as FilterClasses, then the NDIS stacking order
// check. Any broken check aborts, so the run counts it.
#include <cstdio>
#include <cstdlib>

#include "FuzzStore.h"
#include "NdisFuzzBody.h"

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    zetfuzz::useStoreOfOwn("zetsettings-ndis-fuzz");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string failure = zetfuzz::runNdisCheck(data, size);
    if (!failure.empty()) {
        std::fprintf(stderr, "NDIS check fuzz failed: %s\n", failure.c_str());
        std::abort();
    }
    return 0;
}
