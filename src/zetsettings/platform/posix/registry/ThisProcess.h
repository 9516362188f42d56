// This process's id without a system call on every registry call; a handler run in the child
// of every fork() keeps it right. (A child made by raw clone() is not supported.)
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_THISPROCESS_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_THISPROCESS_H

#include <sys/types.h>

namespace zet {
namespace portable {
namespace registry {

class ThisProcess {
public:
    static pid_t id();
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
