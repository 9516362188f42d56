// The first page of a named mutex's lock file, mapped shared by every process of the store.
//
// A process-shared, robust pthread mutex behind a header that says which layout and which boot
// of the machine made it. A mutex state from an earlier boot may name an owner that no longer
// exists but whose thread id lives again, so such a page is made anew. The boot id is written
// last, with release order, so a process that reads it (acquire) as current finds the mutex set
// up.
#ifndef ZETSETTINGS_PLATFORM_POSIX_SHAREDMUTEXPAGE_H
#define ZETSETTINGS_PLATFORM_POSIX_SHAREDMUTEXPAGE_H

#include <pthread.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

namespace zet {
namespace portable {

struct SharedMutexPage {
    std::uint32_t magic;
    // The layout number with the size of pthread_mutex_t, which the C library may change.
    std::uint32_t layout;
    // The 128-bit boot id; the second word is written last.
    std::atomic<std::uint64_t> boot[2];
    pthread_mutex_t mutex;
};

// The size the file is given and the length of its mapping.
const std::size_t kSharedMutexPageBytes = 4096;

static_assert(sizeof(SharedMutexPage) <= kSharedMutexPageBytes, "the header and mutex fit one page");
static_assert(std::atomic<std::uint64_t>::is_always_lock_free, "the boot words are shared between processes");

// The page of the lock file at `path`, made (mode 0666 whatever the umask) and set up if
// need be. Each file is mapped once per process and stays mapped for the life of the process:
// a robust mutex must stay reachable while its holder runs, and another handle of the same
// name must find the same mutex at the same address. Null with errno set on failure.
SharedMutexPage* sharedMutexPageAt(const std::string& path);

// The id of this boot of the machine, as the two words the header keeps.
struct BootId {
    std::uint64_t words[2];
};
const BootId& currentBootId();

}  // namespace portable
}  // namespace zet

#endif
