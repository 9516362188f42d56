// Raw registry access for the record store tests: what the stores left in the registry, byte
// for byte, and values planted from outside as another program (or an attacker) would; and the
// records they store, built in one line.
#ifndef ZETSETTINGS_RECORDS_TESTS_RECORDSTORETESTSUPPORT_H
#define ZETSETTINGS_RECORDS_TESTS_RECORDSTORETESTSUPPORT_H

#include <boost/make_shared.hpp>
#include <filesystem>
#include <map>
#include <fstream>
#include <iterator>

#include "zetsettings/components/ZETProtectData.h"
#include "zetsettings/platform/tests/RegistryTestKeys.h"
#include "zetsettings/serial/tests/SerialTestBytes.h"
#include "zetsettings/store/tests/StoreTestSupport.h"

namespace recordtest {

using zetserialtest::plainForm;
using zetserialtest::userRecord;

const std::wstring kBase = L"Software\\Orvane\\QXL";
const std::wstring kDatabase = kBase + L"\\FallbackDatabase";

using rawreg::keyExists;

inline bool hasValue(const std::wstring& path, const std::wstring& name)
{
    return rawreg::read(path, name).status == ERROR_SUCCESS;
}

inline std::string rawValue(const std::wstring& path, const std::wstring& name)
{
    const rawreg::RawValue value = rawreg::read(path, name);
    EXPECT_EQ(ERROR_SUCCESS, value.status) << "no value " << std::string(name.begin(), name.end());
    return std::string(value.data.begin(), value.data.end());
}

inline void writeRaw(const std::wstring& path, const std::wstring& name, const std::string& data)
{
    ASSERT_EQ(ERROR_SUCCESS, rawreg::write(path, name, REG_BINARY, data.data(), static_cast<DWORD>(data.size())));
}

typedef std::map<std::wstring, ZETFallbackKeySettings> KeyMap;

inline ZETFallbackKeySettings keyEntry(const std::wstring& text, const std::string& bytes = "")
{
    return zetserialtest::fallbackKey(text, text + L"/2", bytes);
}

inline void setKeys(const KeyMap& keys)
{
    ZETSettings::setFallbackKeySettings(boost::make_shared<KeyMap>(keys));
}

inline boost::shared_ptr<ZETFallbackSettings> record(const std::wstring& owner, const std::wstring& network,
                                                     const std::string& bytes1 = "", const std::string& bytes2 = "")
{
    return boost::make_shared<ZETFallbackSettings>(zetserialtest::fallbackRecord(owner, network, bytes1, bytes2));
}

// A record the library handed out, in its serial form; "null" for none.
template <typename Pointer>
std::string formOf(const Pointer& record)
{
    return record ? plainForm(*record) : "null";
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
    std::string all;
    if (zettest::TestRegistry::isPortable()) {
        for (const auto& file : std::filesystem::recursive_directory_iterator(registry.storeDirectory()))
            if (file.is_regular_file()) {
                std::ifstream in(file.path(), std::ios::binary);
                all.append(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
            }
        return all;
    }
    for (const wchar_t* name : {L"UserSettings", L"LoginSettings", L"FallbackKeys"}) {
        const rawreg::RawValue value = rawreg::read(kBase, name);
        all.append(value.data.begin(), value.data.end());
    }
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
