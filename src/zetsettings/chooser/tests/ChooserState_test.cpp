#include <gtest/gtest.h>

#include "zetsettings/chooser/tests/ChooserTestSupport.h"
#include "support/ChildProcess.h"
#include "support/ChildScenario.h"
#include "support/TestRegistry.h"

using namespace choosertest;

namespace {

class ChooserStateTest : public zettest::RegistryTest {};

ZET_CHILD_SCENARIO(chooser_set_active)
{
    ZETSettings::setChooserActive(args.at(0) == "on");
    return 0;
}

ZET_CHILD_SCENARIO(chooser_expect_active)
{
    return ZETSettings::isChooserActive() == (args.at(0) == "on") ? 0 : 1;
}

TEST_F(ChooserStateTest, AnAbsentFlagReadsInactiveAndIsStoredAsZero)
{
    EXPECT_FALSE(ZETSettings::isChooserActive());
    std::string stored;
    DWORD type = 0;
    ASSERT_TRUE(readRaw(kActiveValue, stored, &type));
    EXPECT_EQ(static_cast<DWORD>(REG_DWORD), type);
    EXPECT_EQ(std::string(4, '\0'), stored);
}

TEST_F(ChooserStateTest, OnlyAStoredOneIsActiveAndTheQuestionLeavesOtherNumbersAlone)
{
    ZETSettings::setChooserActive(true);
    EXPECT_TRUE(ZETSettings::isChooserActive());
    EXPECT_EQ(1, ZETSettings::intGetZetGuardValue(kActiveValue, -5, false));
    ZETSettings::setChooserActive(false);
    EXPECT_FALSE(ZETSettings::isChooserActive());
    EXPECT_EQ(0, ZETSettings::intGetZetGuardValue(kActiveValue, -5, false));

    plantDword(kActiveValue, 2);
    EXPECT_FALSE(ZETSettings::isChooserActive());
    EXPECT_EQ(2, ZETSettings::intGetZetGuardValue(kActiveValue, -5, false));
}

TEST_F(ChooserStateTest, AFlagOfAnotherTypeReadsAsAbsentAndIsReplacedByZero)
{
    writeRaw(kActiveValue, L"1", 2 * sizeof(wchar_t), REG_SZ);
    EXPECT_FALSE(ZETSettings::isChooserActive());
    EXPECT_EQ(0, ZETSettings::intGetZetGuardValue(kActiveValue, -5, false));
}

TEST_F(ChooserStateTest, TheFlagIsSharedWithOtherProcesses)
{
    ZETSettings::setChooserActive(true);
    EXPECT_EQ(0, zettest::runChild("chooser_expect_active", {"on"}));
    EXPECT_EQ(0, zettest::runChild("chooser_set_active", {"off"}));
    EXPECT_FALSE(ZETSettings::isChooserActive());
}

TEST_F(ChooserStateTest, NothingStoredReadsAsAnEmptyListAndCreatesNoValue)
{
    boost::shared_ptr<ZETPreferredNetworks> list = ZETSettings::getChooserPreferredNets();
    ASSERT_TRUE(list);
    EXPECT_EQ(0u, list->position.value);
    EXPECT_TRUE(list->entries.empty());
    EXPECT_FALSE(rawExists(kListValue));
}

TEST_F(ChooserStateTest, AListRoundTripsWithAllMembersInItsOwnSerialForm)
{
    boost::shared_ptr<ZETPreferredNetworks> list(new ZETPreferredNetworks);
    list->entries.push_back(entry(L"Home", 3, 7, 8, std::string("\x00\x11\x22\x33\x44\x55", 6), 1));
    list->entries.push_back(entry(L"caf\u00E9", 2, 0xFE, 0x01));
    list->position = 2;
    ZETSettings::updateChooserPreferredNets(list);

    EXPECT_EQ(hex(serialForm(*list)), hex(rawValue(kListValue)));
    boost::shared_ptr<ZETPreferredNetworks> back = ZETSettings::getChooserPreferredNets();
    EXPECT_NE(list.get(), back.get());
    EXPECT_EQ(hex(serialForm(*list)), hex(serialForm(*back)));
    EXPECT_EQ(L"Home", std::wstring(back->entries.at(0).netName));
    EXPECT_EQ(std::string("\x00\x11\x22\x33\x44\x55", 6), back->entries.at(0).macAddress.bytes());
    EXPECT_EQ(1u, back->entries.at(0).entryFlag.value);
    EXPECT_EQ(0xFEu, back->entries.at(1).matchByte1.value);
}

TEST_F(ChooserStateTest, TheStoredBytesAreTheRecordsWireFormInTheClear)
{
    boost::shared_ptr<ZETPreferredNetworks> list(new ZETPreferredNetworks);
    list->entries.push_back(entry(L"ab", 3));
    list->position = 1;
    ZETSettings::updateChooserPreferredNets(list);
    // position, one element, "ab", an empty MAC address, then the four flag bytes.
    EXPECT_EQ("01" "01000000" "0400000061006200" "00000000" "00030000", hex(rawValue(kListValue)));

    ZETSettings::updateChooserPreferredNets(listOf({}));
    EXPECT_EQ("0000000000", hex(rawValue(kListValue)));
}

TEST_F(ChooserStateTest, APositionBeyondTheListIsBroughtDownOnReadAndBeforeWrite)
{
    boost::shared_ptr<ZETPreferredNetworks> planted = listOf({L"P", L"Q", L"R"});
    planted->position = 7;
    plantBytes(kListValue, serialForm(*planted));

    EXPECT_EQ(3u, storedPosition());
    // A read writes nothing back.
    EXPECT_EQ(7, rawValue(kListValue).at(0));

    boost::shared_ptr<ZETPreferredNetworks> mine = listOf({L"P", L"Q", L"R"}, 7);
    ZETSettings::updateChooserPreferredNets(mine);
    EXPECT_EQ(3u, mine->position.value);
    EXPECT_EQ(3, rawValue(kListValue).at(0));

    boost::shared_ptr<ZETPreferredNetworks> none = listOf({}, 4);
    ZETSettings::updateChooserPreferredNets(none);
    EXPECT_EQ(0u, none->position.value);
    EXPECT_EQ("0000000000", hex(rawValue(kListValue)));
}

TEST_F(ChooserStateTest, AListCutInsideAnEntryKeepsTheEntriesBeforeTheCut)
{
    const std::string whole = serialForm(*listOf({L"First", L"Second", L"Third"}, 3));
    // Cut in the middle of the third name.
    plantBytes(kListValue, whole.substr(0, whole.size() - 8));

    boost::shared_ptr<ZETPreferredNetworks> list = ZETSettings::getChooserPreferredNets();
    EXPECT_EQ((std::vector<std::wstring>{L"First", L"Second"}), namesOf(*list));
    EXPECT_EQ(2u, list->position.value);

    // A value too short for any of it, and one that is empty, read as an empty list.
    plantBytes(kListValue, std::string("\x02\x05\x00", 3));
    EXPECT_EQ(0u, ZETSettings::getChooserPreferredNets()->entries.size());
    EXPECT_EQ(0u, storedPosition());
    plantBytes(kListValue, std::string());
    EXPECT_EQ(0u, ZETSettings::getChooserPreferredNets()->entries.size());
}

TEST_F(ChooserStateTest, ARecordInTheCallersHandsIsAPrivateCopyUntilUpdated)
{
    storeList({L"P", L"Q"}, 1);
    boost::shared_ptr<ZETPreferredNetworks> mine = ZETSettings::getChooserPreferredNets();
    mine->entries.push_back(entry(L"R"));
    mine->position = 3;
    EXPECT_EQ((std::vector<std::wstring>{L"P", L"Q"}), storedNames());
    EXPECT_EQ(1u, storedPosition());

    ZETSettings::updateChooserPreferredNets(mine);
    EXPECT_EQ((std::vector<std::wstring>{L"P", L"Q", L"R"}), storedNames());
    EXPECT_EQ(3u, storedPosition());
}

}  // namespace
