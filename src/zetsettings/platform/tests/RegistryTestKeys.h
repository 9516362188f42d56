// Helpers of the registry behaviour tests: keys that close themselves and short forms of the
// calls the tests repeat. Only Win32 functions, so that the tests mean the same under Windows.
#ifndef ZETSETTINGS_PLATFORM_TESTS_REGISTRYTESTKEYS_H
#define ZETSETTINGS_PLATFORM_TESTS_REGISTRYTESTKEYS_H

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/TestRegistry.h"
#include "zetsettings/platform/Win32.h"

namespace zettest {

// An open key, closed when the object goes; moved, never copied (the moves delete the copies).
class ScopedKey {
public:
    ScopedKey() = default;
    ~ScopedKey() { reset(); }
    ScopedKey(ScopedKey&& other) noexcept : m_key(other.m_key) { other.m_key = nullptr; }
    ScopedKey& operator=(ScopedKey&& other) noexcept
    {
        std::swap(m_key, other.m_key);
        return *this;
    }

    HKEY get() const { return m_key; }
    HKEY release()
    {
        HKEY key = m_key;
        m_key = nullptr;
        return key;
    }
    HKEY* out()
    {
        reset();
        return &m_key;
    }
    void reset()
    {
        if (m_key)
            RegCloseKey(m_key);
        m_key = nullptr;
    }

private:
    HKEY m_key = nullptr;
};

// The tests' own place in the machine's registry.
const wchar_t kTestRoot[] = L"Software\\ZetRegistryTests";

inline LONG createKey(HKEY parent, const std::wstring& path, ScopedKey& key, REGSAM access = KEY_ALL_ACCESS,
                      DWORD* disposition = nullptr)
{
    return RegCreateKeyExW(parent, path.c_str(), 0, nullptr, 0, access, nullptr, key.out(), disposition);
}

inline LONG openKey(HKEY parent, const std::wstring& path, ScopedKey& key, REGSAM access = KEY_ALL_ACCESS)
{
    return RegOpenKeyExW(parent, path.c_str(), 0, access, key.out());
}

// A fresh key below the tests' root, created or the test fails.
inline ScopedKey testKey(const std::wstring& name, HKEY root = HKEY_LOCAL_MACHINE)
{
    ScopedKey key;
    const LONG status = createKey(root, std::wstring(kTestRoot) + L"\\" + name, key);
    EXPECT_EQ(ERROR_SUCCESS, status) << "creating the test key";
    return key;
}

// A registry of the test's own, with a fresh key below the tests' root to work in.
class RegistryKeyTest : public RegistryTest {
protected:
    static constexpr const wchar_t* kBaseName = L"Base";
    void SetUp() override { base = testKey(kBaseName); }
    ScopedKey base, key;
};

inline LONG setDword(HKEY key, const wchar_t* name, DWORD value)
{
    return RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof(value));
}

inline LONG getDword(HKEY key, const wchar_t* name, DWORD& value)
{
    DWORD type = 0;
    DWORD size = sizeof(value);
    const LONG status = RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(&value), &size);
    if (status == ERROR_SUCCESS && (type != REG_DWORD || size != sizeof(value)))
        return ERROR_INVALID_DATA;
    return status;
}

// The number a DWORD value holds; a number no test writes when the value can't be read as one.
inline DWORD numberAt(HKEY key, const wchar_t* name)
{
    DWORD value = 0;
    return getDword(key, name, value) == ERROR_SUCCESS ? value : 0xBAADF00D;
}

// The DWORD value at an index, by enumeration, with its name (of 31 units at most).
inline LONG enumerateNumber(HKEY key, DWORD index, std::wstring& name, DWORD& number)
{
    wchar_t text[32];
    DWORD units = 32, type = 0, size = sizeof(number);
    const LONG status = RegEnumValueW(key, index, text, &units, nullptr, &type, reinterpret_cast<BYTE*>(&number), &size);
    name.assign(text, status == ERROR_SUCCESS ? units : 0);
    return status == ERROR_SUCCESS && type != REG_DWORD ? ERROR_INVALID_DATA : status;
}

inline LONG setString(HKEY key, const wchar_t* name, const std::wstring& text, DWORD type = REG_SZ)
{
    return RegSetValueExW(key, name, 0, type, reinterpret_cast<const BYTE*>(text.c_str()),
                          static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

// Names in a fixed order: the order of an enumeration is the registry's own.
inline std::vector<std::wstring> sorted(std::vector<std::wstring> names)
{
    std::sort(names.begin(), names.end());
    return names;
}

// Every name that `enumerate` (RegEnumKeyExW or RegEnumValueW, less their optional arguments)
// gives, index by index, until it reports the end.
template <typename Enumerate>
std::vector<std::wstring> namesOf(HKEY key, size_t longest, Enumerate enumerate)
{
    std::vector<std::wstring> names;
    std::vector<wchar_t> buffer(longest + 1);
    for (DWORD index = 0;; ++index) {
        DWORD units = static_cast<DWORD>(buffer.size());
        const LONG status = enumerate(key, index, buffer.data(), &units);
        if (status != ERROR_SUCCESS) {
            EXPECT_EQ(ERROR_NO_MORE_ITEMS, status);
            return names;
        }
        names.emplace_back(buffer.data(), units);
    }
}

inline std::vector<std::wstring> subkeyNames(HKEY key)
{
    return namesOf(key, 255, [](HKEY k, DWORD i, wchar_t* name, DWORD* units) {
        return RegEnumKeyExW(k, i, name, units, nullptr, nullptr, nullptr, nullptr);
    });
}

inline std::vector<std::wstring> valueNames(HKEY key)
{
    return namesOf(key, 16383, [](HKEY k, DWORD i, wchar_t* name, DWORD* units) {
        return RegEnumValueW(k, i, name, units, nullptr, nullptr, nullptr, nullptr);
    });
}

}  // namespace zettest

#endif
