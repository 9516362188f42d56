#include <stdexcept>

#include "zetsettings/records/tests/RecordStoreTestSupport.h"

using namespace recordtest;

namespace {

// A list in a fixed order: the registry's enumeration order is not part of the result.
std::vector<std::wstring> sorted(const boost::shared_ptr<std::vector<std::wstring> >& names)
{
    return names ? zettest::sorted(*names) : std::vector<std::wstring>{L"<null>"};
}

std::string bytes1Of(const std::wstring& owner, const std::wstring& network)
{
    const auto found = ZETSettings::getFallbackSettings(owner, network);
    return found ? std::string(found->fallbackBytes1) : "<none>";
}

class FallbackDatabaseTest : public zettest::RegistryTest {};

TEST_F(FallbackDatabaseTest, ARecordIsFiledInTheClearUnderItsLowerCaseOwnerAndExactNetwork)
{
    const auto mine = record(L"Corp", L"Lab_Net1", "one", std::string("\0two", 4));
    ZETSettings::setFallbackSettings(mine);
    EXPECT_EQ(L"corp", mine->owner);
    EXPECT_EQ(plainForm(*mine), rawValue(kDatabase + L"\\corp", L"Lab_Net1_88"));
    // Clear by design; this also shows that the secret scans of the store can see text.
    EXPECT_TRUE(!zettest::TestRegistry::isPortable() || holdsText(rawStoreBytes(registry), L"Lab_Net1"));
    EXPECT_EQ(plainForm(*mine), formOf(ZETSettings::getFallbackSettings(L"CORP", L"Lab_Net1")));

    ZETSettings::setFallbackSettings(record(L"corp", L"lab_net1", "lower"));
    ZETSettings::setFallbackSettings(record(L"CORP", L"lab_net1", "lower again"));
    ZETSettings::setFallbackSettings(record(L"other", L"Lab_Net1", "other's"));
    ZETSettings::setFallbackSettings(boost::shared_ptr<ZETFallbackSettings>());
    EXPECT_EQ("one", bytes1Of(L"Corp", L"Lab_Net1"));
    EXPECT_EQ("lower again", bytes1Of(L"corp", L"lab_net1"));
    EXPECT_EQ("<none>", bytes1Of(L"corp", L"LAB_NET1"));
    EXPECT_EQ("other's", bytes1Of(L"other", L"Lab_Net1"));
    EXPECT_EQ((std::vector<std::wstring>{L"Lab_Net1", L"lab_net1"}), sorted(ZETSettings::getListOfNetworks(L"CORP")));
    EXPECT_EQ((std::vector<std::wstring>{L"corp", L"other"}), sorted(ZETSettings::getListOfOwners()));
}

// Owners' subkeys come into being on first use, reads included, and stay when emptied.
TEST_F(FallbackDatabaseTest, RemovingTouchesOneValueAndOwnersStay)
{
    EXPECT_EQ(std::vector<std::wstring>{}, sorted(ZETSettings::getListOfOwners()));
    EXPECT_TRUE(keyExists(kDatabase));
    EXPECT_FALSE(ZETSettings::getFallbackSettings(L"Ghost", L"net"));
    EXPECT_FALSE(keyExists(kDatabase + L"\\ghost"));
    EXPECT_EQ(std::vector<std::wstring>{}, sorted(ZETSettings::getListOfNetworks(L"Nobody")));
    ZETSettings::removeFallbackSettings(L"Somebody", L"net");

    ZETSettings::setFallbackSettings(record(L"owner", L"a_b", "ab"));
    ZETSettings::setFallbackSettings(record(L"owner", L"c", "c"));
    ZETSettings::removeFallbackSettings(L"owner", L"A_B");
    ZETSettings::removeFallbackSettings(L"owner", L"never stored");
    EXPECT_EQ((std::vector<std::wstring>{L"a_b", L"c"}), sorted(ZETSettings::getListOfNetworks(L"owner")));
    ZETSettings::removeFallbackSettings(L"OWNER", L"a_b");
    EXPECT_EQ("c", bytes1Of(L"owner", L"c"));
    ZETSettings::removeFallbackSettings(L"owner", L"c");
    EXPECT_EQ(std::vector<std::wstring>{}, sorted(ZETSettings::getListOfNetworks(L"owner")));
    EXPECT_EQ((std::vector<std::wstring>{L"nobody", L"owner", L"somebody"}), sorted(ZETSettings::getListOfOwners()));
}

TEST_F(FallbackDatabaseTest, ForeignValuesAreReadAsTheyStandAndNeverDeleted)
{
    ZETSettings::setFallbackSettings(record(L"owner", L"mine", "mine"));
    // A record under a mixed-case subkey, a value name without case digits, a cut record.
    writeRaw(kDatabase + L"\\Planted", L"Net_8", plainForm(*record(L"x", L"y", "planted")));
    writeRaw(kDatabase + L"\\owner", L"nodigits", plainForm(*record(L"x", L"y", "no digits")));
    const std::string whole = plainForm(*record(L"owner", L"cut", "cut bytes"));
    writeRaw(kDatabase + L"\\owner", L"cut_000", whole.substr(0, whole.size() - 6));
    EXPECT_EQ("planted", bytes1Of(L"PLANTED", L"Net"));
    EXPECT_EQ("no digits", bytes1Of(L"owner", L""));
    EXPECT_EQ(plainForm(*record(L"owner", L"cut")), formOf(ZETSettings::getFallbackSettings(L"owner", L"cut")));

    // A save rewrites every record it loaded, under the names the case bitmap gives them, and
    // deletes none.
    ZETSettings::setFallbackSettings(record(L"owner", L"new", "new"));
    EXPECT_EQ("planted", bytes1Of(L"planted", L"Net"));
    EXPECT_EQ((std::vector<std::wstring>{L"", L"", L"cut", L"cut", L"mine", L"new"}),
              sorted(ZETSettings::getListOfNetworks(L"owner")));

    // A value name short of case digits stops every load, and loses nothing.
    writeRaw(kDatabase + L"\\owner", L"abcde_8", "");
    EXPECT_THROW(ZETSettings::getFallbackSettings(L"owner", L"mine"), std::out_of_range);
    EXPECT_THROW(ZETSettings::setFallbackSettings(record(L"owner", L"lost", "lost")), std::out_of_range);
    EXPECT_THROW(ZETSettings::getListOfNetworks(L"owner"), std::out_of_range);
    EXPECT_EQ(plainForm(*record(L"owner", L"mine", "mine")), rawValue(kDatabase + L"\\owner", L"mine_0"));
    EXPECT_FALSE(hasValue(kDatabase + L"\\owner", L"lost_0"));
}

// Records are read straight into the map: a network met again through another value name must
// get a fresh record, not the rest of the earlier one.
TEST_F(FallbackDatabaseTest, ANetworkMetTwiceKeepsTheLaterRecordWholeAndAnEmptyValueFilesDefaults)
{
    ZETSettings::setFallbackSettings(record(L"owner", L"mine", "mine"));
    writeRaw(kDatabase + L"\\owner", L"abc_8", plainForm(*record(L"o", L"first", "first", "first")));
    const std::string later = plainForm(*record(L"o", L"n", "later", "later"));
    writeRaw(kDatabase + L"\\owner", L"abc_80", later.substr(0, 12));
    writeRaw(kDatabase + L"\\owner", L"empty_00", "");

    EXPECT_EQ(plainForm(*record(L"o", L"n")), formOf(ZETSettings::getFallbackSettings(L"owner", L"Abc")));
    EXPECT_EQ(plainForm(ZETFallbackSettings()), formOf(ZETSettings::getFallbackSettings(L"owner", L"empty")));
    EXPECT_EQ("mine", bytes1Of(L"owner", L"mine"));
}

TEST_F(FallbackDatabaseTest, AnEmptyOwnerOrNetworkLosesNoOtherRecord)
{
    ZETSettings::setFallbackSettings(record(L"owner", L"net", "kept"));
    ZETSettings::setFallbackSettings(record(L"", L"", "empty names"));
    ZETSettings::setFallbackSettings(record(L"owner", L"", "empty network"));
    ZETSettings::removeFallbackSettings(L"", L"net");
    EXPECT_EQ("kept", bytes1Of(L"owner", L"net"));
    EXPECT_EQ("empty network", bytes1Of(L"owner", L""));
}

// A lookup reads every owner's values, not only the asked owner's: what stops a load stops it
// too, wherever in the database it sits, and another owner's record of the same network is
// never the answer.
TEST_F(FallbackDatabaseTest, OneRecordIsLookedUpInTheWholeDatabase)
{
    ZETSettings::setFallbackSettings(record(L"mine", L"net", "mine"));
    ZETSettings::setFallbackSettings(record(L"aaa", L"net", "before"));
    ZETSettings::setFallbackSettings(record(L"zzz", L"net", "after"));
    EXPECT_EQ("mine", bytes1Of(L"MINE", L"net"));
    EXPECT_EQ("<none>", bytes1Of(L"nobody", L"net"));
    EXPECT_EQ("after", bytes1Of(L"ZZZ", L"net"));
    for (const wchar_t* other : {L"aaa", L"zzz"}) {
        const std::wstring path = kDatabase + L"\\" + other;
        writeRaw(path, L"abcde_8", "");
        EXPECT_THROW(ZETSettings::getFallbackSettings(L"mine", L"net"), std::out_of_range) << other;
        ASSERT_EQ(ERROR_SUCCESS, RegDeleteTreeW(HKEY_LOCAL_MACHINE, path.c_str()));
    }
    EXPECT_EQ("mine", bytes1Of(L"mine", L"net"));
}

}  // namespace
