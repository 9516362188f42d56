// The stored on/off state of each numbered alert.
#include <map>

#include "zetsettings/chooser/tests/ChooserTestSupport.h"

using namespace choosertest;

namespace {

class AlertSettingsTest : public zettest::RegistryTest {};

std::string hexOf(const std::map<unsigned, unsigned>& states)
{
    ZETAlertSettings settings;
    for (const auto& state : states)
        settings.states[state.first] = state.second;
    return serialHex(settings);
}

// args: pairs of alert number and "on" or "off".
ZET_CHILD_SCENARIO(alert_set)
{
    for (size_t i = 0; i + 1 < args.size(); i += 2)
        ZETSettings::updateAlertNotificationState(std::stoi(args[i]), args[i + 1] == "on");
    return 0;
}

TEST_F(AlertSettingsTest, AStoredStateIsOnlyReadWhileAnUpdateAlwaysWrites)
{
    plant(kAlertValue, hexOf({{1, 2}, {3, 0}, {4, 1}}) + kTail);
    EXPECT_FALSE(ZETSettings::isAlertNotificationEnabled(1));
    EXPECT_FALSE(ZETSettings::isAlertNotificationEnabled(3));
    EXPECT_TRUE(ZETSettings::isAlertNotificationEnabled(4));
    EXPECT_TRUE(tailStillThere(kAlertValue));

    ZETSettings::updateAlertNotificationState(3, false);
    EXPECT_EQ(hexOf({{1, 2}, {3, 0}, {4, 1}}), storedHex(kAlertValue));
    ZETSettings::updateAlertNotificationState(1, true);
    ZETSettings::updateAlertNotificationState(4, false);
    EXPECT_TRUE(ZETSettings::isAlertNotificationEnabled(1));
    EXPECT_FALSE(ZETSettings::isAlertNotificationEnabled(4));
}

TEST_F(AlertSettingsTest, ATableCutShortKeepsWhatCameThroughAndIsWrittenBackSo)
{
    const std::string whole = hexOf({{1, 0}, {2, 0}, {3, 0}});
    // The cut falls inside the third entry's state.
    plant(kAlertValue, whole.substr(0, whole.size() - 4));
    EXPECT_FALSE(ZETSettings::isAlertNotificationEnabled(2));
    EXPECT_TRUE(ZETSettings::isAlertNotificationEnabled(3));
    EXPECT_EQ(hexOf({{1, 0}, {2, 0}, {3, 1}}), storedHex(kAlertValue));

    // Bytes that are no table at all read as an empty one.
    plant(kAlertValue, "07");
    EXPECT_TRUE(ZETSettings::isAlertNotificationEnabled(1));
    EXPECT_EQ(hexOf({{1, 1}}), storedHex(kAlertValue));
}

TEST_F(AlertSettingsTest, StatesWrittenByOneProcessAreReadByAnotherWhichRecordsAnAlertNeverSeen)
{
    ASSERT_EQ(0, zettest::runChild("alert_set", {"11", "off", "12", "on", "-3", "off"}));
    EXPECT_FALSE(ZETSettings::isAlertNotificationEnabled(11));
    EXPECT_TRUE(ZETSettings::isAlertNotificationEnabled(12));
    EXPECT_FALSE(ZETSettings::isAlertNotificationEnabled(-3));
    EXPECT_TRUE(ZETSettings::isAlertNotificationEnabled(40));
    // Only the numbers set or asked for, in unsigned order: -3 comes last.
    EXPECT_EQ("04000000" "0B000000" "00000000" "0C000000" "01000000" "28000000" "01000000" "FDFFFFFF" "00000000",
              storedHex(kAlertValue));
}

}  // namespace
