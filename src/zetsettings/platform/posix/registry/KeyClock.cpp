#include "zetsettings/platform/posix/registry/KeyClock.h"

#include <time.h>

namespace zet {
namespace portable {
namespace registry {
namespace {

const uint64_t kTicksFrom1601To1970 = 116444736000000000ull;

}  // namespace

uint64_t KeyClock::now()
{
    struct timespec wall;
    clock_gettime(CLOCK_REALTIME, &wall);
    return kTicksFrom1601To1970 + static_cast<uint64_t>(wall.tv_sec) * 10000000ull +
           static_cast<uint64_t>(wall.tv_nsec) / 100;
}

FILETIME KeyClock::toFileTime(uint64_t ticks)
{
    FILETIME time;
    time.dwLowDateTime = static_cast<DWORD>(ticks & 0xFFFFFFFFu);
    time.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
    return time;
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
