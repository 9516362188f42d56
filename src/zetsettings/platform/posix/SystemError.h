// The Windows error code that stands for a POSIX errno value, for the failures that the
// portable layer reports through GetLastError.
#ifndef ZETSETTINGS_PLATFORM_POSIX_SYSTEMERROR_H
#define ZETSETTINGS_PLATFORM_POSIX_SYSTEMERROR_H

#include "zetsettings/platform/posix/Win32Portable.h"

namespace zet {
namespace portable {

DWORD win32ErrorFromErrno(int error);

}  // namespace portable
}  // namespace zet

#endif
