// Last-write times of keys, as Windows keeps them: FILETIME, 100 ns since 1601 (UTC).
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_KEYCLOCK_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_KEYCLOCK_H

#include <cstdint>

#include "zetsettings/platform/posix/Win32Portable.h"

namespace zet {
namespace portable {
namespace registry {

class KeyClock {
public:
    static uint64_t now();
    static FILETIME toFileTime(uint64_t ticks);
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
