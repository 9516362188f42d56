#include "ResidentMemory.h"

#include <windows.h>

#include <psapi.h>

namespace opsuite {

double residentBytes()
{
    PROCESS_MEMORY_COUNTERS counters = {};
    counters.cb = sizeof(counters);
    if (!GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters)))
        return 0;
    return static_cast<double>(counters.WorkingSetSize);
}

}  // namespace opsuite
