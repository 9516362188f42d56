#include <gtest/gtest.h>

#include "zetsettings/chooser/tests/ChooserTestSupport.h"
#include "support/ChildProcess.h"
#include "support/ChildScenario.h"
#include "support/TestRegistry.h"

using namespace choosertest;

namespace {

class ChooserWalkTest : public zettest::RegistryTest {};

// A list planted with a stray tail: any write by the library drops the tail.
void plantWithTail(const Names& names, unsigned char position)
{
    plantBytes(kListValue, withTail(*listOf(names, position)));
}

bool tailStillThere()
{
    const std::string stored = rawValue(kListValue);
    return !stored.empty() && stored.back() == '\x5A';
}

ZET_CHILD_SCENARIO(chooser_step)
{
    bool wrapped = false;
    const std::wstring name = step(args.at(0) == "first", wrapped);
    return name == std::wstring(args.at(1).begin(), args.at(1).end()) && !wrapped ? 0 : 1;
}

TEST_F(ChooserWalkTest, AWalkGoesThroughTheListAndWrapsFromTheLastToTheFirst)
{
    storeList({L"P", L"Q", L"R"});
    bool wrapped = true;
    EXPECT_EQ(L"P", step(true, wrapped));
    EXPECT_FALSE(wrapped);
    EXPECT_EQ(L"Q", step(false, wrapped));
    EXPECT_FALSE(wrapped);
    EXPECT_EQ(L"R", step(false, wrapped));
    EXPECT_FALSE(wrapped);
    EXPECT_EQ(3u, storedPosition());
    EXPECT_EQ(L"P", step(false, wrapped));
    EXPECT_TRUE(wrapped);
    EXPECT_EQ(L"Q", step(false, wrapped));
    EXPECT_FALSE(wrapped);
    // first starts over from the top in the middle of a walk.
    EXPECT_EQ(L"P", step(true, wrapped));
    EXPECT_FALSE(wrapped);
    EXPECT_EQ(1u, storedPosition());
}

TEST_F(ChooserWalkTest, WithOneEntryEveryFurtherStepWraps)
{
    storeList({L"Only"});
    bool wrapped = true;
    EXPECT_EQ(L"Only", step(true, wrapped));
    EXPECT_FALSE(wrapped);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(L"Only", step(false, wrapped));
        EXPECT_TRUE(wrapped);
    }
}

TEST_F(ChooserWalkTest, AnEmptyOrAbsentListHandsOutNothingAndWritesNothing)
{
    bool wrapped = true;
    EXPECT_EQ(L"", step(true, wrapped));
    EXPECT_FALSE(wrapped);
    wrapped = true;
    EXPECT_EQ(L"", step(false, wrapped));
    EXPECT_FALSE(wrapped);
    EXPECT_FALSE(rawExists(kListValue));

    plantWithTail({}, 0);
    EXPECT_EQ(L"", step(true, wrapped));
    EXPECT_TRUE(tailStillThere());
}

TEST_F(ChooserWalkTest, AStoppedWalkDoesNotStartByItself)
{
    storeList({L"P", L"Q", L"R"});
    bool wrapped = false;
    step(true, wrapped);
    step(false, wrapped);
    ZETSettings::stopChooserAutoAssociate();
    EXPECT_EQ(0u, storedPosition());
    EXPECT_EQ(Names({L"P", L"Q", L"R"}), storedNames());

    plantWithTail({L"P", L"Q", L"R"}, 0);
    wrapped = true;
    EXPECT_EQ(L"", step(false, wrapped));
    EXPECT_FALSE(wrapped);
    EXPECT_TRUE(tailStillThere());

    EXPECT_EQ(L"P", step(true, wrapped));
    EXPECT_FALSE(tailStillThere());
}

TEST_F(ChooserWalkTest, StopStoresEvenWithoutAList)
{
    ZETSettings::stopChooserAutoAssociate();
    EXPECT_EQ("0000000000", hex(rawValue(kListValue)));

    plantWithTail({L"P"}, 0);
    ZETSettings::stopChooserAutoAssociate();
    EXPECT_FALSE(tailStillThere());
}

TEST_F(ChooserWalkTest, TheWalkGoesOnInAProcessStartedLater)
{
    storeList({L"P", L"Q", L"R"});
    ASSERT_EQ(0, zettest::runChild("chooser_step", {"first", "P"}));
    ASSERT_EQ(0, zettest::runChild("chooser_step", {"next", "Q"}));
    bool wrapped = false;
    EXPECT_EQ(L"R", step(false, wrapped));
    EXPECT_EQ(0, zettest::runChild("chooser_step", {"first", "P"}));
    EXPECT_EQ(1u, storedPosition());
}

