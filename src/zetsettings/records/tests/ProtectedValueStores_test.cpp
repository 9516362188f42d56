// The three stores kept as one encrypted value each on the base key: the fallback keys, the
// per-user settings and the machine's login.
#include "zetsettings/records/tests/RecordStoreTestSupport.h"

using namespace recordtest;

namespace {

// A caller's key set in its stored form: two sets are equal, case and members included, when
// these bytes are.
std::string storedForm(const KeyMap& keys)
{
    ser_map<ser_wstring, ZETFallbackKeySettings> stored;
    for (const auto& entry : keys)
        stored.emplace(ser_wstring(entry.first), entry.second);
    return plainForm(stored);
}

// The stored user's text, or a marker when the user isn't found.
std::wstring textOf(const std::wstring& user)
{
    const auto found = ZETSettings::getUserSettings(user);
    return found ? std::wstring(found->userText) : L"<none>";
}

// The login as the caller's variables hold it after getLoginData: user|password|flags. They start
// filled, so that what the read leaves of them shows.
std::wstring storedLogin()
{
    std::wstring user = L"stale", password = L"stale";
    bool flags[3] = {true, true, true};
    ZETSettings::getLoginData(user, password, flags[0], flags[1], flags[2]);
    return user + L"|" + password + L"|" + std::to_wstring(flags[0] * 100 + flags[1] * 10 + flags[2]);
}

using zetserialtest::loginRecord;

// Bytes that are no ciphertext of this machine's.
const std::string foreign(80, '\x33');

class ProtectedValueStoresTest : public zettest::RegistryTest {};

TEST_F(ProtectedValueStoresTest, FallbackKeysAreReadAndReplacedAsOneSet)
{
    const auto nothing = ZETSettings::getFallbackKeySettings();
    ASSERT_TRUE(nothing);
    EXPECT_TRUE(nothing->empty());
    EXPECT_FALSE(hasValue(kBase, L"FallbackKeys"));

    const KeyMap first = {{L"Key", keyEntry(L"upper", std::string("\0\x01", 2))}, {L"key", keyEntry(L"lower")},
                          {L"", keyEntry(L"")}};
    setKeys(first);
    EXPECT_EQ(storedForm(first), storedForm(*ZETSettings::getFallbackKeySettings()));
    const KeyMap second = {{L"other", keyEntry(L"o", "ob")}};
    setKeys(second);
    EXPECT_EQ(storedForm(second), storedForm(*ZETSettings::getFallbackKeySettings()));

    // The empty set is stored like any other, as the encrypted count 0; a null pointer changes
    // nothing.
    setKeys({});
    ZETSettings::setFallbackKeySettings(boost::shared_ptr<KeyMap>());
    EXPECT_TRUE(ZETSettings::getFallbackKeySettings()->empty());
    EXPECT_EQ(std::string(4, '\0'), decrypt(rawValue(kBase, L"FallbackKeys")));
}

TEST_F(ProtectedValueStoresTest, UsersAreFoundReplacedAndRemovedInAnyCaseOfTheName)
{
    EXPECT_FALSE(ZETSettings::getUserSettings(L"Alice"));
    // A key in another case, as another program may have written it.
    ZETUserSettingsMap planted;
    planted.users[ser_wstring(L"Frank")] = *userRecord(L"frank's");
    storeProtected(L"UserSettings", plainForm(planted));

    const auto mine = userRecord(L"first", std::string("b\0y", 3));
    ZETSettings::setUserSettings(L"Alice", mine);
    mine->userText = L"changed by the caller";
    EXPECT_EQ(plainForm(*userRecord(L"first", std::string("b\0y", 3))), formOf(ZETSettings::getUserSettings(L"aLICE")));
    ZETSettings::setUserSettings(L"ALICE", userRecord(L"second"));
    ZETSettings::setUserSettings(L"ALICE", nullptr);
    ZETSettings::setUserSettings(L"", userRecord(L"nobody's"));
    EXPECT_EQ(L"second", textOf(L"alice"));
    EXPECT_EQ(L"frank's", textOf(L"FRANK"));
    EXPECT_EQ(L"nobody's", textOf(L""));
    EXPECT_TRUE(holdsText(decrypt(rawValue(kBase, L"UserSettings")), L"alice"));

    // A name that isn't stored writes nothing: the ciphertext, fresh on every write, stays.
    const std::string before = rawValue(kBase, L"UserSettings");
    ZETSettings::removeUserSettings(L"dave");
    EXPECT_EQ(before, rawValue(kBase, L"UserSettings"));
    ZETSettings::removeUserSettings(L"frank");
    EXPECT_EQ(L"<none>", textOf(L"Frank"));
    EXPECT_EQ(L"second", textOf(L"Alice"));
    ZETSettings::removeUserSettings(L"");
    ZETSettings::removeUserSettings(L"Alice");
    EXPECT_EQ(std::string(4, '\0'), decrypt(rawValue(kBase, L"UserSettings")));
}

TEST_F(ProtectedValueStoresTest, TheLoginSwitchesDecideWhatIsStoredAndRemovalLeavesNothing)
{
    EXPECT_EQ(L"||0", storedLogin());
    for (int bits = 0; bits < 8; ++bits) {
        const bool enabled = bits & 1, keep = enabled && (bits & 2), dependent = keep && (bits & 4);
        SCOPED_TRACE(bits);
        ZETSettings::setLoginData(L"Operator", L"s3cret", bits & 1, bits & 2, bits & 4);
        const std::wstring password = keep ? L"s3cret" : L"";
        EXPECT_EQ(L"Operator|" + password + L"|" + std::to_wstring(enabled * 100 + keep * 10 + dependent),
                  storedLogin());
        // No password behind a switch that keeps none, not even an earlier one.
        EXPECT_EQ(plainForm(*loginRecord(L"Operator", password, enabled, keep, dependent)),
                  decrypt(rawValue(kBase, L"LoginSettings")));
    }
    ZETSettings::setLoginData(std::wstring(L"ab\0cd", 5), std::wstring(L"pw\0tail", 7), true, true, false);
    EXPECT_EQ(plainForm(*loginRecord(L"ab", L"pw", 1, 1, 0)), decrypt(rawValue(kBase, L"LoginSettings")));
    ZETSettings::removeLoginData();
    ZETSettings::removeLoginData();
    EXPECT_EQ(L"||0", storedLogin());
    EXPECT_FALSE(hasValue(kBase, L"LoginSettings"));
}

TEST_F(ProtectedValueStoresTest, BadStoredValuesReadAsFarAsTheyGoAndLoseNoReadableRecord)
{
    for (const wchar_t* name : {L"FallbackKeys", L"UserSettings", L"LoginSettings"})
        writeRaw(kBase, name, foreign);
    EXPECT_TRUE(ZETSettings::getFallbackKeySettings()->empty());
    EXPECT_EQ(L"<none>", textOf(L"anyone"));
    EXPECT_EQ(L"||0", storedLogin());

    // Cut inside the last entry: the entries before it read, and a save keeps them.
    const std::string keys = storedForm({{L"a", keyEntry(L"whole")}, {L"b", keyEntry(L"cut")}});
    storeProtected(L"FallbackKeys", keys.substr(0, keys.size() - 2));
    EXPECT_EQ(storedForm({{L"a", keyEntry(L"whole")}}), storedForm(*ZETSettings::getFallbackKeySettings()));
    ZETUserSettingsMap users;
    users.users[ser_wstring(L"heidi")] = *userRecord(L"kept");
    users.users[ser_wstring(L"ivan")] = *userRecord(L"cut off");
    storeProtected(L"UserSettings", plainForm(users).substr(0, plainForm(users).size() - 6));
    EXPECT_EQ(L"<none>", textOf(L"ivan"));
    ZETSettings::setUserSettings(L"judy", userRecord(L"new"));
    EXPECT_EQ(L"kept", textOf(L"heidi"));
    EXPECT_EQ(L"new", textOf(L"judy"));

    // A login cut before its flags reads them false; a flag byte other than 1 reads false.
    storeProtected(L"LoginSettings", plainForm(*loginRecord(L"user", L"pass", 1, 1, 1)).substr(0, 24));
    EXPECT_EQ(L"user|pass|0", storedLogin());
    storeProtected(L"LoginSettings", plainForm(*loginRecord(L"u", L"p", 2, 2, 255)));
    EXPECT_EQ(L"u|p|0", storedLogin());
}

// A map made under another key (here: bytes that are no ciphertext) holds nothing readable.
TEST_F(ProtectedValueStoresTest, AUserMapThatDoesntDecryptIsAbsentAndTheNextUserSavedStartsANewOne)
{
    writeRaw(kBase, L"UserSettings", foreign);
    ZETSettings::removeUserSettings(L"judy");
    EXPECT_EQ(foreign, rawValue(kBase, L"UserSettings"));

    ZETSettings::setUserSettings(L"Judy", userRecord(L"new"));
    ZETUserSettingsMap expected;
    expected.users[ser_wstring(L"judy")] = *userRecord(L"new");
    EXPECT_EQ(plainForm(expected), decrypt(rawValue(kBase, L"UserSettings")));
    EXPECT_EQ(L"new", textOf(L"JUDY"));
}

// Where wchar_t is 32 bits, U+10000 and its two surrogates as separate characters are two keys
// of the caller's map that write the same units.
TEST_F(ProtectedValueStoresTest, KeysThatWriteTheSameUnitsAreBothStoredAndTheJoinedOneReadsBack)
{
    const std::wstring joined = L"\U00010000";
    const std::wstring split = {static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0xDC00)};
    if (joined == split)
        GTEST_SKIP() << "wchar_t is 16 bits: the two are one text";
    setKeys({{joined, keyEntry(L"joined")}, {split, keyEntry(L"split")}});

