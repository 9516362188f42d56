// The machine key of data protection: 32 random bytes in a file beside the store directory
// (machineKeyPath), never inside it, so that a copy of the store alone decrypts nothing.
//
// A process that may write the store makes the key when it opens the store (StoreCatalog) or
// first encrypts, if there is none; processes that race to do so agree on one: each writes a
// candidate under a temporary name (O_CREAT|O_EXCL, the key's mode, synced) and links
// it into place, which never replaces a file that is there; the loser drops its candidate and
// uses the winner's. Decryption never makes a key: a new key could not open anything old.
//
// The key belongs to its store (StoreFiles.h): it is made with the store's owner and group,
// readable by the group of a group store. It is only trusted when it is a regular file of
// exactly 32 bytes, owned by root or by the store directory's owner, writable by nobody else
// and readable by nobody else but a group store's group. A key file that fails a check is an
// error and is never replaced. Who may make it is the caller's business.
//
// A key read from a file keeps that file open, so that asking whether the file has changed
// since costs one fstat() instead of a lookup of its path.
#ifndef ZETSETTINGS_PLATFORM_POSIX_MACHINEKEY_H
#define ZETSETTINGS_PLATFORM_POSIX_MACHINEKEY_H

#include <sodium.h>
#include <sys/stat.h>

#include <cstddef>
#include <string>

#include "zetsettings/platform/posix/StoreFiles.h"
#include "zetsettings/platform/posix/Win32Portable.h"

namespace zet {
namespace portable {

class MachineKey {
public:
    static constexpr std::size_t kSize = crypto_aead_xchacha20poly1305_ietf_KEYBYTES;

    MachineKey();
    // Wipes the key from memory and closes its file.
    ~MachineKey();

    MachineKey(const MachineKey&) = delete;
    MachineKey& operator=(const MachineKey&) = delete;

    // Each returns ERROR_SUCCESS or the Windows error: ERROR_FILE_NOT_FOUND (no key),
    // ERROR_ACCESS_DENIED (unreadable, or failing the owner and mode checks), ERROR_INVALID_DATA
    // (not a key: wrong size), or what creating it ran into.
    // `directory` is the store's; the key is the file at machineKeyPath(directory).
    DWORD load(const std::string& directory);
    DWORD loadOrCreate(const std::string& directory);

    // A random key kept nowhere: what it seals opens for nobody once it is gone.
    void makeUnsaved();

    const unsigned char* bytes() const { return m_bytes; }

    // True while the file that the key was read from is as it was then: still linked, same
    // size, owner, mode, link count and times. False for a key made here or not loaded. A
    // file replaced by rename, removed, chmod'ed, chown'ed or rewritten no longer counts.
    bool fileUnchanged() const;
    // Wipes the key and closes its file (in a child of fork, the parent's).
    void forget();

private:
    DWORD readFrom(int fd, const StoreOwnership& store);
    DWORD create(const std::string& directory);
    DWORD writeCandidate(const std::string& temporary, const StoreOwnership& store);

    unsigned char m_bytes[kSize];
    struct stat m_file;
    // The file the key was read from, open; -1 for a key not read from a file.
    int m_fd;
};

}  // namespace portable
}  // namespace zet

#endif
