// What the portable layer hands out for the caller to release (data protection output) comes
// from malloc, so LocalFree is free.
#include <cstdlib>

#include "zetsettings/platform/posix/Win32Portable.h"

extern "C" {

HLOCAL LocalFree(HLOCAL hMem)
{
    std::free(hMem);
    return nullptr;
}

}  // extern "C"
