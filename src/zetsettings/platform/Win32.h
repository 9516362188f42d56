// The one place that knows which platform the library is built for.
//
// Everything above this header calls the Win32 functions by their Windows names. On Windows
// they are the system's own; elsewhere the portable layer in posix/ provides the same subset
// with the same names, types, flags and error codes, backed by an embedded store.
#ifndef ZETSETTINGS_PLATFORM_WIN32_H
#define ZETSETTINGS_PLATFORM_WIN32_H

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#include <wincrypt.h>
// The system's registry makes every call durable by itself: a batch there is nothing, and
// writes that it would have dropped can't be dropped.
inline void ZetRegBeginBatch() {}
inline LSTATUS ZetRegEndBatch(BOOL keep) { return keep ? ERROR_SUCCESS : ERROR_NOT_SUPPORTED; }
#else
#include "zetsettings/platform/posix/Win32Portable.h"
#endif

#endif
