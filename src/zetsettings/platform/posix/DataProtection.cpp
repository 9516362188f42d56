// CryptProtectData and CryptUnprotectData, machine scope only: the blob is sealed under the
// machine key of the current store (MachineKey, ProtectedBlob). Only a process that may write
// the store makes the key. One that may not seals under a key of its own, made for the call and
// never kept: nothing it seals can reach the store through it, so the registry's refusal, not a
// failed encryption, is what its caller meets; and it can't leave a key behind that would lock
// the store's users out. User scope (no
// CRYPTPROTECT_LOCAL_MACHINE) is refused with ERROR_NOT_SUPPORTED rather than quietly given
// machine scope, which any user of the store could open. There is no UI, so prompt structures
// are ignored. On failure the output blob is empty and null.
#include <sodium.h>

#include <cstdlib>
#include <exception>

#include "zetsettings/platform/posix/MachineKey.h"
#include "zetsettings/platform/posix/MachineKeyCache.h"
#include "zetsettings/platform/posix/ProtectedBlob.h"
#include "zetsettings/platform/posix/StoreLocation.h"
#include "zetsettings/platform/posix/Win32Portable.h"
#include "zetsettings/platform/posix/registry/StoreCatalog.h"
#include "zetsettings/platform/posix/registry/WideText.h"

using zet::portable::MachineKey;
using zet::portable::MachineKeyCache;
using zet::portable::ProtectedBlob;

namespace {

BOOL fail(DWORD error, DATA_BLOB* out)
{
    if (out) {
        out->cbData = 0;
        out->pbData = nullptr;
    }
    SetLastError(error);
    return FALSE;
}

// sodium_init takes a lock on every call; once it has answered, the answer stands.
bool sodiumReady()
{
    static const bool ready = sodium_init() >= 0;
    return ready;
}

bool isValid(const DATA_BLOB* blob)
{
    return blob && (blob->cbData == 0 || blob->pbData);
}

// Absent entropy and empty entropy are the same.
DATA_BLOB entropyOf(const DATA_BLOB* optional)
{
    DATA_BLOB entropy = {0, nullptr};
    if (optional)
        entropy = *optional;
    return entropy;
}

// The caller's copy of the description, for LocalFree.
DWORD handOutDescription(const std::u16string& description, LPWSTR* out)
{
    using zet::portable::registry::WideText;
    const std::size_t units = WideText::callerUnits(description.data(), description.size());
    WCHAR* text = static_cast<WCHAR*>(std::malloc((units + 1) * sizeof(WCHAR)));
    if (!text)
        return ERROR_NOT_ENOUGH_MEMORY;
    WideText::toCaller(description.data(), description.size(), text);
    text[units] = 0;
    *out = text;
    return ERROR_SUCCESS;
}

enum class StoreRights { Write, Refused, Unknown };

// Only a refusal counts as one: a store that failed to open for another reason (out of memory,
// descriptors) may open for the write that follows, which must not store a blob nobody opens.
StoreRights storeRights()
{
    try {
        return zet::portable::registry::StoreCatalog::instance().current()->writable() ? StoreRights::Write
                                                                                        : StoreRights::Refused;
    } catch (const zet::portable::registry::StoreFailure& failure) {
        return failure.win32Error() == ERROR_ACCESS_DENIED ? StoreRights::Refused : StoreRights::Unknown;
    }
}

DWORD protect(const DATA_BLOB& data, LPCWSTR description, const DATA_BLOB& entropy, DATA_BLOB& out)
{
    const std::u16string text = zet::portable::registry::WideText::toUtf16(description);
    const StoreRights rights = storeRights();
    DWORD error = ERROR_SUCCESS;
    const MachineKey* key =
        MachineKeyCache::fetch(zet::portable::storeDirectory(), rights == StoreRights::Write, error);
    if (key)
        return ProtectedBlob::seal(*key, text, data, entropy, out);
    if (rights != StoreRights::Refused)
        return error;
    MachineKey throwaway;
    throwaway.makeUnsaved();
    return ProtectedBlob::seal(throwaway, text, data, entropy, out);
}

DWORD unprotect(const DATA_BLOB& blob, const DATA_BLOB& entropy, LPWSTR* description, DATA_BLOB& out)
{
    DWORD error = ERROR_SUCCESS;
    const MachineKey* key = MachineKeyCache::fetch(zet::portable::storeDirectory(), false, error);
    if (!key)
        return error;
    std::u16string text;
    const DWORD opened = ProtectedBlob::open(*key, blob, entropy, text, out);
    if (opened != ERROR_SUCCESS || !description)
        return opened;
    const DWORD handed = handOutDescription(text, description);
    if (handed != ERROR_SUCCESS) {
        sodium_memzero(out.pbData, out.cbData);
        std::free(out.pbData);
    }
    return handed;
}

}  // namespace

extern "C" {

BOOL CryptProtectData(DATA_BLOB* pDataIn, LPCWSTR szDataDescr, DATA_BLOB* pOptionalEntropy, PVOID, PVOID,
                      DWORD dwFlags, DATA_BLOB* pDataOut)
{
    if (!isValid(pDataIn) || !pDataOut || (pOptionalEntropy && !isValid(pOptionalEntropy)))
        return fail(ERROR_INVALID_PARAMETER, pDataOut);
    if (!(dwFlags & CRYPTPROTECT_LOCAL_MACHINE))
        return fail(ERROR_NOT_SUPPORTED, pDataOut);
    if (!sodiumReady())
        return fail(ERROR_NOT_SUPPORTED, pDataOut);
    try {
        DATA_BLOB out = {0, nullptr};
        const DWORD result = protect(*pDataIn, szDataDescr, entropyOf(pOptionalEntropy), out);
        if (result != ERROR_SUCCESS)
            return fail(result, pDataOut);
        *pDataOut = out;
        return TRUE;
    } catch (const std::exception&) {
        return fail(ERROR_NOT_ENOUGH_MEMORY, pDataOut);
    }
}

BOOL CryptUnprotectData(DATA_BLOB* pDataIn, LPWSTR* ppszDataDescr, DATA_BLOB* pOptionalEntropy, PVOID, PVOID,
                        DWORD, DATA_BLOB* pDataOut)
{
    if (ppszDataDescr)
        *ppszDataDescr = nullptr;
    if (!isValid(pDataIn) || !pDataOut || (pOptionalEntropy && !isValid(pOptionalEntropy)))
        return fail(ERROR_INVALID_PARAMETER, pDataOut);
    if (!sodiumReady())
        return fail(ERROR_NOT_SUPPORTED, pDataOut);
    try {
        DATA_BLOB out = {0, nullptr};
        const DWORD result = unprotect(*pDataIn, entropyOf(pOptionalEntropy), ppszDataDescr, out);
        if (result != ERROR_SUCCESS)
            return fail(result, pDataOut);
        *pDataOut = out;
        return TRUE;
    } catch (const std::exception&) {
        return fail(ERROR_NOT_ENOUGH_MEMORY, pDataOut);
    }
}

}  // extern "C"
