// The chooser's flag, and the preferred list as it is loaded and stored whole.
#include "zetsettings/chooser/tests/ChooserTestSupport.h"

using namespace choosertest;

namespace {

class ChooserStateTest : public zettest::RegistryTest {};

// Settings can't be opened with the rights every operation asks for: everything reads as never
// stored, and every write is dropped without a word. Exit codes name the broken expectation.
ZET_CHILD_SCENARIO(chooser_without_write_rights)
{
    if (!zettest::becomeUnprivileged())
        return 2;
    if (ZETSettings::isChooserActive() || ZETSettings::isChooserActive())
        return 3;
    bool wrapped = true;
    if (!ZETSettings::getChooserPreferredNets()->entries.empty() || step(true, wrapped) != L"" || wrapped)
        return 4;
    ZETSettings::setChooserActive(false);
    ZETSettings::updateChooserPreferredNets(listOf({entry(L"child")}));
    ZETSettings::stopChooserAutoAssociate();
    ZETSettings::moveChooserPreferredNetToFront(entry(L"child"));
    ZETSettings::deleteChooserPreferredNet(L"P");
    ZETSettings::updateAlertNotificationState(5, true);
    return ZETSettings::isAlertNotificationEnabled(3) && ZETSettings::isAlertNotificationEnabled(3) ? 0 : 5;
}

TEST_F(ChooserStateTest, TheFlagIsActiveOnlyAtOneAndAnUnreadableFlagIsStoredAsZero)
{
    EXPECT_FALSE(ZETSettings::isChooserActive());
    EXPECT_EQ("00000000", storedHex(kActiveValue));

    ZETSettings::setChooserActive(true);
    EXPECT_EQ("01000000", storedHex(kActiveValue));
    EXPECT_TRUE(ZETSettings::isChooserActive());
    ZETSettings::setChooserActive(false);
    EXPECT_EQ("00000000", storedHex(kActiveValue));

    // Another number is inactive and stays; a flag of another type counts as absent.
    plant(kActiveValue, "02000000", REG_DWORD);
    EXPECT_FALSE(ZETSettings::isChooserActive());
    EXPECT_EQ("02000000", storedHex(kActiveValue));
    plant(kActiveValue, "31000000", REG_SZ);
    EXPECT_FALSE(ZETSettings::isChooserActive());
    DWORD type = 0;
    EXPECT_EQ("00000000", storedHex(kActiveValue, &type));
    EXPECT_EQ(static_cast<DWORD>(REG_DWORD), type);
}

TEST_F(ChooserStateTest, AListIsStoredInTheClearAsItsWireFormAndReadBackAsANewRecord)
{
    boost::shared_ptr<ZETPreferredNetworks> nothing = ZETSettings::getChooserPreferredNets();
    ASSERT_TRUE(nothing);
    EXPECT_EQ("0000000000", serialHex(*nothing));
    EXPECT_EQ("absent", storedHex(kListValue));

    ZETSettings::updateChooserPreferredNets(listOf({entry(L"ab", 3)}, 1));
    // position, one element, "ab", an empty MAC address, then the four flag bytes.
    const std::string stored = "01" "01000000" "0400000061006200" "00000000" "00030000";
    EXPECT_EQ(stored, storedHex(kListValue));

    // What a caller holds is a new record, and a private copy until it is passed back.
    boost::shared_ptr<ZETPreferredNetworks> mine = ZETSettings::getChooserPreferredNets();
    EXPECT_EQ(stored, serialHex(*mine));
    mine->entries.push_back(entry(L"More"));
    EXPECT_EQ(stored, serialHex(*ZETSettings::getChooserPreferredNets()));
    ZETSettings::updateChooserPreferredNets(mine);
    EXPECT_EQ(serialHex(*mine), storedHex(kListValue));
}

TEST_F(ChooserStateTest, APositionBeyondTheListOrACutValueIsBroughtWithinWhatWasRead)
{
    const std::string planted = serialHex(*listOf(entriesNamed({L"P", L"Q", L"R"}), 7));
    plant(kListValue, planted);
    EXPECT_EQ(3u, ZETSettings::getChooserPreferredNets()->position.value);
    EXPECT_EQ(planted, storedHex(kListValue));

    // Cut inside the third entry's name.
    plant(kListValue, planted.substr(0, planted.size() - 18));
    boost::shared_ptr<ZETPreferredNetworks> list = ZETSettings::getChooserPreferredNets();
    EXPECT_EQ(Names({L"P", L"Q"}), namesOf(*list));
    EXPECT_EQ(2u, list->position.value);
    for (const std::string& broken : {std::string("020500"), std::string()}) {
        plant(kListValue, broken);
        EXPECT_EQ("0000000000", serialHex(*ZETSettings::getChooserPreferredNets())) << broken;
    }

    boost::shared_ptr<ZETPreferredNetworks> mine = listOf(entriesNamed({L"P", L"Q", L"R"}), 7);
    ZETSettings::updateChooserPreferredNets(mine);
    EXPECT_EQ(3u, mine->position.value);
    EXPECT_EQ("03", storedHex(kListValue).substr(0, 2));
    boost::shared_ptr<ZETPreferredNetworks> none = listOf({}, 4);
    ZETSettings::updateChooserPreferredNets(none);
    EXPECT_EQ(0u, none->position.value);
    EXPECT_EQ("0000000000", storedHex(kListValue));
}

TEST_F(ChooserStateTest, AProcessThatMayNotWriteTheStoreSeesNothingAndChangesNothing)
{
    ZET_SKIP_UNLESS_RIGHTS_CAN_DROP();
    ZETSettings::setChooserActive(true);
    ZETSettings::updateChooserPreferredNets(listOf(entriesNamed({L"P", L"Q"}), 1));
    ZETSettings::updateAlertNotificationState(3, false);
    ZETSettings::updateAlertNotificationState(5, false);
    const std::string list = storedHex(kListValue), alerts = storedHex(kAlertValue);
    ASSERT_EQ(0, zettest::runChild("chooser_without_write_rights"));
    EXPECT_EQ("01000000", storedHex(kActiveValue));
    EXPECT_EQ(list, storedHex(kListValue));
    EXPECT_EQ(alerts, storedHex(kAlertValue));
}

}  // namespace
