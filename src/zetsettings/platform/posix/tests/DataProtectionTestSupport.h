// Calls of the data protection functions as the tests of the portable layer make them.
#ifndef ZETSETTINGS_PLATFORM_POSIX_TESTS_DATAPROTECTIONTESTSUPPORT_H
#define ZETSETTINGS_PLATFORM_POSIX_TESTS_DATAPROTECTIONTESTSUPPORT_H

#include <string>

#include "zetsettings/platform/posix/StoreLocation.h"
#include "zetsettings/platform/posix/Win32Portable.h"

namespace zettest {

const DWORD kMachineScope = CRYPTPROTECT_LOCAL_MACHINE | CRYPTPROTECT_UI_FORBIDDEN;

// The outcome of one call: its result, the last error, and the output bytes.
struct Protection {
    BOOL ok = FALSE;
    DWORD error = 0;
    std::string bytes;
};

inline DATA_BLOB blobOf(const std::string& bytes)
{
    DATA_BLOB blob;
    blob.cbData = static_cast<DWORD>(bytes.size());
    blob.pbData = reinterpret_cast<BYTE*>(const_cast<char*>(bytes.data()));
    return blob;
}

inline Protection finish(BOOL ok, DATA_BLOB& out)
{
    Protection result;
    result.ok = ok;
    result.error = ok ? 0 : GetLastError();
    if (out.pbData)
        result.bytes.assign(reinterpret_cast<const char*>(out.pbData), out.cbData);
    LocalFree(out.pbData);
    return result;
}

inline Protection protect(const std::string& data, const std::string* entropy = nullptr,
                          const wchar_t* description = nullptr)
{
    DATA_BLOB in = blobOf(data);
    DATA_BLOB extra = entropy ? blobOf(*entropy) : DATA_BLOB{0, nullptr};
    DATA_BLOB out = {0, nullptr};
    SetLastError(0);
    const BOOL ok = CryptProtectData(&in, description, entropy ? &extra : nullptr, nullptr, nullptr,
                                     kMachineScope, &out);
    return finish(ok, out);
}

inline Protection unprotect(const std::string& blob, const std::string* entropy = nullptr)
{
    DATA_BLOB in = blobOf(blob);
    DATA_BLOB extra = entropy ? blobOf(*entropy) : DATA_BLOB{0, nullptr};
    DATA_BLOB out = {0, nullptr};
    SetLastError(0);
    const BOOL ok = CryptUnprotectData(&in, nullptr, entropy ? &extra : nullptr, nullptr, nullptr,
                                       kMachineScope, &out);
    return finish(ok, out);
}

inline std::string keyPath()
{
    return zet::portable::machineKeyPath(zet::portable::storeDirectory());
}

}  // namespace zettest

#endif
