// LMDB's locks and shared memory map do not work across machines: a store on a network file
// system would be corrupted by the first two hosts that use it. Such stores are refused.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_FILESYSTEMCHECK_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_FILESYSTEMCHECK_H

#include <string>

namespace zet {
namespace portable {
namespace registry {

class FileSystemCheck {
public:
    // Whether statfs's f_type names a file system shared over a network.
    static bool isNetworkType(unsigned long type);
    // Whether the directory lies on one; false where that cannot be told.
    static bool isOnNetwork(const std::string& directory);
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
