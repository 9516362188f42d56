// Every read of a protected value needs the machine key, and loading it costs an open, a stat,
// a read and a close. Each thread keeps the key it loaded last and uses it again while the file
// at the key's path is still that same file (device, inode, size, owner, mode, times), which
// one lstat tells. Any change to the file (replaced, removed, chmod, rewritten) loads it anew,
// with all of MachineKey's checks. Per thread, so that neither a lock nor a fork gets in the way;
// a child of fork starts with nothing cached. A thread that changes its user keeps what it
// loaded before, as it keeps any other memory.
#ifndef ZETSETTINGS_PLATFORM_POSIX_MACHINEKEYCACHE_H
#define ZETSETTINGS_PLATFORM_POSIX_MACHINEKEYCACHE_H

#include <string>

#include "zetsettings/platform/posix/MachineKey.h"

namespace zet {
namespace portable {

class MachineKeyCache {
public:
    // Fills `key` with the machine key at `path`, making it first when `create` is true and
    // there is none. Returns what MachineKey::load or loadOrCreate returns.
    static DWORD fetch(const std::string& path, bool create, MachineKey& key);
};

}  // namespace portable
}  // namespace zet

#endif
