// Looks at and plants registry values below HKEY_LOCAL_MACHINE with the bare Win32 calls,
// past the library, so that tests see what it really stored.
#ifndef ZETSETTINGS_STORE_TESTS_RAWREGISTRY_H
#define ZETSETTINGS_STORE_TESTS_RAWREGISTRY_H

#include <cstring>
#include <string>
#include <vector>

#include "zetsettings/platform/tests/RegistryTestKeys.h"

namespace rawreg {

struct RawValue {
    LSTATUS status = ERROR_FILE_NOT_FOUND;
    DWORD type = REG_NONE;
    std::vector<BYTE> data;
};

inline bool keyExists(const std::wstring& path)
{
    zettest::ScopedKey key;
    return zettest::openKey(HKEY_LOCAL_MACHINE, path, key, KEY_READ) == ERROR_SUCCESS;
}

inline RawValue read(const std::wstring& path, const std::wstring& name)
{
    RawValue value;
    zettest::ScopedKey key;
    value.status = zettest::openKey(HKEY_LOCAL_MACHINE, path, key, KEY_READ);
    DWORD size = 0;
    if (value.status == ERROR_SUCCESS)
        value.status = RegQueryValueExW(key.get(), name.c_str(), 0, &value.type, 0, &size);
    if (value.status == ERROR_SUCCESS) {
        value.data.resize(size);
        value.status = RegQueryValueExW(key.get(), name.c_str(), 0, &value.type, value.data.data(), &size);
        value.data.resize(size);
    }
    return value;
}

// The text of a REG_SZ value, without its terminator.
inline std::wstring textOf(const RawValue& value)
{
    std::wstring text(reinterpret_cast<const wchar_t*>(value.data.data()), value.data.size() / sizeof(wchar_t));
    while (!text.empty() && text.back() == L'\0')
        text.pop_back();
    return text;
}

// What the registry holds, with its type: "dword:N", "sz:TEXT", or "absent".
inline std::wstring stored(const std::wstring& path, const std::wstring& name)
{
    const RawValue value = read(path, name);
    DWORD number = 0;
    if (value.type == REG_DWORD && value.data.size() == sizeof number)
        std::memcpy(&number, value.data.data(), sizeof number);
    if (value.status != ERROR_SUCCESS)
        return L"absent";
    return value.type == REG_SZ ? L"sz:" + textOf(value) : L"dword:" + std::to_wstring(number);
}

// Creates the key if needed.
inline LSTATUS write(const std::wstring& path, const std::wstring& name, DWORD type, const void* data, DWORD size)
{
    zettest::ScopedKey key;
    const LSTATUS status = zettest::createKey(HKEY_LOCAL_MACHINE, path, key);
    if (status != ERROR_SUCCESS)
        return status;
    return RegSetValueExW(key.get(), name.c_str(), 0, type, static_cast<const BYTE*>(data), size);
}

inline LSTATUS writeText(const std::wstring& path, const std::wstring& name, const std::wstring& text)
{
    return write(path, name, REG_SZ, text.c_str(), static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

}  // namespace rawreg

#endif
