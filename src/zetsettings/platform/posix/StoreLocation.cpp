#include "zetsettings/platform/posix/StoreLocation.h"

#include <errno.h>
#include <stdlib.h>
#include <sys/stat.h>

namespace zet {
namespace portable {

std::string storeDirectory()
{
    return storeDirectoryName();
}

const char* storeDirectoryName()
{
    const char* named = getenv("ZET_REGISTRY_DIR");
    if (named && *named)
        return named;
    return "/var/lib/zetsettings";
}

int ensureStoreDirectory(const std::string& directory)
{
    struct stat info;
    if (stat(directory.c_str(), &info) == 0)
        return S_ISDIR(info.st_mode) ? 0 : ENOTDIR;
    // Make each missing parent in turn; another process may race us to any of them.
    for (std::string::size_type slash = directory.find('/', 1); ; slash = directory.find('/', slash + 1)) {
        const std::string prefix = directory.substr(0, slash);
        if (!prefix.empty() && mkdir(prefix.c_str(), 0755) != 0 && errno != EEXIST)
            return errno;
        if (slash == std::string::npos)
            break;
    }
    return 0;
}

std::string machineKeyPath(const std::string& directory)
{
    std::string base = directory;
    while (base.size() > 1 && base.back() == '/')
        base.pop_back();
    return base + ".key";
}

}  // namespace portable
}  // namespace zet
