// Who may use a store, as its directory says: root, the directory's owner, and the members of
// its group when the directory lets its group write (a group store). Every file that belongs to
// the store takes its owner and group from the directory and a mode derived from the
// directory's, so that whoever makes a file (root included) leaves it usable by the same people:
//
//   directory  data files  lock files  machine key
//   0700       0600        0600        0600
//   2770       0660        0660        0640
//   0755       0644        0666        0600
//
// Lock files give others read and write where the directory lets others read the store: the
// named mutex is the product's, open to all of its processes (a null DACL on Windows); in a
// directory closed to others, nobody else reaches the file anyway.
#ifndef ZETSETTINGS_PLATFORM_POSIX_STOREFILES_H
#define ZETSETTINGS_PLATFORM_POSIX_STOREFILES_H

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <string>

namespace zet {
namespace portable {

struct StoreOwnership {
    uid_t owner = 0;
    gid_t group = 0;
    mode_t directoryMode = 0755;

    // Of the existing directory; false (errno set) when it can't be looked at.
    bool readFrom(const std::string& directory);
    bool isGroupStore() const { return (directoryMode & S_IWGRP) != 0; }
    mode_t dataMode() const;
    mode_t lockMode() const;
    mode_t keyMode() const;

    // Gives a file this process just made the store's owner (root only can), group (where this
    // process may) and `mode`, whatever the umask.
    void adopt(int fd, mode_t mode) const;
    void adopt(const std::string& path, mode_t mode) const;
};

// Writes all of `bytes` to `fd`, across short writes and interruptions; false (errno set) when
// the file takes no more.
bool writeAll(int fd, const void* bytes, std::size_t size);

// Why a machine key file with these attributes can't be trusted for a store with this owner,
// or null when it can: a regular file owned by root or by the store's owner, writable by
// nobody else, readable by nobody else but the group of a group store.
const char* untrustedKeyReason(const struct stat& key, const StoreOwnership& store);

}  // namespace portable
}  // namespace zet

#endif