    EXPECT_EQ(std::string("\x02\0\0\0", 4), decrypt(rawValue(kBase, L"FallbackKeys")).substr(0, 4));
    EXPECT_EQ(storedForm({{joined, keyEntry(L"joined")}}), storedForm(*ZETSettings::getFallbackKeySettings()));
}

// After every write, the store's bytes hold none of the texts in any encoding. (That the scan
// finds clear text in the store is shown by the fallback database's records.)
TEST_F(ProtectedValueStoresTest, NoSecretStandsInTheClearAfterAnyWrite)
{
    const std::wstring user = L"Wilhelmina.Q\u00E9rard", password = L"Pa55-Zx\u00F8-horse-battery";
    const std::wstring profile = L"preferred-profile-Osprey\u00E6-7", key = L"CorporateFallback-\u0416\u00DF";
    const std::vector<std::wstring> secrets = {user,    L"wilhelmina.q\u00E9rard", password, profile, key,
                                               L"WEP-Passphrase-Hx9", L"opaque-user-bytes", L"key-bytes-5e"};
    ZETSettings::setLoginData(user, password, true, true, true);
    expectNoPlainText(registry, secrets);
    ZETSettings::setUserSettings(user, userRecord(profile, "opaque-user-bytes"));
    expectNoPlainText(registry, secrets);
    setKeys({{key, keyEntry(L"WEP-Passphrase-Hx9", "key-bytes-5e")}});
    expectNoPlainText(registry, secrets);
    ZETSettings::setLoginData(user, password, true, false, false);
    ZETSettings::setUserSettings(L"Second.User", userRecord(L"second"));
    ZETSettings::removeUserSettings(L"second.user");
    expectNoPlainText(registry, secrets);
}

// Below a volatile key no lasting key can be made, so the base key can't be created while
// encryption still works. Where the registry has no volatile keys, a process without write
// rights shows the same.
TEST_F(ProtectedValueStoresTest, ARefusedWriteReachesOnlyTheCallerOfTheFallbackKeys)
{
    zettest::ScopedKey orvane;
    RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Orvane", 0, 0, REG_OPTION_VOLATILE, KEY_ALL_ACCESS, 0,
                    orvane.out(), 0);
    EXPECT_NO_THROW(ZETSettings::setLoginData(L"user", L"pw", true, true, true));
    EXPECT_NO_THROW(ZETSettings::setUserSettings(L"user", userRecord(L"text")));
    if (keyExists(kBase))
        GTEST_SKIP() << "this registry has no volatile keys";
    EXPECT_THROW(setKeys({{L"k", keyEntry(L"v")}}), JetByteTools::CRegistryKey::Exception);
}

}  // namespace
