#include "zetsettings/platform/posix/StoreFiles.h"

#include <errno.h>
#include <unistd.h>

namespace zet {
namespace portable {

bool writeAll(int fd, const void* bytes, std::size_t size)
{
    const char* at = static_cast<const char*>(bytes);
    while (size > 0) {
        const ssize_t written = write(fd, at, size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        at += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

bool StoreOwnership::readFrom(const std::string& directory)
{
    struct stat info;
    if (stat(directory.c_str(), &info) != 0)
        return false;
    owner = info.st_uid;
    group = info.st_gid;
    directoryMode = info.st_mode & 07777;
    return true;
}

mode_t StoreOwnership::dataMode() const
{
    mode_t mode = 0600;
    if (directoryMode & S_IWGRP)
        mode |= 0060;
    else if (directoryMode & S_IRGRP)
        mode |= 0040;
    if (directoryMode & S_IROTH)
        mode |= 0004;
    return mode;
}

mode_t StoreOwnership::lockMode() const
{
    mode_t mode = 0600;
    if (directoryMode & (S_IRGRP | S_IWGRP))
        mode |= 0060;
    if (directoryMode & S_IROTH)
        mode |= 0006;
    return mode;
}

mode_t StoreOwnership::keyMode() const
{
    return isGroupStore() ? 0640 : 0600;
}

void StoreOwnership::adopt(int fd, mode_t mode) const
{
    // Each may fail (a group this process isn't in): the mode is what matters most.
    if (geteuid() == 0)
        (void)fchown(fd, owner, group);
    else
        (void)fchown(fd, static_cast<uid_t>(-1), group);
    (void)fchmod(fd, mode);
}

void StoreOwnership::adopt(const std::string& path, mode_t mode) const
{
    if (geteuid() == 0)
        (void)lchown(path.c_str(), owner, group);
    else
        (void)lchown(path.c_str(), static_cast<uid_t>(-1), group);
    (void)chmod(path.c_str(), mode);
}

const char* untrustedKeyReason(const struct stat& key, const StoreOwnership& store)
{
    if (!S_ISREG(key.st_mode))
        return "not a regular file";
    if (key.st_uid != 0 && key.st_uid != store.owner)
        return "owned by a user who is neither root nor the store's owner";
    if (key.st_mode & (S_IWGRP | S_IWOTH))
        return "writable by its group or by others";
    if (key.st_mode & (S_IROTH | S_IXOTH))
        return "readable by others";
    if ((key.st_mode & (S_IRGRP | S_IXGRP)) && !store.isGroupStore())
        return "readable by its group, and the store is not a group store";
    if ((key.st_mode & S_IRGRP) && key.st_gid != store.group)
        return "readable by a group other than the store's";
    return nullptr;
}

}  // namespace portable
}  // namespace zet
