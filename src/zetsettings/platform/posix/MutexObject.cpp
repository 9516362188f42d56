#include "zetsettings/platform/posix/MutexObject.h"

#include <algorithm>

#include "zetsettings/platform/posix/StoreLocation.h"

namespace zet {
namespace portable {
namespace {

// How often a waiter looks whether the owning thread of this process has ended.
const std::chrono::milliseconds kEndedOwnerLook(100);

}  // namespace

MutexObject::MutexObject(const std::wstring& name) : m_name(name), m_free(new std::condition_variable), m_file(name)
{
}

MutexObject::~MutexObject()
{
    // Only its owner can release the process-shared lock; dropped on another thread, the lock
    // stays with its owner until that thread ends, as a Windows mutex stays owned after the
    // last CloseHandle.
    if (m_count > 0 && m_owner == std::this_thread::get_id())
        m_file.unlock();
}

DWORD MutexObject::wait(std::unique_lock<std::mutex>& guard, DWORD milliseconds)
{
    const std::thread::id self = std::this_thread::get_id();
    if (m_owner == self && m_count > 0) {
        ++m_count;
        return WAIT_OBJECT_0;
    }
    const Deadline deadline(milliseconds);
    switch (waitUntilFree(guard, deadline)) {
    case Wait::TimedOut:
        return WAIT_TIMEOUT;
    case Wait::OwnerEnded:
        m_owner = self;
        m_count = 1;
        return WAIT_ABANDONED;
    case Wait::Free:
        break;
    }
    m_owner = self;
    if (m_name.empty()) {
        m_count = 1;
        return WAIT_OBJECT_0;
    }
    return claimFile(guard, deadline);
}

bool MutexObject::release(std::unique_lock<std::mutex>&)
{
    if (m_owner != std::this_thread::get_id() || m_count == 0)
        return false;
    if (--m_count > 0)
        return true;
    m_file.unlock();
    becomeFree();
    return true;
}

void MutexObject::forgetAfterFork(std::thread::id survivor)
{
    const bool survivorKeepsIt = m_name.empty() && m_owner == survivor && m_count > 0;
    if (!survivorKeepsIt) {
        m_owner = std::thread::id();
        m_count = 0;
    }
    m_file.forgetAfterFork();
    // Destroying a condition variable that (parent) threads wait on is undefined: leave it.
    (void)m_free.release();
    m_free.reset(new std::condition_variable);
}

MutexObject::Wait MutexObject::waitUntilFree(std::unique_lock<std::mutex>& guard, const Deadline& deadline)
{
    auto isFree = [this] { return m_owner == std::thread::id(); };
    if (isFree())
        return Wait::Free;
    if (!m_name.empty())
        return waitWatchingOwner(guard, deadline);
    if (deadline.isInfinite()) {
        m_free->wait(guard, isFree);
        return Wait::Free;
    }
    return m_free->wait_until(guard, deadline.at(), isFree) ? Wait::Free : Wait::TimedOut;
}

// A thread of this process that ends holding a named mutex never wakes us: its end shows only
// in the process-shared lock, so that is looked at now and then.
MutexObject::Wait MutexObject::waitWatchingOwner(std::unique_lock<std::mutex>& guard, const Deadline& deadline)
{
    auto isFree = [this] { return m_owner == std::thread::id(); };
    for (;;) {
        const Deadline::Clock::time_point look = Deadline::Clock::now() + kEndedOwnerLook;
        if (m_free->wait_until(guard, std::min(look, deadline.at()), isFree))
            return Wait::Free;
        // Only a holder, not a thread still claiming, can have ended with the lock.
        if (m_count > 0 && m_file.takeOverFromEndedHolder())
            return Wait::OwnerEnded;
        if (deadline.hasPassed())
            return Wait::TimedOut;
    }
}

// The in-process part is ours; the other processes of the store are waited for without the
// guard, so that the threads of this process can go on with other mutexes (and time out on
// this one) meanwhile.
DWORD MutexObject::claimFile(std::unique_lock<std::mutex>& guard, const Deadline& deadline)
{
    // No copy: the lock file compares it with the directory it has set up, and copies it only
    // to set up another.
    const char* directory = storeDirectoryName();
    DWORD error = ERROR_SUCCESS;
    guard.unlock();
    const LockFile::Outcome outcome = m_file.lock(directory, deadline, error);
    guard.lock();
    if (outcome == LockFile::Outcome::Acquired || outcome == LockFile::Outcome::Abandoned) {
        m_count = 1;
        return outcome == LockFile::Outcome::Acquired ? WAIT_OBJECT_0 : WAIT_ABANDONED;
    }
    becomeFree();
    if (outcome == LockFile::Outcome::TimedOut)
        return WAIT_TIMEOUT;
    SetLastError(error);
    return WAIT_FAILED;
}

void MutexObject::becomeFree()
{
    m_owner = std::thread::id();
    m_free->notify_one();
}

}  // namespace portable
}  // namespace zet
