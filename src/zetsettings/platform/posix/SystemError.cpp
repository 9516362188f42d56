#include "zetsettings/platform/posix/SystemError.h"

#include <errno.h>

namespace zet {
namespace portable {

DWORD win32ErrorFromErrno(int error)
{
    switch (error) {
    case 0:
        return ERROR_SUCCESS;
    case ENOENT:
        return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
        return ERROR_PATH_NOT_FOUND;
    case ENOMEM:
        return ERROR_NOT_ENOUGH_MEMORY;
    case ENOSPC:
    case EDQUOT:
        return ERROR_DISK_FULL;
    case EROFS:
        return ERROR_WRITE_PROTECT;
    case ENAMETOOLONG:
        return ERROR_FILENAME_EXCED_RANGE;
    case EIO:
        return ERROR_CANTREAD;
    default:
        // EACCES, EPERM, ELOOP (a symbolic link where none may be) and whatever else keeps
        // the caller from a file it needs: on Windows each of these is a refused access.
        return ERROR_ACCESS_DENIED;
    }
}

}  // namespace portable
}  // namespace zet
