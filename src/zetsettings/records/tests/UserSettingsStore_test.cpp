#include <gtest/gtest.h>

#include <string>

#include "zetsettings/records/tests/RecordStoreTestSupport.h"

using namespace recordtest;

namespace {

boost::shared_ptr<ZETUserSettings> userRecord(const std::wstring& text, const std::string& bytes = "")
{
    boost::shared_ptr<ZETUserSettings> record(new ZETUserSettings);
    record->userText = text;
    record->userBytes = bytes;
    return record;
}

// The stored user's text, or a marker when the user isn't found.
std::wstring textOf(const std::wstring& user)
{
    const auto found = ZETSettings::getUserSettings(user);
    return found ? std::wstring(found->userText) : L"<none>";
}

// The stored map decrypted: what the store really holds, whatever the lookup makes of it.
std::string storedPlain()
{
    return decrypt(rawValue(kBase, L"UserSettings"));
}

class UserSettingsStoreTest : public zettest::RegistryTest {};

TEST_F(UserSettingsStoreTest, AUserIsFoundAndReplacedInAnyCaseOfTheName)
{
    EXPECT_FALSE(ZETSettings::getUserSettings(L"Alice"));
    const auto mine = userRecord(L"first", std::string("b\0y", 3));
    ZETSettings::setUserSettings(L"Alice", mine);
    mine->userText = L"changed by the caller";
    const auto found = ZETSettings::getUserSettings(L"aLICE");
    ASSERT_TRUE(found);
    EXPECT_EQ(L"first", found->userText);
    EXPECT_EQ(std::string("b\0y", 3), found->userBytes);

    ZETSettings::setUserSettings(L"ALICE", userRecord(L"second"));
    ZETSettings::setUserSettings(L"ALICE", boost::shared_ptr<ZETUserSettings>());
    EXPECT_EQ(L"second", textOf(L"alice"));
    ZETUserSettingsMap expected;
    expected.users[ser_wstring(L"alice")] = *userRecord(L"second");
    EXPECT_EQ(plainForm(expected), storedPlain());
}

TEST_F(UserSettingsStoreTest, RemovingOneUserKeepsTheOthers)
{
    // A key stored in another case, as another program may have written it.
    ZETUserSettingsMap map;
    map.users[ser_wstring(L"Frank")] = *userRecord(L"frank's");
    storeProtected(L"UserSettings", plainForm(map));
    ZETSettings::setUserSettings(L"", userRecord(L"nobody's"));
    ZETSettings::setUserSettings(L"Carol", userRecord(L"carol's"));
    ZETSettings::removeUserSettings(L"FRANK");
    EXPECT_EQ(L"<none>", textOf(L"frank"));
    EXPECT_EQ(L"nobody's", textOf(L""));
    EXPECT_EQ(L"carol's", textOf(L"carol"));

    // A name that isn't stored writes nothing: the ciphertext, fresh on every write, stays.
    const std::string before = rawValue(kBase, L"UserSettings");
    ZETSettings::removeUserSettings(L"dave");
    EXPECT_EQ(before, rawValue(kBase, L"UserSettings"));

    ZETSettings::removeUserSettings(L"");
    ZETSettings::removeUserSettings(L"Carol");
    EXPECT_EQ(std::string(4, '\0'), storedPlain());
}

TEST_F(UserSettingsStoreTest, BadStoredValuesLoseNoReadableRecord)
{
    // Cut inside the second entry: the first still reads, and a save keeps it.
    ZETUserSettingsMap map;
    map.users[ser_wstring(L"heidi")] = *userRecord(L"kept");
    map.users[ser_wstring(L"ivan")] = *userRecord(L"cut off");
    const std::string whole = plainForm(map);
    storeProtected(L"UserSettings", whole.substr(0, whole.size() - 6));
    EXPECT_EQ(L"<none>", textOf(L"ivan"));
    ZETSettings::setUserSettings(L"judy", userRecord(L"new"));
    EXPECT_EQ(L"kept", textOf(L"heidi"));
    EXPECT_EQ(L"new", textOf(L"judy"));

    // A map that doesn't decrypt reads as empty, and is not overwritten by a single entry.
    const std::string foreign(80, '\x33');
    writeRaw(kBase, L"UserSettings", foreign);
    EXPECT_EQ(L"<none>", textOf(L"heidi"));
    ZETSettings::setUserSettings(L"judy", userRecord(L"newer"));
    ZETSettings::removeUserSettings(L"judy");
    EXPECT_EQ(foreign, rawValue(kBase, L"UserSettings"));
}

TEST_F(UserSettingsStoreTest, NoUserNameOrRecordStandsInTheClear)
{
    const std::wstring name = L"Kristoffer.Lindqvist";
    const std::wstring text = L"preferred-profile-Osprey\u00E6-7";
    const std::wstring bytes = L"opaque-user-bytes-91f3";
    ZETSettings::setUserSettings(name, userRecord(text, std::string(bytes.begin(), bytes.end())));
    ZETSettings::setUserSettings(L"Second.User.Name", userRecord(L"second-user-text-x4"));
    expectNoPlainText(registry, {name, L"kristoffer.lindqvist", text, bytes, L"second.user.name",
                                 L"second-user-text-x4"});
    EXPECT_TRUE(holdsText(storedPlain(), text));
    ZETSettings::removeUserSettings(L"second.user.name");
    expectNoPlainText(registry, {L"kristoffer.lindqvist", text, bytes});
}

}  // namespace
