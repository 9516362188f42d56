// A failure of the store, carried up to the registry call that met it and returned there as
// the Windows error code that says the same.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_STOREFAILURE_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_STOREFAILURE_H

#include <exception>

#include "zetsettings/platform/posix/Win32Portable.h"

namespace zet {
namespace portable {
namespace registry {

class StoreFailure : public std::exception {
public:
    // cause: the LMDB or errno code behind it, 0 if none.
    explicit StoreFailure(LONG win32Error, int cause = 0) : m_error(win32Error), m_cause(cause) {}

    LONG win32Error() const { return m_error; }
    int cause() const { return m_cause; }
    const char* what() const noexcept override { return "registry store failure"; }

private:
    LONG m_error;
    int m_cause;
};

// The Windows error that an LMDB return code (or errno value) stands for.
LONG win32ErrorOfLmdb(int code);
// Throws a StoreFailure for any LMDB return code but success.
void checkLmdb(int code);
// A record that does not parse: the store is damaged.
[[noreturn]] void throwCorruptRecord();

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
