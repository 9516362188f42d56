#include "ResidentMemory.h"

#include <unistd.h>

#include <fstream>

namespace opsuite {

double residentBytes()
{
    // statm: total pages, then resident pages.
    long total = 0, resident = 0;
    std::ifstream statm("/proc/self/statm");
    if (!(statm >> total >> resident))
        return 0;
    return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

}  // namespace opsuite
