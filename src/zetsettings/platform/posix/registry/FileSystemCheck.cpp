#include "zetsettings/platform/posix/registry/FileSystemCheck.h"

#include <sys/vfs.h>

namespace zet {
namespace portable {
namespace registry {
namespace {

const unsigned long kNetworkTypes[] = {
    0x6969,      // NFS
    0x517B,      // SMB
    0xFF534D42,  // CIFS
    0xFE534D42,  // SMB2
    0x564C,      // NCP
    0x5346414F,  // AFS
    0x73757245,  // Coda
    0x01021997,  // 9P
    0x00C36400,  // Ceph
};

}  // namespace

bool FileSystemCheck::isNetworkType(unsigned long type)
{
    for (unsigned long network : kNetworkTypes) {
        if ((type & 0xFFFFFFFFul) == network)
            return true;
    }
    return false;
}

bool FileSystemCheck::isOnNetwork(const std::string& directory)
{
    struct statfs info;
    if (statfs(directory.c_str(), &info) != 0)
        return false;
    return isNetworkType(static_cast<unsigned long>(info.f_type));
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
