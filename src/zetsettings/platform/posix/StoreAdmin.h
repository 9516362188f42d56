// The administrator's side of a portable store: make it with the owners and modes of the
// deployment (StoreFiles.h), tell what is there, and back it up and restore it with its key.
//
// Each works on the files directly and opens the store's LMDB environment of its own where it
// needs one: call them from a process that doesn't otherwise use that store (the tool), as a
// second environment on one store in one process would drop the first one's locks when closed.
// Refusals throw StoreAdminError with the reason, for a person to read.
#ifndef ZETSETTINGS_PLATFORM_POSIX_STOREADMIN_H
#define ZETSETTINGS_PLATFORM_POSIX_STOREADMIN_H

#include <sys/types.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace zet {
namespace portable {

class StoreAdminError : public std::runtime_error {
public:
    explicit StoreAdminError(const std::string& reason) : std::runtime_error(reason) {}
};

struct StoreFileReport {
    std::string role;  // "directory", "data", "lock", "mutex lock", "key"
    std::string path;
    bool present = false;
    uid_t owner = 0;
    gid_t group = 0;
    mode_t mode = 0;
    std::uint64_t size = 0;
    std::string problem;  // why the deployment can't accept it; empty when fine
};

struct StoreReport {
    std::string directory;
    std::string chosenBy;  // "ZET_REGISTRY_DIR" or "default"
    bool exists = false;    // the directory
    bool hasData = false;   // data.mdb
    bool groupStore = false;
    bool mayRead = false;
    bool mayWrite = false;
    std::string keyState;   // "absent", "usable" or "unusable"
    std::string keyReason;  // why unusable
    std::vector<StoreFileReport> files;
    // Of LMDB, when the store could be opened; openError says why not otherwise.
    bool opened = false;
    std::string openError;
    std::uint64_t entries = 0;
    std::uint64_t mapSize = 0;
    std::uint64_t liveReaders = 0;

    // Every file's problem, one line each.
    std::vector<std::string> problems() const;
};

// The store this process uses now (ZET_REGISTRY_DIR, or the default), and which one chose it.
std::string currentStoreDirectory(std::string& chosenBy);

// Looks without making or changing anything but LMDB's lock file, which any reader writes.
StoreReport inspectStore(const std::string& directory);
// The same without opening LMDB: the files alone, nothing written.
StoreReport inspectFiles(const std::string& directory);

// Makes what is missing of the store in `directory`: the directory (owner this process's user;
// with `group` not empty mode 2770 and that group, else 0700 and this user's group), LMDB's
// files, the lock file of the product's named mutex, and the machine key. Refuses, changing
// nothing, a store whose files are open to others or owned by strangers, or that belongs to
// another group than `group` asks for. Returns one line per thing: made, or there already.
std::vector<std::string> initStore(const std::string& directory, const std::string& group);

// Writes `file` (new, owner-only): a header, the machine key and LMDB's own consistent copy of
// the store, taken while others may use it.
void backupStore(const std::string& directory, const std::string& file);

// Makes the store of `file` in `directory` (made as initStore would, with `group`), with its
// key. Refuses to replace a store or a key that is there unless `replace`; the store's users
// should be stopped before one is replaced.
void restoreStore(const std::string& directory, const std::string& file, const std::string& group, bool replace);

}  // namespace portable
}  // namespace zet

#endif
