// The file that carries a named mutex between the processes of one store.
//
// One file per mutex name, inside the store directory, named by fileName(). The lock is an
// flock() on a descriptor opened once per process and store, with O_CLOEXEC, and kept open while
// held: flock belongs to the open file description, so no other close() in the process can drop
// it (as one would a classic fcntl lock), and the kernel drops it when the holder dies.
//
// Abandonment: while held, the first byte of the file is '1'; a clean release writes '0'. A
// holder that dies leaves '1' behind, so the next owner learns that the mutex was abandoned. A
// writable handle keeps that byte in a shared mapping of the file's first page, so marking
// costs no system call (the byte is allocated before mapping; only truncating the file by hand
// while a process has it mapped would fault that process). A process that may only read the
// file (another user's store) can lock it, but neither marks nor reports abandonment.
//
// A take and a release cost two flock() calls and one fstat(): the descriptor is kept while the
// file is still linked, so a store directory that was removed (and perhaps made again) is
// noticed; a store directory moved away whole is not, as the registry keeps using it too.
//
// Not thread-safe: the in-process mutex lets only its claiming or owning thread in here.
#ifndef ZETSETTINGS_PLATFORM_POSIX_LOCKFILE_H
#define ZETSETTINGS_PLATFORM_POSIX_LOCKFILE_H

#include <sys/types.h>

#include <string>

#include "zetsettings/platform/posix/Deadline.h"
#include "zetsettings/platform/posix/Win32Portable.h"

namespace zet {
namespace portable {

class LockFile {
public:
    enum class Outcome { Acquired, Abandoned, TimedOut, Failed };

    // The file of the mutex `name` (see fileName), in whichever store directory it is locked.
    explicit LockFile(const std::wstring& name);
    // Drops a lock still held, as a clean release.
    ~LockFile();

    LockFile(const LockFile&) = delete;
    LockFile& operator=(const LockFile&) = delete;

    // Locks the file in the store `directory`, making both if missing. On Failed, `error` holds
    // the Windows error.
    Outcome lock(const std::string& directory, const Deadline& deadline, DWORD& error);
    void unlock();
    // In the child of a fork: the descriptor is the parent's open file description, and so is
    // any lock on it. Let go of it without touching the lock.
    void forgetAfterFork();

    // The file name for a mutex name: letters, digits, '-' and '_' kept, every other character
    // as '~' and eight hex digits, so nothing can leave the directory and distinct names never
    // meet; names whose encoding is too long for a file name go by a hash.
    static std::string fileName(const std::wstring& name);

private:
    DWORD openFor(const std::string& directory);
    bool stillLinked() const;
    void mapMark();
    bool take(const Deadline& deadline, DWORD& error);
    void markHeld(bool held);
    bool wasLeftHeld() const;
    void closeFile();

    int m_fd = -1;
    bool m_writable = false;
    bool m_locked = false;
    pid_t m_pid = 0;
    // The file's first byte, shared with every process that maps it; null when not mapped.
    volatile char* m_mark = nullptr;
    const std::string m_fileName;
    // The store directory of the open descriptor; empty when none is open.
    std::string m_directory;
};

}  // namespace portable
}  // namespace zet

#endif
