#include "zetsettings/platform/posix/MachineKey.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include "zetsettings/platform/posix/StoreFiles.h"
#include "zetsettings/platform/posix/StoreLocation.h"
#include "zetsettings/platform/posix/SystemError.h"

namespace zet {
namespace portable {
namespace {

// A key without its store is only this user's or root's: there is no store owner to go by.
StoreOwnership ownershipOf(const std::string& directory)
{
    StoreOwnership store;
    if (!store.readFrom(directory)) {
        store = StoreOwnership();
        store.owner = geteuid();
    }
    return store;
}

bool sameTime(const timespec& a, const timespec& b)
{
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

// Of one descriptor, so device and inode can't differ. The link count is there because a file
// renamed over the key, or removing it, drops it; renaming the key itself changes its ctime.
bool sameFile(const struct stat& a, const struct stat& b)
{
    return a.st_nlink == b.st_nlink && a.st_size == b.st_size && a.st_mode == b.st_mode && a.st_uid == b.st_uid &&
           sameTime(a.st_mtim, b.st_mtim) && sameTime(a.st_ctim, b.st_ctim);
}

std::string parentOf(const std::string& path)
{
    const std::string::size_type slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// Without the directory's own sync, a crash could lose the name of a key already in use.
void syncDirectory(const std::string& directory)
{
    const int fd = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return;
    fsync(fd);
    close(fd);
}

// Places the candidate under the key's name unless a key is there already. link() never
// replaces; rename with RENAME_NOREPLACE serves file systems without hard links.
int placeWithoutReplacing(const std::string& temporary, const std::string& path)
{
    if (link(temporary.c_str(), path.c_str()) == 0)
        return 0;
    const int linkError = errno;
    if (linkError != EPERM && linkError != ENOTSUP && linkError != ENOSYS)
        return linkError;
    if (renameat2(AT_FDCWD, temporary.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) == 0)
        return 0;
    return errno;
}

}  // namespace

MachineKey::MachineKey() : m_bytes(), m_file(), m_fd(-1) {}

MachineKey::~MachineKey()
{
    forget();
}

void MachineKey::forget()
{
    sodium_memzero(m_bytes, sizeof(m_bytes));
    if (m_fd >= 0)
        close(m_fd);
    m_fd = -1;
}

void MachineKey::makeUnsaved()
{
    forget();
    randombytes_buf(m_bytes, sizeof(m_bytes));
}

bool MachineKey::fileUnchanged() const
{
    struct stat now;
    return m_fd >= 0 && fstat(m_fd, &now) == 0 && now.st_nlink > 0 && sameFile(m_file, now);
}

DWORD MachineKey::load(const std::string& directory)
{
    forget();
    const int fd = open(machineKeyPath(directory).c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (fd < 0)
        return win32ErrorFromErrno(errno);
    const DWORD result = readFrom(fd, ownershipOf(directory));
    if (result == ERROR_SUCCESS) {
        m_fd = fd;
        return result;
    }
    close(fd);
    sodium_memzero(m_bytes, sizeof(m_bytes));
    return result;
}

DWORD MachineKey::loadOrCreate(const std::string& directory)
{
    const DWORD loaded = load(directory);
    if (loaded != ERROR_FILE_NOT_FOUND)
        return loaded;
    return create(directory);
}

DWORD MachineKey::readFrom(int fd, const StoreOwnership& store)
{
    struct stat info;
    if (fstat(fd, &info) != 0 || untrustedKeyReason(info, store))
        return ERROR_ACCESS_DENIED;
    if (info.st_size != static_cast<off_t>(kSize))
        return ERROR_INVALID_DATA;
    std::size_t got = 0;
    while (got < kSize) {
        const ssize_t read_ = read(fd, m_bytes + got, kSize - got);
        if (read_ < 0 && errno == EINTR)
            continue;
        if (read_ < 0)
            return win32ErrorFromErrno(errno);
        if (read_ == 0)
            return ERROR_INVALID_DATA;
        got += static_cast<std::size_t>(read_);
    }
    m_file = info;
    return ERROR_SUCCESS;
}

DWORD MachineKey::create(const std::string& storeDirectory)
{
    const std::string path = machineKeyPath(storeDirectory);
    const std::string directory = parentOf(path);
    if (const int failure = ensureStoreDirectory(directory))
        return win32ErrorFromErrno(failure);
    char suffix[64];
    snprintf(suffix, sizeof(suffix), ".new-%ld-%08x", static_cast<long>(getpid()), randombytes_random());
    const std::string temporary = path + suffix;

    randombytes_buf(m_bytes, sizeof(m_bytes));
    DWORD result = writeCandidate(temporary, ownershipOf(storeDirectory));
    if (result == ERROR_SUCCESS) {
        const int placed = placeWithoutReplacing(temporary, path);
        if (placed == 0)
            syncDirectory(directory);
        else
            result = placed == EEXIST ? ERROR_ALREADY_EXISTS : win32ErrorFromErrno(placed);
    }
    unlink(temporary.c_str());
    if (result == ERROR_ALREADY_EXISTS) {
        // Another process placed its key first: that one is the machine's.
        sodium_memzero(m_bytes, sizeof(m_bytes));
        return load(storeDirectory);
    }
    if (result != ERROR_SUCCESS)
        sodium_memzero(m_bytes, sizeof(m_bytes));
    return result;
}

DWORD MachineKey::writeCandidate(const std::string& temporary, const StoreOwnership& store)
{
    const int fd = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (fd < 0)
        return win32ErrorFromErrno(errno);
    // The store's owner and group, whatever the umask and whoever makes it: a key that others
    // could read would protect nothing, one that its store's users can't read opens nothing.
    store.adopt(fd, store.keyMode());
    const bool written = writeAll(fd, m_bytes, sizeof(m_bytes)) && fsync(fd) == 0;
    const int error = errno;
    close(fd);
    return written ? ERROR_SUCCESS : win32ErrorFromErrno(error);
}

}  // namespace portable
}  // namespace zet
