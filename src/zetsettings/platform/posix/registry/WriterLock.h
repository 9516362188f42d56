// The store's writers, one at a time across processes, by flock on LMDB's own descriptor of
// data.mdb, before LMDB's writer mutex is asked for.
//
// LMDB's writer mutex is a robust process-shared pthread mutex. With writers of several
// processes waiting on it and some of them killed with SIGKILL, a waiter was seen asleep for
// good on a mutex that nobody held (the crash test of zetsettings_stress). A flock is the
// kernel's own and is dropped when its holder dies, so with it in front LMDB's mutex is never
// waited for by two processes at once.
//
// LMDB takes no flock of its own, and on a local file system flock and LMDB's fcntl locks
// don't meet. The lock holds a duplicate of LMDB's descriptor: the same open file, so no file
// is opened a second time, but a number that stays valid if the store's environment is closed
// while a writer waits (a map that could not be made again). LMDB's fcntl locks are on
// lock.mdb, so closing the duplicate drops none of them. Threads of the process take turns on
// an in-process mutex first, since a flock belongs to the open file, not to a thread.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_WRITERLOCK_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_WRITERLOCK_H

#include <mutex>

namespace zet {
namespace portable {
namespace registry {

class WriterLock {
public:
    // A descriptor below 0, or one that can't be duplicated, leaves LMDB's mutex alone in charge.
    explicit WriterLock(int descriptor);
    ~WriterLock();

    WriterLock(const WriterLock&) = delete;
    WriterLock& operator=(const WriterLock&) = delete;

    void lock();
    void unlock();

private:
    int m_fd;
    std::mutex m_threads;
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
