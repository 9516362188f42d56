// Every read of a protected value needs the machine key, and loading it costs an open, a stat,
// a read and a close. Each thread keeps the key it loaded last, with its file open, and uses it
// again while that file is unchanged (MachineKey::fileUnchanged, one fstat). A key file
// replaced, removed, chmod'ed or rewritten loads anew, with all of MachineKey's checks.
//
// The one change this can't see: the key's path coming to name another file while the cached
// file itself is left untouched, as when a directory above it is renamed or swapped (renaming
// or replacing the key file itself is seen). The thread goes on with the key it has until its
// file changes.
//
// Per thread, so that neither a lock nor a fork gets in the way; a child of fork starts with
// nothing cached. A thread that changes its user keeps what it loaded before, as it keeps any
// other memory. A thread that used the key holds one descriptor on it until it ends.
#ifndef ZETSETTINGS_PLATFORM_POSIX_MACHINEKEYCACHE_H
#define ZETSETTINGS_PLATFORM_POSIX_MACHINEKEYCACHE_H

#include <string>

#include "zetsettings/platform/posix/MachineKey.h"

namespace zet {
namespace portable {

class MachineKeyCache {
public:
    // This thread's machine key of the store `directory` (the file at machineKeyPath), made
    // first when `create` is true and there is none; valid until this thread's next fetch.
    // Null on failure, with `error` set to what MachineKey::load or loadOrCreate returned.
    static const MachineKey* fetch(const std::string& directory, bool create, DWORD& error);
};

}  // namespace portable
}  // namespace zet

#endif
