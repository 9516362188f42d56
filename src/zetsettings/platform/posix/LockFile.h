// The file that carries a named mutex between the processes of one store.
//
// One file per mutex name, inside the store directory, named by fileName(). Its first page,
// mapped shared by every process that uses the mutex, holds a process-shared, robust pthread
// mutex behind a header (magic, layout, the boot it was made in). Taking and releasing it when
// nobody contends are atomic operations only, with no system call.
//
// Abandonment: a thread (or process) that ends holding the mutex leaves it to the next taker
// as "owner died", which reports Abandoned, as Windows reports an abandoned mutex.
//
// Set-up, once per process and lock file (SharedMutexPage): the file is opened (and made, with
// the store's owner, group and lock mode (StoreFiles.h) whatever the umask), checked to be a linked regular file, and mapped for the life of the
// process; the descriptor is then closed. A header that is missing, of another layout, or from an earlier
// boot (a machine that went down while somebody held the mutex) is made again under flock() of
// the file, checked again once the flock is held; the boot id is written last.
//
// Every user of the store may open the file read-write, and in a store that others may read,
// every local user, as the product asks for its mutex with attributes meant to let all of its
// processes open it (a null DACL on Windows). A process that can't open the file read-write (a
// read-only file system, a file made by an older build with mode 0644, a store it may not use)
// gets Failed with ERROR_ACCESS_DENIED, as Windows fails to open a mutex it may not use.
//
// A store directory removed and made again under a running process is not noticed by that
// process: it keeps the mutex of the store it set up with, as the registry keeps its open store.
//
// Not thread-safe: the in-process mutex lets only its claiming or owning thread in here.
#ifndef ZETSETTINGS_PLATFORM_POSIX_LOCKFILE_H
#define ZETSETTINGS_PLATFORM_POSIX_LOCKFILE_H

#include <string>

#include "zetsettings/platform/posix/Deadline.h"
#include "zetsettings/platform/posix/Win32Portable.h"

namespace zet {
namespace portable {

struct SharedMutexPage;

class LockFile {
public:
    enum class Outcome { Acquired, Abandoned, TimedOut, Failed };

    // The file of the mutex `name` (see fileName), in whichever store directory it is locked.
    explicit LockFile(const std::wstring& name);
    // A lock still held stays with its holding thread (see MutexObject).
    ~LockFile() = default;

    LockFile(const LockFile&) = delete;
    LockFile& operator=(const LockFile&) = delete;

    // Locks the file in the store `directory`, making both if missing. On Failed, `error` holds
    // the Windows error.
    Outcome lock(const char* directory, const Deadline& deadline, DWORD& error);
    // While another thread of this process holds the lock: takes it, without waiting, if that
    // thread has ended. The lock then passes to the calling thread.
    bool takeOverFromEndedHolder();
    void unlock();
    // In the child of a fork: the lock, if held, belongs to the parent's thread. Forget it
    // without touching it.
    void forgetAfterFork();

    // The file name for a mutex name: letters, digits, '-' and '_' kept, every other character
    // as '~' and eight hex digits, so nothing can leave the directory and distinct names never
    // meet; names whose encoding is too long for a file name go by a hash.
    static std::string fileName(const std::wstring& name);

private:
    DWORD setUpFor(const char* directory);
    Outcome take(const Deadline& deadline, DWORD& error);

    SharedMutexPage* m_page = nullptr;
    bool m_locked = false;
    const std::string m_fileName;
    // The store directory of m_page.
    std::string m_directory;
};

}  // namespace portable
}  // namespace zet

#endif