TEST_F(ChooserWalkTest, ThePlaceHandedOutIsACopyOfTheWholeEntry)
{
    boost::shared_ptr<ZETPreferredNetworks> list(new ZETPreferredNetworks);
    list->entries.push_back(entry(L"A", 3, 1, 2, "\x01\x02\x03\x04\x05\x06", 9));
    list->entries.push_back(entry(L"B", 1, 4, 5));
    ZETSettings::updateChooserPreferredNets(list);

    bool wrapped = false;
    boost::shared_ptr<ZETPreferredNetEntry> got = ZETSettings::nextChooserPreferredNet(true, wrapped);
    ASSERT_TRUE(got);
    EXPECT_EQ(hex(serialForm(list->entries[0])), hex(serialForm(*got)));

    got->entryFlag = 0;
    got->netName.append(L"x");
    EXPECT_EQ(hex(serialForm(*list)).substr(2), hex(rawValue(kListValue)).substr(2));
}

TEST_F(ChooserWalkTest, AStoredPositionBeyondTheListIsTakenAsTheLastPlace)
{
    plantBytes(kListValue, serialForm(*listOf({L"P", L"Q", L"R"}, 9)));
    bool wrapped = false;
    EXPECT_EQ(L"P", step(false, wrapped));
    EXPECT_TRUE(wrapped);
    EXPECT_EQ(1u, storedPosition());
}

TEST_F(ChooserWalkTest, ALongListIsWalkedAsFarAsAPlaceCanBeRecorded)
{
    Names names;
    for (int i = 1; i <= 300; ++i)
        names.push_back(L"n" + std::to_wstring(i));
    storeList(names, 254);
    bool wrapped = true;
    EXPECT_EQ(L"n255", step(false, wrapped));
    EXPECT_FALSE(wrapped);
    EXPECT_EQ(255u, storedPosition());
    EXPECT_EQ(L"n1", step(false, wrapped));
    EXPECT_TRUE(wrapped);
    EXPECT_EQ(1u, storedPosition());
    EXPECT_EQ(300u, storedNames().size());
}

TEST_F(ChooserWalkTest, MovingTheEntryJustHandedOutKeepsTheWalkOnItsPlace)
{
    storeList({L"P", L"Q", L"R", L"S"}, 3);
    ZETSettings::moveChooserPreferredNetToFront(entry(L"R"));
    EXPECT_EQ(Names({L"R", L"P", L"Q", L"S"}), storedNames());
    EXPECT_EQ(3u, storedPosition());
    bool wrapped = false;
    EXPECT_EQ(L"S", step(false, wrapped));
}

TEST_F(ChooserWalkTest, MovingANewEntryLengthensTheListAndShiftsEveryOldEntry)
{
    storeList({L"P", L"Q"}, 2);
    ZETSettings::moveChooserPreferredNetToFront(entry(L"N"));
    EXPECT_EQ(Names({L"N", L"P", L"Q"}), storedNames());
    bool wrapped = false;
    EXPECT_EQ(L"Q", step(false, wrapped));
}

TEST_F(ChooserWalkTest, MovingIntoAnAbsentListMakesAListOfThatEntryWithoutAWalk)
{
    ZETSettings::moveChooserPreferredNetToFront(entry(L"New", 3, 0, 0, "\xAA\xBB"));
    boost::shared_ptr<ZETPreferredNetworks> list = ZETSettings::getChooserPreferredNets();
    EXPECT_EQ(Names({L"New"}), namesOf(*list));
    EXPECT_EQ(0u, list->position.value);
    EXPECT_EQ(std::string("\xAA\xBB"), list->entries[0].macAddress.bytes());
}

