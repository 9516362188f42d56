// A Win32 mutex object of this process: owned by one thread at a time, entered again by that
// thread (each wait counted, each release undoing one).
//
// Without a name it orders the threads of this process only. With a name it also holds the
// name's lock file (LockFile) from its first wait to its last release, in the store directory
// current at that first wait: the library builds its named mutex at load time, before anyone
// has chosen a store.
//
// The in-process state is guarded by the one mutex of MutexTable: every member that takes a
// lock argument runs with that guard held through it, and may drop it while blocking.
#ifndef ZETSETTINGS_PLATFORM_POSIX_MUTEXOBJECT_H
#define ZETSETTINGS_PLATFORM_POSIX_MUTEXOBJECT_H

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "zetsettings/platform/posix/Deadline.h"
#include "zetsettings/platform/posix/LockFile.h"
#include "zetsettings/platform/posix/Win32Portable.h"

namespace zet {
namespace portable {

class MutexObject {
public:
    // An empty name makes a mutex of this process only.
    explicit MutexObject(const std::wstring& name);
    // Dropping the last reference on the holding thread releases the mutex. Dropped on another
    // thread, the process-shared lock stays with its holder until that thread ends (then the
    // next taker finds it abandoned) or takes the name again, as a Windows mutex stays owned
    // after its last handle is closed.
    ~MutexObject();

    MutexObject(const MutexObject&) = delete;
    MutexObject& operator=(const MutexObject&) = delete;

    const std::wstring& name() const { return m_name; }

    // WAIT_OBJECT_0, WAIT_ABANDONED (the previous holder died holding it), WAIT_TIMEOUT, or
    // WAIT_FAILED with the last error set.
    DWORD wait(std::unique_lock<std::mutex>& guard, DWORD milliseconds);
    // False when the calling thread doesn't hold the mutex.
    bool release(std::unique_lock<std::mutex>& guard);
    // In the child of a fork, with the guard held by the forking thread (`survivor`). Nobody
    // holds a named mutex in the child; an unnamed one stays with the survivor if it held it.
    void forgetAfterFork(std::thread::id survivor);

private:
    enum class Wait { Free, TimedOut, OwnerEnded };
    Wait waitUntilFree(std::unique_lock<std::mutex>& guard, const Deadline& deadline);
    Wait waitWatchingOwner(std::unique_lock<std::mutex>& guard, const Deadline& deadline);
    DWORD claimFile(std::unique_lock<std::mutex>& guard, const Deadline& deadline);
    void becomeFree();

    const std::wstring m_name;
    // A pointer, so that a fork's child can replace it: threads that waited on it in the
    // parent don't exist in the child.
    std::unique_ptr<std::condition_variable> m_free;
    // Set while a thread claims or holds the mutex; m_count is 0 while it only claims.
    std::thread::id m_owner;
    unsigned long m_count = 0;
    LockFile m_file;
};

}  // namespace portable
}  // namespace zet

#endif
