#include "zetsettings/platform/posix/LockFile.h"

#include <errno.h>
#include <sodium.h>

#include <algorithm>
#include <cstdio>
#include <thread>

#include "zetsettings/platform/posix/SharedMutexPage.h"
#include "zetsettings/platform/posix/StoreLocation.h"
#include "zetsettings/platform/posix/SystemError.h"

namespace zet {
namespace portable {
namespace {

// Far below NAME_MAX (255) with the prefix and suffix around it.
const std::size_t kLongestPlainEncoding = 200;
const std::size_t kNameHashBytes = 16;

bool isKept(wchar_t c)
{
    return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z') || (c >= L'0' && c <= L'9') || c == L'-' ||
           c == L'_';
}

std::string encode(const std::wstring& name)
{
    std::string encoded;
    for (wchar_t c : name) {
        if (isKept(c)) {
            encoded += static_cast<char>(c);
        } else {
            char escaped[16];
            std::snprintf(escaped, sizeof(escaped), "~%08X", static_cast<unsigned>(c));
            encoded += escaped;
        }
    }
    return encoded;
}

std::string hashed(const std::string& encoded)
{
    unsigned char digest[kNameHashBytes];
    crypto_generichash(digest, sizeof(digest), reinterpret_cast<const unsigned char*>(encoded.data()),
                       encoded.size(), nullptr, 0);
    char hex[2 * kNameHashBytes + 1];
    sodium_bin2hex(hex, sizeof(hex), digest, sizeof(digest));
    return hex;
}

// A wait with a time-out tries again and again, backing off, so a short wait stays short. Not
// pthread_mutex_timedlock: ThreadSanitizer doesn't see a lock that it hands over from a dead
// owner (nor one from pthread_mutex_clocklock at all), and would then report its release.
// The library itself waits without a time-out.
int lockUntil(pthread_mutex_t& mutex, const Deadline& deadline)
{
    if (deadline.isInfinite())
        return pthread_mutex_lock(&mutex);
    std::chrono::milliseconds pause(1);
    for (;;) {
        const int result = pthread_mutex_trylock(&mutex);
        if (result != EBUSY || deadline.hasPassed())
            return result;
        std::this_thread::sleep_for(std::min<Deadline::Clock::duration>(pause, deadline.remaining()));
        pause = std::min(pause * 2, std::chrono::milliseconds(10));
    }
}

}  // namespace

LockFile::LockFile(const std::wstring& name) : m_fileName(fileName(name)) {}

std::string LockFile::fileName(const std::wstring& name)
{
    const std::string encoded = encode(name);
    // '#' never appears in a plain encoding, so the two families can't collide.
    if (encoded.size() <= kLongestPlainEncoding)
        return "mutex-" + encoded + ".lock";
    return "mutex#" + hashed(encoded) + ".lock";
}

LockFile::Outcome LockFile::lock(const char* directory, const Deadline& deadline, DWORD& error)
{
    error = setUpFor(directory);
    if (error != ERROR_SUCCESS)
        return Outcome::Failed;
    const Outcome outcome = take(deadline, error);
    m_locked = outcome == Outcome::Acquired || outcome == Outcome::Abandoned;
    return outcome;
}

bool LockFile::takeOverFromEndedHolder()
{
    if (!m_page || !m_locked)
        return false;
    const int result = pthread_mutex_trylock(&m_page->mutex);
    if (result == EOWNERDEAD)
        pthread_mutex_consistent(&m_page->mutex);
    return result == EOWNERDEAD || result == 0;
}

void LockFile::unlock()
{
    if (!m_locked)
        return;
    pthread_mutex_unlock(&m_page->mutex);
    m_locked = false;
}

void LockFile::forgetAfterFork()
{
    // The lock is the parent thread's; the mapping stays good in the child.
    m_locked = false;
}

DWORD LockFile::setUpFor(const char* directory)
{
    if (m_page && m_directory == directory)
        return ERROR_SUCCESS;
    if (const int failure = ensureStoreDirectory(directory))
        return win32ErrorFromErrno(failure);
    SharedMutexPage* page = sharedMutexPageAt(std::string(directory) + "/" + m_fileName);
    if (!page)
        return win32ErrorFromErrno(errno);
    m_page = page;
    m_directory = directory;
    return ERROR_SUCCESS;
}

LockFile::Outcome LockFile::take(const Deadline& deadline, DWORD& error)
{
    error = ERROR_SUCCESS;
    switch (const int result = lockUntil(m_page->mutex, deadline)) {
    case 0:
    // This thread holds it already, through a handle it closed while holding: it keeps it.
    case EDEADLK:
        return Outcome::Acquired;
    case EOWNERDEAD:
        pthread_mutex_consistent(&m_page->mutex);
        return Outcome::Abandoned;
    case EBUSY:
        return Outcome::TimedOut;
    default:
        error = win32ErrorFromErrno(result);
        return Outcome::Failed;
    }
}

}  // namespace portable
}  // namespace zet