TEST_F(ChooserWalkTest, MovingReplacesOnlyTheEntriesOfTheSameNetwork)
{
    const std::string mac("\x00\x0A\x0B\x0C\x0D\x0E", 6);
    const std::string otherMac("\x00\x0A\x0B\x0C\x0D\x0F", 6);
    struct Case {
        const char* what;
        ZETPreferredNetEntry stored;
        ZETPreferredNetEntry moved;
        bool replaces;
    };
    const Case cases[] = {
        {"another matchKind", entry(L"W", 1, 5, 6), entry(L"W", 2, 5, 6), false},
        {"another matchByte1", entry(L"W", 1, 5, 6), entry(L"W", 1, 7, 6), false},
        {"another matchByte2", entry(L"W", 1, 5, 6), entry(L"W", 1, 5, 7), false},
        {"a name in another case", entry(L"W", 1, 5, 6), entry(L"w", 1, 5, 6), false},
        {"kind 3 with another MAC address", entry(L"W", 3, 5, 6, mac), entry(L"W", 3, 5, 6, otherMac), false},
        {"kind 3 with other match bytes", entry(L"W", 3, 5, 6, mac), entry(L"W", 3, 8, 9, mac), true},
        {"another MAC address below kind 3", entry(L"W", 1, 5, 6, mac), entry(L"W", 1, 5, 6, otherMac), true},
        {"another entryFlag", entry(L"W", 1, 5, 6, "", 0), entry(L"W", 1, 5, 6, "", 4), true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        boost::shared_ptr<ZETPreferredNetworks> list(new ZETPreferredNetworks);
        list->entries.push_back(entry(L"A"));
        list->entries.push_back(c.stored);
        ZETSettings::updateChooserPreferredNets(list);

        ZETSettings::moveChooserPreferredNetToFront(c.moved);
        boost::shared_ptr<ZETPreferredNetworks> after = ZETSettings::getChooserPreferredNets();
        ASSERT_EQ(c.replaces ? 2u : 3u, after->entries.size());
        EXPECT_EQ(hex(serialForm(c.moved)), hex(serialForm(after->entries[0])));
        EXPECT_EQ(L"A", std::wstring(after->entries[1].netName));
        if (!c.replaces) {
            EXPECT_EQ(hex(serialForm(c.stored)), hex(serialForm(after->entries[2])));
        }
    }
}

TEST_F(ChooserWalkTest, MovingDropsEveryMatchAndFindsTheEntryThatWasHandedOut)
{
    boost::shared_ptr<ZETPreferredNetworks> list(new ZETPreferredNetworks);
    list->entries.push_back(entry(L"P", 1, 1, 1));
    list->entries.push_back(entry(L"Q", 1, 1, 1));
    list->entries.push_back(entry(L"P", 1, 1, 1, "", 7));
    ZETSettings::updateChooserPreferredNets(list);
    ZETSettings::moveChooserPreferredNetToFront(entry(L"P", 1, 1, 1));
    EXPECT_EQ(Names({L"P", L"Q"}), storedNames());

    bool wrapped = false;
    step(true, wrapped);
    boost::shared_ptr<ZETPreferredNetEntry> second = ZETSettings::nextChooserPreferredNet(false, wrapped);
    ASSERT_TRUE(second);
    ZETSettings::moveChooserPreferredNetToFront(*second);
    EXPECT_EQ(Names({L"Q", L"P"}), storedNames());
    EXPECT_EQ(2u, storedPosition());
}

TEST_F(ChooserWalkTest, DeletingBeforeThePositionMakesTheWalkPassAnEntryOver)
{
    storeList({L"P", L"Q", L"R", L"S"}, 2);
    ZETSettings::deleteChooserPreferredNet(L"P");
    EXPECT_EQ(Names({L"Q", L"R", L"S"}), storedNames());
    EXPECT_EQ(2u, storedPosition());
    bool wrapped = false;
    EXPECT_EQ(L"S", step(false, wrapped));
}

TEST_F(ChooserWalkTest, DeletingTheLastPlacesBringsThePositionDown)
{
    storeList({L"P", L"Q"}, 2);
    ZETSettings::deleteChooserPreferredNet(L"Q");
    EXPECT_EQ(Names({L"P"}), storedNames());
    EXPECT_EQ(1u, storedPosition());

    ZETSettings::deleteChooserPreferredNet(L"P");
    EXPECT_EQ("0000000000", hex(rawValue(kListValue)));
    bool wrapped = true;
    EXPECT_EQ(L"", step(false, wrapped));
    EXPECT_FALSE(wrapped);
}

TEST_F(ChooserWalkTest, DeletingRemovesEveryEntryOfTheNameWhateverItsOtherMembers)
{
    boost::shared_ptr<ZETPreferredNetworks> list(new ZETPreferredNetworks);
    list->entries.push_back(entry(L"D", 3, 0, 0, "\x01"));
    list->entries.push_back(entry(L"D", 3, 0, 0, "\x02"));
    list->entries.push_back(entry(L"K"));
    list->entries.push_back(entry(L"D", 1, 9, 9, "", 3));
    list->entries.push_back(entry(L"d"));
    ZETSettings::updateChooserPreferredNets(list);
    ZETSettings::deleteChooserPreferredNet(L"D");
    EXPECT_EQ(Names({L"K", L"d"}), storedNames());
}

TEST_F(ChooserWalkTest, DeletingANameThatIsNotThereWritesNothing)
{
    plantWithTail({L"Net", L"Other"}, 2);
    ZETSettings::deleteChooserPreferredNet(L"NET");
    ZETSettings::deleteChooserPreferredNet(L"");
    EXPECT_TRUE(tailStillThere());
    ZETSettings::deleteChooserPreferredNet(L"Net");
    EXPECT_FALSE(tailStillThere());
    EXPECT_EQ(Names({L"Other"}), storedNames());
}

}  // namespace
