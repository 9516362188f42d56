#include "zetsettings/platform/posix/registry/StoreFailure.h"

#include <errno.h>
#include <lmdb.h>

namespace zet {
namespace portable {
namespace registry {

LONG win32ErrorOfLmdb(int code)
{
    switch (code) {
    case MDB_SUCCESS:
        return ERROR_SUCCESS;
    case MDB_INVALID:
    case MDB_VERSION_MISMATCH:
        return ERROR_BADDB;
    case MDB_CORRUPTED:
    case MDB_PAGE_NOTFOUND:
        return ERROR_REGISTRY_CORRUPT;
    case MDB_MAP_FULL:
    case ENOSPC:
    case EDQUOT:
        return ERROR_DISK_FULL;
    case MDB_READERS_FULL:
        return ERROR_CANTREAD;
    case MDB_TXN_FULL:
    case MDB_CURSOR_FULL:
    case MDB_PAGE_FULL:
        return ERROR_CANTWRITE;
    case ENOMEM:
        return ERROR_NOT_ENOUGH_MEMORY;
    case EACCES:
    case EPERM:
    case EROFS:
        return ERROR_ACCESS_DENIED;
    case ENOENT:
        return ERROR_FILE_NOT_FOUND;
    default:
        return ERROR_REGISTRY_IO_FAILED;
    }
}

void checkLmdb(int code)
{
    if (code != MDB_SUCCESS)
        throw StoreFailure(win32ErrorOfLmdb(code), code);
}

void throwCorruptRecord()
{
    throw StoreFailure(ERROR_REGISTRY_CORRUPT, MDB_CORRUPTED);
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
