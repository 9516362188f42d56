// The last error is per thread, as on Windows: a failure in one thread never shows in another.
#include "zetsettings/platform/posix/Win32Portable.h"

namespace {

thread_local DWORD t_lastError = ERROR_SUCCESS;

}  // namespace

extern "C" {

DWORD GetLastError(void)
{
    return t_lastError;
}

void SetLastError(DWORD error)
{
    t_lastError = error;
}

}  // extern "C"
