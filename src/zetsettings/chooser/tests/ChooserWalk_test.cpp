// The walk through the preferred list and the edits of the list: every transition from a
// planted state, and the rule by which two entries are the same network.
#include <functional>

#include "zetsettings/chooser/tests/ChooserTestSupport.h"

using namespace choosertest;

namespace {

class ChooserWalkTest : public zettest::RegistryTest {};

// What an operation handed out: the name, marked when the step wrapped; "" for nothing.
typedef std::function<std::string()> Operation;

Operation walk(bool first)
{
    return [first] {
        bool wrapped = true;  // must come back false unless the step wrapped
        const std::wstring name = step(first, wrapped);
        return std::string(name.begin(), name.end()) + (wrapped ? "+wrapped" : "");
    };
}

Operation stop()
{
    return [] { return ZETSettings::stopChooserAutoAssociate(), std::string(); };
}

Operation moveToFront(const ZETPreferredNetEntry& moved)
{
    return [moved] { return ZETSettings::moveChooserPreferredNetToFront(moved), std::string(); };
}

Operation deleteNamed(const std::wstring& name)
{
    return [name] { return ZETSettings::deleteChooserPreferredNet(name), std::string(); };
}

TEST_F(ChooserWalkTest, EachOperationMovesTheWalkAsItsStateTableSays)
{
    const Entries pqr = entriesNamed({L"P", L"Q", L"R"});
    const Entries pqrs = entriesNamed({L"P", L"Q", L"R", L"S"});
    const Entries pq = entriesNamed({L"P", L"Q"});
    Names manyNames;
    for (int i = 1; i <= 300; ++i)
        manyNames.push_back(L"n" + std::to_wstring(i));
    const Entries many = entriesNamed(manyNames);
    struct Row {
        const char* what;
        Entries before;
        unsigned char position;
        Operation operation;
        std::string handedOut;
        Names after;
        unsigned positionAfter;
        bool stored;
    };
    const Row rows[] = {
        {"empty list, first", {}, 0, walk(true), "", {}, 0, false},
        {"empty list", {}, 0, walk(false), "", {}, 0, false},
        {"idle", pqr, 0, walk(false), "", {L"P", L"Q", L"R"}, 0, false},
        {"idle, first", pqr, 0, walk(true), "P", {L"P", L"Q", L"R"}, 1, true},
        {"walking, first starts over", pqr, 2, walk(true), "P", {L"P", L"Q", L"R"}, 1, true},
        {"walking below the end", pqr, 1, walk(false), "Q", {L"P", L"Q", L"R"}, 2, true},
        {"walking at the end", pqr, 3, walk(false), "P+wrapped", {L"P", L"Q", L"R"}, 1, true},
        {"one entry", entriesNamed({L"Only"}), 1, walk(false), "Only+wrapped", {L"Only"}, 1, true},
        {"a place beyond the list", pqr, 9, walk(false), "P+wrapped", {L"P", L"Q", L"R"}, 1, true},
        {"the last place a byte holds", many, 254, walk(false), "n255", manyNames, 255, true},
        {"past the last place a byte holds", many, 255, walk(false), "n1+wrapped", manyNames, 1, true},
        {"stop", pqr, 2, stop(), "", {L"P", L"Q", L"R"}, 0, true},
        {"move the entry handed out", pqrs, 3, moveToFront(entry(L"R")), "", {L"R", L"P", L"Q", L"S"}, 3, true},
        {"move a new entry", pq, 2, moveToFront(entry(L"N")), "", {L"N", L"P", L"Q"}, 2, true},
        {"move while idle", pqr, 0, moveToFront(entry(L"Q")), "", {L"Q", L"P", L"R"}, 0, true},
        {"move drops every match", {entry(L"P"), entry(L"P", 0, 0, 0, "", 7), entry(L"Q")}, 3,
         moveToFront(entry(L"P")), "", {L"P", L"Q"}, 2, true},
        {"delete before the position", pqrs, 2, deleteNamed(L"P"), "", {L"Q", L"R", L"S"}, 2, true},
        {"delete at the end", pq, 2, deleteNamed(L"Q"), "", {L"P"}, 1, true},
        {"delete the only entry", entriesNamed({L"P"}), 1, deleteNamed(L"P"), "", {}, 0, true},
        {"delete every entry of the name",
         {entry(L"D", 3, 0, 0, "\x01"), entry(L"D", 3, 0, 0, "\x02"), entry(L"K"), entry(L"D", 1, 9, 9, "", 3)}, 1,
         deleteNamed(L"D"), "", {L"K"}, 1, true},
        {"delete a name in another case", pq, 2, deleteNamed(L"p"), "", {L"P", L"Q"}, 2, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        plant(kListValue, serialHex(*listOf(row.before, row.position)) + kTail);
        EXPECT_EQ(row.handedOut, row.operation());
        EXPECT_EQ(row.after, namesOf(*ZETSettings::getChooserPreferredNets()));
        EXPECT_EQ(row.positionAfter, static_cast<unsigned>(std::stoi(storedHex(kListValue).substr(0, 2), 0, 16)));
        EXPECT_EQ(row.stored, !tailStillThere(kListValue));
    }
}

TEST_F(ChooserWalkTest, WithoutAListTheWalkCreatesNothingWhileStopAndMoveStoreOne)
{
    bool wrapped = false;
    EXPECT_EQ(L"", step(true, wrapped));
    EXPECT_EQ(L"", step(false, wrapped));
    EXPECT_EQ("absent", storedHex(kListValue));

    ZETSettings::stopChooserAutoAssociate();
    EXPECT_EQ("0000000000", storedHex(kListValue));

    const ZETPreferredNetEntry moved = entry(L"New", 3, 1, 2, "\xAA\xBB", 5);
    ZETSettings::moveChooserPreferredNetToFront(moved);
    EXPECT_EQ("00" "01000000" + serialHex(moved), storedHex(kListValue));
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
        ZETSettings::updateChooserPreferredNets(listOf({entry(L"A"), c.stored}));
        ZETSettings::moveChooserPreferredNetToFront(c.moved);
        Entries expected = {c.moved, entry(L"A")};
        if (!c.replaces)
            expected.push_back(c.stored);
        EXPECT_EQ(serialHex(*listOf(expected)), storedHex(kListValue));
    }
}

TEST_F(ChooserWalkTest, TheEntryHandedOutIsACopyThatFindsTheStoredOne)
{
    const Entries stored = {entry(L"A", 3, 1, 2, "\x01\x02\x03\x04\x05\x06", 9), entry(L"B", 1, 4, 5)};
    ZETSettings::updateChooserPreferredNets(listOf(stored));
    bool wrapped = false;
    boost::shared_ptr<ZETPreferredNetEntry> first = ZETSettings::nextChooserPreferredNet(true, wrapped);
    ASSERT_TRUE(first);
    EXPECT_EQ(serialHex(stored[0]), serialHex(*first));
    first->netName.append(L"x");
    EXPECT_EQ(serialHex(*listOf(stored, 1)), storedHex(kListValue));

    boost::shared_ptr<ZETPreferredNetEntry> second = ZETSettings::nextChooserPreferredNet(false, wrapped);
    ASSERT_TRUE(second);
    ZETSettings::moveChooserPreferredNetToFront(*second);
    EXPECT_EQ(serialHex(*listOf({stored[1], stored[0]}, 2)), storedHex(kListValue));
}

}  // namespace
