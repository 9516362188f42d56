#include "zetsettings/platform/posix/MutexObject.h"

#include "zetsettings/platform/posix/StoreLocation.h"

namespace zet {
namespace portable {

MutexObject::MutexObject(const std::wstring& name) : m_name(name), m_free(new std::condition_variable), m_file(name)
{
}

MutexObject::~MutexObject()
{
    if (m_count > 0)
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
    if (!waitUntilFree(guard, deadline))
        return WAIT_TIMEOUT;
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

bool MutexObject::waitUntilFree(std::unique_lock<std::mutex>& guard, const Deadline& deadline)
{
    auto isFree = [this] { return m_owner == std::thread::id(); };
    if (deadline.isInfinite()) {
        m_free->wait(guard, isFree);
        return true;
    }
    return m_free->wait_until(guard, deadline.at(), isFree);
}

// The in-process part is ours; the other processes of the store are waited for without the
// guard, so that the threads of this process can go on with other mutexes (and time out on
// this one) meanwhile.
DWORD MutexObject::claimFile(std::unique_lock<std::mutex>& guard, const Deadline& deadline)
{
    const std::string directory = storeDirectory();
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
