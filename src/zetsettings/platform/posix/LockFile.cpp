#include "zetsettings/platform/posix/LockFile.h"

#include <errno.h>
#include <fcntl.h>
#include <sodium.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <thread>

#include "zetsettings/platform/posix/StoreLocation.h"
#include "zetsettings/platform/posix/SystemError.h"

namespace zet {
namespace portable {
namespace {

const char kHeld = '1';
const char kReleased = '0';
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

}  // namespace

LockFile::~LockFile()
{
    if (m_locked && m_pid == getpid())
        unlock();
    closeFile();
}

std::string LockFile::fileName(const std::wstring& name)
{
    const std::string encoded = encode(name);
    // '#' never appears in a plain encoding, so the two families can't collide.
    if (encoded.size() <= kLongestPlainEncoding)
        return "mutex-" + encoded + ".lock";
    return "mutex#" + hashed(encoded) + ".lock";
}

LockFile::Outcome LockFile::lock(const std::string& directory, const std::wstring& name,
                                 const Deadline& deadline, DWORD& error)
{
    const std::string path = directory + "/" + fileName(name);
    error = openFor(directory, path);
    if (error != ERROR_SUCCESS)
        return Outcome::Failed;
    if (!take(deadline, error))
        return error == ERROR_SUCCESS ? Outcome::TimedOut : Outcome::Failed;
    m_locked = true;
    const bool abandoned = m_writable && wasLeftHeld();
    markHeld(true);
    return abandoned ? Outcome::Abandoned : Outcome::Acquired;
}

void LockFile::unlock()
{
    if (!m_locked)
        return;
    markHeld(false);
    flock(m_fd, LOCK_UN);
    m_locked = false;
}

void LockFile::forgetAfterFork()
{
    closeFile();
    m_locked = false;
}

DWORD LockFile::openFor(const std::string& directory, const std::string& path)
{
    if (m_fd >= 0 && m_pid == getpid() && m_path == path && stillNamedBy(path))
        return ERROR_SUCCESS;
    closeFile();
    if (const int failure = ensureStoreDirectory(directory))
        return win32ErrorFromErrno(failure);

    bool writable = true;
    int fd = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0644);
    if (fd >= 0) {
        // Whatever our umask, other users of the store must be able to open the file to lock it.
        fchmod(fd, 0644);
    } else if (errno == EEXIST) {
        fd = open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
        if (fd < 0 && errno == EACCES) {
            fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
            writable = false;
        }
    }
    if (fd < 0)
        return win32ErrorFromErrno(errno);

    struct stat info;
    if (fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        close(fd);
        return ERROR_ACCESS_DENIED;
    }
    m_fd = fd;
    m_writable = writable;
    m_pid = getpid();
    m_device = info.st_dev;
    m_inode = info.st_ino;
    m_path = path;
    return ERROR_SUCCESS;
}

// A store directory that was removed and made again holds a new file under the old name; a
// lock on the old one would order nobody.
bool LockFile::stillNamedBy(const std::string& path) const
{
    struct stat info;
    return stat(path.c_str(), &info) == 0 && info.st_dev == m_device && info.st_ino == m_inode;
}

bool LockFile::take(const Deadline& deadline, DWORD& error)
{
    error = ERROR_SUCCESS;
    if (deadline.isInfinite()) {
        while (flock(m_fd, LOCK_EX) != 0) {
            if (errno != EINTR) {
                error = win32ErrorFromErrno(errno);
                return false;
            }
        }
        return true;
    }
    // flock has no timeout: poll, backing off, so a short wait stays short.
    std::chrono::milliseconds pause(1);
    for (;;) {
        if (flock(m_fd, LOCK_EX | LOCK_NB) == 0)
            return true;
        if (errno == EINTR)
            continue;
        if (errno != EWOULDBLOCK) {
            error = win32ErrorFromErrno(errno);
            return false;
        }
        if (deadline.hasPassed())
            return false;
        std::this_thread::sleep_for(std::min<Deadline::Clock::duration>(pause, deadline.remaining()));
        pause = std::min(pause * 2, std::chrono::milliseconds(10));
    }
}

void LockFile::markHeld(bool held)
{
    if (!m_writable)
        return;
    const char mark = held ? kHeld : kReleased;
    // A mark that can't be written only costs the report of an abandonment.
    if (pwrite(m_fd, &mark, 1, 0) != 1)
        return;
}

bool LockFile::wasLeftHeld() const
{
    char mark = kReleased;
    return pread(m_fd, &mark, 1, 0) == 1 && mark == kHeld;
}

void LockFile::closeFile()
{
    if (m_fd >= 0)
        close(m_fd);
    m_fd = -1;
    m_path.clear();
}

}  // namespace portable
}  // namespace zet
