#include "zetsettings/platform/posix/LockFile.h"

#include <errno.h>
#include <fcntl.h>
#include <sodium.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <thread>

#include "zetsettings/platform/posix/StoreLocation.h"
#include "zetsettings/platform/posix/SystemError.h"
#include "zetsettings/platform/posix/registry/ThisProcess.h"

namespace zet {
namespace portable {
namespace {

using registry::ThisProcess;

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

LockFile::LockFile(const std::wstring& name) : m_fileName(fileName(name)) {}

LockFile::~LockFile()
{
    if (m_locked && m_pid == ThisProcess::id())
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

LockFile::Outcome LockFile::lock(const std::string& directory, const Deadline& deadline, DWORD& error)
{
    error = openFor(directory);
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

DWORD LockFile::openFor(const std::string& directory)
{
    if (m_fd >= 0 && m_pid == ThisProcess::id() && m_directory == directory && stillLinked())
        return ERROR_SUCCESS;
    closeFile();
    const std::string path = directory + "/" + m_fileName;
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
    m_pid = ThisProcess::id();
    m_directory = directory;
    if (writable)
        mapMark();
    return ERROR_SUCCESS;
}

// A store directory that was removed (and perhaps made again) leaves our file without a name;
// a lock on it would order nobody. Asked of the descriptor, as a lookup of the path costs more.
bool LockFile::stillLinked() const
{
    struct stat info;
    return fstat(m_fd, &info) == 0 && info.st_nlink > 0;
}

// Touching a mapped page past the end of the file faults, so the byte is given a block first;
// fallocate never changes a byte that is there, so a mark left by a dead holder survives.
// Without the mapping, the mark falls back to pread and pwrite.
void LockFile::mapMark()
{
    if (posix_fallocate(m_fd, 0, 1) != 0)
        return;
    void* page = mmap(nullptr, 1, PROT_READ | PROT_WRITE, MAP_SHARED, m_fd, 0);
    if (page != MAP_FAILED)
        m_mark = static_cast<volatile char*>(page);
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
    if (m_mark) {
        *m_mark = mark;
        return;
    }
    // A mark that can't be written only costs the report of an abandonment.
    if (pwrite(m_fd, &mark, 1, 0) != 1)
        return;
}

bool LockFile::wasLeftHeld() const
{
    if (m_mark)
        return *m_mark == kHeld;
    char mark = kReleased;
    return pread(m_fd, &mark, 1, 0) == 1 && mark == kHeld;
}

void LockFile::closeFile()
{
    if (m_mark)
        munmap(const_cast<char*>(m_mark), 1);
    m_mark = nullptr;
    if (m_fd >= 0)
        close(m_fd);
    m_fd = -1;
    m_directory.clear();
}

}  // namespace portable
}  // namespace zet
