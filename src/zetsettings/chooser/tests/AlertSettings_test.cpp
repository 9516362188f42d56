#include <gtest/gtest.h>

#include <map>

#include "zetsettings/chooser/tests/ChooserTestSupport.h"
#include "support/ChildProcess.h"
#include "support/ChildScenario.h"
#include "support/TestRegistry.h"

using namespace choosertest;

namespace {

class AlertSettingsTest : public zettest::RegistryTest {};

// The stored table's form for the given states, in the order the map gives them.
std::string tableOf(const std::map<unsigned, unsigned>& states)
{
    ZETAlertSettings settings;
    for (const auto& state : states)
        settings.states[state.first] = state.second;
    return serialForm(settings);
}

ZET_CHILD_SCENARIO(alert_set)
{
    for (size_t i = 0; i + 1 < args.size(); i += 2)
        ZETSettings::updateAlertNotificationState(std::stoi(args[i]), args[i + 1] == "on");
    return 0;
}

// Exit code: bit i set when the i-th alert named reads enabled.
ZET_CHILD_SCENARIO(alert_read)
{
    int enabled = 0;
    for (size_t i = 0; i < args.size(); ++i)
        if (ZETSettings::isAlertNotificationEnabled(std::stoi(args[i])))
            enabled |= 1 << i;
    return enabled;
}

TEST_F(AlertSettingsTest, AnAlertNeverSeenIsEnabledAndRecordedSo)
{
    EXPECT_TRUE(ZETSettings::isAlertNotificationEnabled(5));
    EXPECT_EQ("01000000" "05000000" "01000000", hex(rawValue(kAlertValue)));

    // Another number is not in the table until it is asked for.
    ZETSettings::updateAlertNotificationState(9, false);
    EXPECT_EQ(hex(tableOf({{5, 1}, {9, 0}})), hex(rawValue(kAlertValue)));
    EXPECT_TRUE(ZETSettings::isAlertNotificationEnabled(2));
    EXPECT_EQ(hex(tableOf({{2, 1}, {5, 1}, {9, 0}})), hex(rawValue(kAlertValue)));
}

TEST_F(AlertSettingsTest, AStoredStateIsReturnedAndTheQuestionWritesNothing)
{
    ZETAlertSettings settings;
    settings.states[3] = 0;
    settings.states[4] = 1;
    plantBytes(kAlertValue, withTail(settings));

    EXPECT_FALSE(ZETSettings::isAlertNotificationEnabled(3));
    EXPECT_TRUE(ZETSettings::isAlertNotificationEnabled(4));
    EXPECT_EQ(hex(withTail(settings)), hex(rawValue(kAlertValue)));

    ZETSettings::updateAlertNotificationState(3, true);
    EXPECT_TRUE(ZETSettings::isAlertNotificationEnabled(3));
}

TEST_F(AlertSettingsTest, SettingAStateStoresItEvenWhenItIsAlreadySo)
{
    ZETAlertSettings settings;
    settings.states[8] = 0;
    plantBytes(kAlertValue, withTail(settings));
    ZETSettings::updateAlertNotificationState(8, false);
    EXPECT_EQ(hex(serialForm(settings)), hex(rawValue(kAlertValue)));
}

TEST_F(AlertSettingsTest, ANegativeNumberKeepsItsBitsAndSortsBehindAllOthers)
{
    ZETSettings::updateAlertNotificationState(-1, false);
    ZETSettings::updateAlertNotificationState(7, true);
    EXPECT_FALSE(ZETSettings::isAlertNotificationEnabled(-1));
    EXPECT_TRUE(ZETSettings::isAlertNotificationEnabled(7));
    EXPECT_TRUE(ZETSettings::isAlertNotificationEnabled(-2));
    EXPECT_EQ("03000000" "07000000" "01000000" "FEFFFFFF" "01000000" "FFFFFFFF" "00000000",
              hex(rawValue(kAlertValue)));
}

TEST_F(AlertSettingsTest, OnlyAStoredOneIsEnabledAndOtherStatesStayAsTheyAre)
{
    const std::string planted = tableOf({{1, 2}, {6, 0xFFFFFFFFu}});
    plantBytes(kAlertValue, planted);
    EXPECT_FALSE(ZETSettings::isAlertNotificationEnabled(1));
    EXPECT_FALSE(ZETSettings::isAlertNotificationEnabled(6));
    EXPECT_EQ(hex(planted), hex(rawValue(kAlertValue)));
}

TEST_F(AlertSettingsTest, ATableCutShortKeepsWhatCameThroughAndIsWrittenBackSo)
{
    const std::string whole = tableOf({{1, 0}, {2, 0}, {3, 0}});
    // The cut falls inside the third entry's state.
    plantBytes(kAlertValue, whole.substr(0, whole.size() - 2));
    EXPECT_FALSE(ZETSettings::isAlertNotificationEnabled(2));
    EXPECT_TRUE(ZETSettings::isAlertNotificationEnabled(3));
    EXPECT_EQ(hex(tableOf({{1, 0}, {2, 0}, {3, 1}})), hex(rawValue(kAlertValue)));

    // Bytes that are no table at all read as an empty one.
    plantBytes(kAlertValue, std::string("\x07", 1));
    EXPECT_TRUE(ZETSettings::isAlertNotificationEnabled(1));
    EXPECT_EQ(hex(tableOf({{1, 1}})), hex(rawValue(kAlertValue)));
}

TEST_F(AlertSettingsTest, StatesWrittenByOneProcessAreReadByAnother)
{
    ASSERT_EQ(0, zettest::runChild("alert_set", {"11", "off", "12", "on", "-3", "off"}));
    EXPECT_FALSE(ZETSettings::isAlertNotificationEnabled(11));
    EXPECT_TRUE(ZETSettings::isAlertNotificationEnabled(12));
    EXPECT_FALSE(ZETSettings::isAlertNotificationEnabled(-3));

    ZETSettings::updateAlertNotificationState(11, true);
    ZETSettings::updateAlertNotificationState(12, false);
    // 11 on, 12 off, -3 off, 40 never seen.
    EXPECT_EQ(1 | 8, zettest::runChild("alert_read", {"11", "12", "-3", "40"}));
    EXPECT_EQ(hex(tableOf({{11, 1}, {12, 0}, {40, 1}, {0xFFFFFFFDu, 0}})), hex(rawValue(kAlertValue)));
}

}  // namespace
