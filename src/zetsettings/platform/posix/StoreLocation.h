// Where the portable registry of this machine lives, and the files beside it.
//
// The store is a directory: ZET_REGISTRY_DIR when it is set and not empty, otherwise
// /var/lib/zetsettings. The machine key of the data protection is a file beside the
// directory, never inside it (a copy of the store alone must not decrypt anything).
#ifndef ZETSETTINGS_PLATFORM_POSIX_STORELOCATION_H
#define ZETSETTINGS_PLATFORM_POSIX_STORELOCATION_H

#include <string>

namespace zet {
namespace portable {

// The store directory as named now; it is looked up anew on every call.
std::string storeDirectory();
// The same without a copy: valid until the environment changes.
const char* storeDirectoryName();
// Makes the store directory (and its parents) if missing, mode 0755. Returns 0 or an errno.
int ensureStoreDirectory(const std::string& directory);
// The machine key file that belongs to a store directory.
std::string machineKeyPath(const std::string& directory);

}  // namespace portable
}  // namespace zet

#endif
