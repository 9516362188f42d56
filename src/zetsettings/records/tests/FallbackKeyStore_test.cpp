#include <gtest/gtest.h>

#include <string>

#include "zetsettings/records/tests/RecordStoreTestSupport.h"

using namespace recordtest;

namespace {

typedef std::map<std::wstring, ZETFallbackKeySettings> KeyMap;

ZETFallbackKeySettings keyEntry(const std::wstring& text1, const std::wstring& text2 = L"",
                                const std::string& bytes = "")
{
    ZETFallbackKeySettings entry;
    entry.keyText1 = text1;
    entry.keyText2 = text2;
    entry.keyBytes = bytes;
    return entry;
}

boost::shared_ptr<KeyMap> keyMap(std::initializer_list<KeyMap::value_type> entries)
{
    return boost::shared_ptr<KeyMap>(new KeyMap(entries));
}

// The stored set as comparable text: key and the three members of each entry.
std::vector<std::wstring> storedKeys()
{
    std::vector<std::wstring> described;
    const auto keys = ZETSettings::getFallbackKeySettings();
    for (const auto& entry : *keys)
        described.push_back(entry.first + L"|" + entry.second.keyText1 + L"|" + entry.second.keyText2 + L"|" +
                            std::wstring(entry.second.keyBytes.begin(), entry.second.keyBytes.end()));
    return described;
}

class FallbackKeyStoreTest : public zettest::RegistryTest {};

TEST_F(FallbackKeyStoreTest, ReadingNothingStoredGivesAnEmptySetAndWritesNothing)
{
    const auto keys = ZETSettings::getFallbackKeySettings();
    ASSERT_TRUE(keys);
    EXPECT_TRUE(keys->empty());
    EXPECT_TRUE(keyExists(kBase));
    std::string ignored;
    EXPECT_FALSE(readRaw(kBase, L"FallbackKeys", ignored));
}

TEST_F(FallbackKeyStoreTest, EachSetReplacesTheWholeSet)
{
    ZETSettings::setFallbackKeySettings(keyMap({{L"Key", keyEntry(L"upper", L"u2", std::string("\0\x01", 2))},
                                                {L"key", keyEntry(L"lower")},
                                                {L"", keyEntry(L"")}}));
    EXPECT_EQ((std::vector<std::wstring>{L"|||", L"Key|upper|u2|" + std::wstring(L"\0\x01", 2), L"key|lower||"}),
              storedKeys());

    ZETSettings::setFallbackKeySettings(keyMap({{L"other", keyEntry(L"o1", L"o2", "ob")}}));
    EXPECT_EQ(std::vector<std::wstring>{L"other|o1|o2|ob"}, storedKeys());

    // The empty set is stored like any other: a value holding the count 0.
    ZETSettings::setFallbackKeySettings(keyMap({}));
    ZETSettings::setFallbackKeySettings(boost::shared_ptr<KeyMap>());
    EXPECT_TRUE(storedKeys().empty());
    EXPECT_EQ(std::string(4, '\0'), decrypt(rawValue(kBase, L"FallbackKeys")));
}

TEST_F(FallbackKeyStoreTest, TheStoredValueIsTheWholeSetEncrypted)
{
    const std::wstring key = L"CorporateFallback-\u0416\u00DF";
    const std::wstring secret = L"WEP-Passphrase-Hx9-Vt2q";
    const std::wstring secretBytes = L"raw-key-material-77ab01";
    const ZETFallbackKeySettings entry = keyEntry(secret, L"second-text-Qq5", std::string(secretBytes.begin(), secretBytes.end()));
    ZETSettings::setFallbackKeySettings(keyMap({{key, entry}}));
    expectNoPlainText(registry, {key, secret, L"second-text-Qq5", secretBytes});

    ser_map<ser_wstring, ZETFallbackKeySettings> expected;
    expected.emplace(ser_wstring(key), entry);
    EXPECT_EQ(plainForm(expected), decrypt(rawValue(kBase, L"FallbackKeys")));
}

TEST_F(FallbackKeyStoreTest, BadStoredValuesGiveWhatCanBeRead)
{
    writeRaw(kBase, L"FallbackKeys", std::string(48, '\x07'));
    EXPECT_TRUE(storedKeys().empty());

    ser_map<ser_wstring, ZETFallbackKeySettings> stored;
    stored.emplace(ser_wstring(L"a"), keyEntry(L"whole"));
    stored.emplace(ser_wstring(L"b"), keyEntry(L"cut"));
    const std::string whole = plainForm(stored);
    storeProtected(L"FallbackKeys", whole.substr(0, whole.size() - 2));
    EXPECT_EQ(std::vector<std::wstring>{L"a|whole||"}, storedKeys());
}

// A volatile key can't hold a lasting subkey: with Software\Orvane volatile, the base key can't
// be created, while encryption still works.
TEST_F(FallbackKeyStoreTest, ARefusedWriteReachesOnlyTheCallerOfThisSet)
{
    HKEY orvane = 0, probe = 0;
    LSTATUS probed = ERROR_SUCCESS;
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Orvane", 0, 0, REG_OPTION_VOLATILE, KEY_ALL_ACCESS, 0,
                        &orvane, 0) == ERROR_SUCCESS) {
        probed = RegCreateKeyExW(orvane, L"Probe", 0, 0, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, 0, &probe, 0);
        if (probe)
            RegCloseKey(probe);
        RegCloseKey(orvane);
    }
    if (!orvane || probed == ERROR_SUCCESS)
        GTEST_SKIP() << "this registry has no volatile keys";

    EXPECT_THROW(ZETSettings::setFallbackKeySettings(keyMap({{L"k", keyEntry(L"v")}})),
                 JetByteTools::CRegistryKey::Exception);
    EXPECT_TRUE(storedKeys().empty());
    EXPECT_NO_THROW(ZETSettings::setLoginData(L"user", L"pw", true, true, true));
    EXPECT_NO_THROW(ZETSettings::setUserSettings(L"user", boost::shared_ptr<ZETUserSettings>(new ZETUserSettings)));
    EXPECT_NO_THROW(ZETSettings::setFallbackSettings(boost::shared_ptr<ZETFallbackSettings>(new ZETFallbackSettings)));
    EXPECT_FALSE(keyExists(kBase));
}

}  // namespace
