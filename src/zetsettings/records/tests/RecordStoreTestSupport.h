// Raw registry access for the record store tests: what the stores left in the registry, byte
// for byte, and values planted from outside as another program (or an attacker) would.
#ifndef ZETSETTINGS_RECORDS_TESTS_RECORDSTORETESTSUPPORT_H
#define ZETSETTINGS_RECORDS_TESTS_RECORDSTORETESTSUPPORT_H

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support/TestRegistry.h"
#include "zetsettings/ZETSettings.h"
#include "zetsettings/components/ZETProtectData.h"

namespace recordtest {

const std::wstring kBase = L"Software\\Orvane\\QXL";
const std::wstring kDatabase = kBase + L"\\FallbackDatabase";

inline bool keyExists(const std::wstring& path)
{
    HKEY key = 0;
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) == ERROR_SUCCESS && !RegCloseKey(key);
}

// The value's data as stored; false when it can't be read.
inline bool readRaw(const std::wstring& path, const std::wstring& name, std::string& data)
{
    HKEY key = 0;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return false;
    DWORD size = 0;
    LSTATUS status = RegQueryValueExW(key, name.c_str(), 0, 0, 0, &size);
    data.assign(size, '\0');
    if (status == ERROR_SUCCESS && size > 0)
        status = RegQueryValueExW(key, name.c_str(), 0, 0, reinterpret_cast<BYTE*>(&data[0]), &size);
    RegCloseKey(key);
    return status == ERROR_SUCCESS;
}

inline std::string rawValue(const std::wstring& path, const std::wstring& name)
{
    std::string data;
    EXPECT_TRUE(readRaw(path, name, data)) << "no value " << std::string(name.begin(), name.end());
    return data;
}

inline void writeRaw(const std::wstring& path, const std::wstring& name, const std::string& data,
                     DWORD type = REG_BINARY)
{
    HKEY key = 0;
    ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, 0, 0, KEY_ALL_ACCESS, 0, &key, 0));
    EXPECT_EQ(ERROR_SUCCESS, RegSetValueExW(key, name.c_str(), 0, type,
                                            reinterpret_cast<const BYTE*>(data.data()),
                                            static_cast<DWORD>(data.size())));
    RegCloseKey(key);
}

// The serial form of an object, as the stores write it before any encryption.
inline std::string plainForm(const ZETSerializeInterface& object)
{
    std::string bytes(static_cast<size_t>(object.getSerLength()), '\0');
    object.serialize(reinterpret_cast<unsigned char*>(&bytes[0]));
    return bytes;
}

inline std::string decrypt(const std::string& cipher)
{
    return ZETProtectData().decryptData(ZETBuf(cipher.data(), cipher.size()), ZETBuf("")).bytes();
}

// Plants a protected value on the base key as the library would write it for these bytes.
inline void storeProtected(const std::wstring& name, const std::string& plain)
{
    writeRaw(kBase, name, ZETProtectData().encryptData(ZETBuf(plain.data(), plain.size()), ZETBuf("")).bytes());
}

// Whether the text stands in the bytes as UTF-16, UTF-32 or UTF-8 (test texts stay below U+0800).
inline bool holdsText(const std::string& bytes, const std::wstring& text)
{
    std::string utf16, utf32, utf8;
    for (wchar_t c : text) {
        const unsigned code = static_cast<unsigned>(c);
        utf16 += {static_cast<char>(code & 0xFF), static_cast<char>(code >> 8)};
        utf32 += {static_cast<char>(code & 0xFF), static_cast<char>(code >> 8), '\0', '\0'};
        utf8 += code < 0x80 ? std::string(1, static_cast<char>(code))
                            : std::string{static_cast<char>(0xC0 | code >> 6), static_cast<char>(0x80 | (code & 0x3F))};
    }
    return bytes.find(utf16) != std::string::npos || bytes.find(utf32) != std::string::npos ||
           bytes.find(utf8) != std::string::npos;
}

// What an attacker with a copy of the store sees: natively every file of the store; with the
// system's registry (no files of ours to read) the data of the protected values.
inline std::string rawStoreBytes(const zettest::TestRegistry& registry)
{
    std::string all, data;
    if (zettest::TestRegistry::isPortable()) {
        for (const auto& file : std::filesystem::recursive_directory_iterator(registry.storeDirectory()))
            if (file.is_regular_file()) {
                std::ifstream in(file.path(), std::ios::binary);
                all.append(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
            }
        return all;
    }
    for (const wchar_t* name : {L"UserSettings", L"LoginSettings", L"FallbackKeys"})
        if (readRaw(kBase, name, data))
            all += data;
    return all;
}

inline void expectNoPlainText(const zettest::TestRegistry& registry, const std::vector<std::wstring>& secrets)
{
    const std::string bytes = rawStoreBytes(registry);
    ASSERT_FALSE(bytes.empty());
    for (const std::wstring& secret : secrets)
        EXPECT_FALSE(holdsText(bytes, secret)) << "found in the clear: " << std::string(secret.begin(), secret.end());
}

}  // namespace recordtest

#endif
