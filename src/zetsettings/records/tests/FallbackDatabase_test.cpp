#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>

#include "zetsettings/records/tests/RecordStoreTestSupport.h"

using namespace recordtest;

namespace {

boost::shared_ptr<ZETFallbackSettings> record(const std::wstring& owner, const std::wstring& network,
                                              const std::string& bytes1 = "", const std::string& bytes2 = "")
{
    boost::shared_ptr<ZETFallbackSettings> settings(new ZETFallbackSettings);
    settings->owner = owner;
    settings->network = network;
    settings->fallbackBytes1 = bytes1;
    settings->fallbackBytes2 = bytes2;
    return settings;
}

std::vector<std::wstring> sorted(const boost::shared_ptr<std::vector<std::wstring> >& names)
{
    if (!names) {
        ADD_FAILURE() << "a list is never null";
        return {};
    }
    std::vector<std::wstring> copy(*names);
    std::sort(copy.begin(), copy.end());
    return copy;
}

std::string bytes1Of(const std::wstring& owner, const std::wstring& network)
{
    const auto found = ZETSettings::getFallbackSettings(owner, network);
    return found ? std::string(found->fallbackBytes1) : "<none>";
}

class FallbackDatabaseTest : public zettest::RegistryTest {};

TEST_F(FallbackDatabaseTest, ARecordIsFiledInTheClearUnderItsLowerCaseOwner)
{
    const auto mine = record(L"Corp", L"Lab_Net1", "one", std::string("\0two", 4));
    ZETSettings::setFallbackSettings(mine);
    EXPECT_EQ(L"corp", mine->owner);
    EXPECT_EQ(std::vector<std::wstring>{L"corp"}, sorted(ZETSettings::getListOfOwners()));
    EXPECT_EQ(plainForm(*record(L"corp", L"Lab_Net1", "one", std::string("\0two", 4))),
              rawValue(kDatabase + L"\\corp", L"Lab_Net1_88"));
    if (zettest::TestRegistry::isPortable()) {
        // The records are clear by design; this also shows that the secret scans can see text.
        EXPECT_TRUE(holdsText(rawStoreBytes(registry), L"Lab_Net1"));
    }

    const auto found = ZETSettings::getFallbackSettings(L"CORP", L"Lab_Net1");
    ASSERT_TRUE(found);
    EXPECT_EQ(L"corp", found->owner);
    EXPECT_EQ(std::string("\0two", 4), found->fallbackBytes2);
    EXPECT_FALSE(ZETSettings::getFallbackSettings(L"corp", L"lab_net1"));
}

TEST_F(FallbackDatabaseTest, NetworksKeepTheirCaseAndASecondSetReplaces)
{
    ZETSettings::setFallbackSettings(record(L"owner", L"Home", "upper"));
    ZETSettings::setFallbackSettings(record(L"owner", L"home", "lower"));
    ZETSettings::setFallbackSettings(record(L"OWNER", L"home", "lower again"));
    ZETSettings::setFallbackSettings(record(L"other", L"Home", "other's"));
    EXPECT_EQ("upper", bytes1Of(L"Owner", L"Home"));
    EXPECT_EQ("lower again", bytes1Of(L"owner", L"home"));
    EXPECT_EQ("other's", bytes1Of(L"other", L"Home"));
    EXPECT_EQ((std::vector<std::wstring>{L"Home", L"home"}), sorted(ZETSettings::getListOfNetworks(L"OWNER")));
    EXPECT_EQ((std::vector<std::wstring>{L"other", L"owner"}), sorted(ZETSettings::getListOfOwners()));
    ZETSettings::setFallbackSettings(boost::shared_ptr<ZETFallbackSettings>());
    EXPECT_EQ(2u, ZETSettings::getListOfOwners()->size());
}

TEST_F(FallbackDatabaseTest, RemovingTouchesOneValueAndKeepsTheOwner)
{
    ZETSettings::setFallbackSettings(record(L"owner", L"a_b", "ab"));
    ZETSettings::setFallbackSettings(record(L"owner", L"c", "c"));
    // The network must match exactly; the owner in any case.
    ZETSettings::removeFallbackSettings(L"owner", L"A_B");
    ZETSettings::removeFallbackSettings(L"owner", L"never stored");
    EXPECT_EQ((std::vector<std::wstring>{L"a_b", L"c"}), sorted(ZETSettings::getListOfNetworks(L"owner")));
    ZETSettings::removeFallbackSettings(L"OWNER", L"a_b");
    EXPECT_EQ(std::vector<std::wstring>{L"c"}, sorted(ZETSettings::getListOfNetworks(L"owner")));
    EXPECT_EQ("c", bytes1Of(L"owner", L"c"));
    ZETSettings::removeFallbackSettings(L"owner", L"c");
    EXPECT_TRUE(ZETSettings::getListOfNetworks(L"owner")->empty());
    EXPECT_EQ(std::vector<std::wstring>{L"owner"}, sorted(ZETSettings::getListOfOwners()));
    EXPECT_EQ("<none>", bytes1Of(L"owner", L"c"));
}

TEST_F(FallbackDatabaseTest, ReadsCreateTheKeysTheyOpen)
{
    EXPECT_TRUE(ZETSettings::getListOfOwners()->empty());
    EXPECT_TRUE(keyExists(kDatabase));
    EXPECT_FALSE(ZETSettings::getFallbackSettings(L"Ghost", L"net"));
    EXPECT_FALSE(keyExists(kDatabase + L"\\ghost"));
    EXPECT_TRUE(ZETSettings::getListOfNetworks(L"Nobody")->empty());
    ZETSettings::removeFallbackSettings(L"Somebody", L"net");
    EXPECT_EQ((std::vector<std::wstring>{L"nobody", L"somebody"}), sorted(ZETSettings::getListOfOwners()));
}

TEST_F(FallbackDatabaseTest, ForeignValuesAreReadAsTheyStandAndNeverDeleted)
{
    ZETSettings::setFallbackSettings(record(L"owner", L"mine", "mine"));
    // A record planted with a mixed-case subkey, a value with no case digits, a cut record.
    writeRaw(kDatabase + L"\\Planted", L"Net_8", plainForm(*record(L"x", L"y", "planted")));
    writeRaw(kDatabase + L"\\owner", L"nodigits", plainForm(*record(L"x", L"y", "no digits")));
    const std::string whole = plainForm(*record(L"owner", L"cut", "cut bytes"));
    writeRaw(kDatabase + L"\\owner", L"cut_000", whole.substr(0, whole.size() - 6));

    EXPECT_EQ("planted", bytes1Of(L"PLANTED", L"Net"));
    EXPECT_EQ("no digits", bytes1Of(L"owner", L""));
    const auto cut = ZETSettings::getFallbackSettings(L"owner", L"cut");
    ASSERT_TRUE(cut);
    EXPECT_EQ(L"cut", cut->network);
    EXPECT_EQ("", cut->fallbackBytes1);

    // A save rewrites every record it loaded and deletes none.
    ZETSettings::setFallbackSettings(record(L"owner", L"new", "new"));
    EXPECT_EQ("mine", bytes1Of(L"owner", L"mine"));
    EXPECT_EQ("planted", bytes1Of(L"planted", L"Net"));
    // Rewritten under the names the case bitmap gives them, beside the old ones.
    EXPECT_EQ((std::vector<std::wstring>{L"", L"", L"cut", L"cut", L"mine", L"new"}),
              sorted(ZETSettings::getListOfNetworks(L"owner")));

    // A value name short of case digits stops every load, and loses nothing.
    writeRaw(kDatabase + L"\\owner", L"abcde_8", "");
    EXPECT_THROW(ZETSettings::getFallbackSettings(L"owner", L"mine"), std::out_of_range);
    EXPECT_THROW(ZETSettings::setFallbackSettings(record(L"owner", L"lost", "lost")), std::out_of_range);
    EXPECT_THROW(ZETSettings::getListOfNetworks(L"owner"), std::out_of_range);
    EXPECT_EQ(plainForm(*record(L"owner", L"mine", "mine")), rawValue(kDatabase + L"\\owner", L"mine_0"));
    std::string ignored;
    EXPECT_FALSE(readRaw(kDatabase + L"\\owner", L"lost_0", ignored));
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

}  // namespace
