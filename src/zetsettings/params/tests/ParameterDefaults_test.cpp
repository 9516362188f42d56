// The defaults of each version class, checked in a process that runs on that version: natively
// the version recorded in the test's store, under Wine Wine's own version setting.
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "zetsettings/params/tests/ParamTestSupport.h"
#include "support/ChildProcess.h"
#include "support/ChildScenario.h"
#include "support/TestRegistry.h"
#include "zetsettings/ZETConfigParam.h"
#include "zetsettings/ZETSettings.h"

namespace
{

enum Column { kWindows2000, kWindowsXP, kWindowsXPSP2, kOther, kColumns };
const char* const kColumnNames[kColumns] = {"2000", "xp", "xpsp2", "other"};

const std::optional<int> absent;

struct NumberRow {
    int (ZETConfigParam::*getter)() const;
    const wchar_t* key;
    std::optional<int> byColumn[kColumns];
};

struct TextRow {
    const std::wstring& (ZETConfigParam::*getter)() const;  // null: no getter of its own
    const wchar_t* key;
    const wchar_t* byColumn[kColumns];  // null: absent
};

const wchar_t kRoot[] = L"\"Class 3 Public Primary Certification Authority\"";
const wchar_t kServer[] = L"radius.orvane.com";

const TextRow kTexts[] = {
    {&ZETConfigParam::getNetworkPanelCaption,
     L"ZET_NETWORK_PANEL_CAPTION",
     {L"Network and Dial-up Connections", L"Network Connections", L"Network Connections", nullptr}},
    {&ZETConfigParam::getAdapterCaption,
     L"ZET_ADAPTER_CAPTION",
     {L"Local Area Connection", L"Wireless Network Connection", L"Wireless Network Connection", nullptr}},
    {&ZETConfigParam::getConnectToTheseServersString,
     L"ZET_CONNECT_TO_THESE_SERVERS_STRING",
     {kServer, kServer, kServer, kServer}},
    {nullptr, L"ZET_LIST_OF_ROOT_CERT_TO_CHECK", {kRoot, kRoot, kRoot, kRoot}},
};

#define ROW(getter, key) &ZETConfigParam::getter, L## #key
const NumberRow kNumbers[] = {
    {ROW(getMainWindowTimeout, ZET_MAIN_WINDOW_TIMEOUT), {30, 30, 30, 30}},
    {ROW(getChildWindowTimeout, ZET_CHILD_WINDOW_TIMEOUT), {10, 10, 10, 10}},
    {ROW(getPriviledgeAccessMsgBoxTimeout, ZET_PRIVILEDGE_ACCESS_MSG_BOX_TIMEOUT), {3, 3, 3, 3}},
    {ROW(getEnable8021xCtrlId, ZET_ENABLE_8021X_CTRL_ID), {15036, 15036, 6002, 15036}},
    {ROW(getEapTypeCtrlId, ZET_EAP_TYPE_CTRL_ID), {15037, 15037, 6004, 15037}},
    {ROW(getPropertiesButtonCtrlId, ZET_PROPERTIES_BUTTON_CTRL_ID), {15038, 15038, 6005, 15038}},
    {ROW(getAuthenticateAsComputerCtrlId, ZET_AUTHENTICATION_AS_COMP_CTRL_ID), {15034, 15034, 6006, 15034}},
    {ROW(getAuthenticateAsGuestCtrlId, ZET_AUTHENTICATION_AS_GUEST_CTRL_ID), {15035, 15035, 6007, 15035}},
    {ROW(getComponentsListCtrlId, ZET_COMPONENTS_LIST_CTRL_ID), {15007, 15007, 16012, 15007}},
    {ROW(getShowIconInTaskBarCtrlId, ZET_SHOW_ICON_IN_TASK_BAR_CTRL_ID), {15001, 15001, 16011, 15001}},
    {ROW(getValidateServerCertCtrlId, ZET_VALIDATE_SERVER_CERTIFICATE_CTRL_ID), {1302, 15527, 15527, absent}},
    {ROW(getConnectToTheseServersCheckBoxCtrlId, ZET_CONNECT_TO_THESE_SERVERS_CHECK_BOX_CTRL_ID),
     {1303, 15528, 15528, absent}},
    {ROW(getConnectToTheseServersEditCtrlId, ZET_CONNECT_TO_THESE_SERVERS_EDIT_CTRL_ID),
     {1304, 15529, 15529, absent}},
    {ROW(getRootCertAuthorityCtrlId, ZET_ROOT_CERT_AUTH_CTRL_ID), {1001, 15507, 15507, absent}},
    {ROW(getEnableFastReconnectCtrlId, ZET_ENABLE_FAST_RECONNECT_CTRL_ID), {1025, 15524, 15524, absent}},
    {ROW(getConfigureCtrlId, ZET_CONFIGURE_BUTTON_CTRL_ID), {1013, 15518, 15518, absent}},
    {ROW(getAuthenticationMethodCtrlId, ZET_SELECT_AUTHENTICATION_METHOD_CTRL_ID),
     {1012, 15517, 15517, absent}},
    {ROW(getAutoWindowsLogonCtrlId, ZET_AUTOMATICALLY_WIND_LOGON_CTRL_ID), {1004, 15009, 15009, absent}},
    {ROW(getXpWindowsWirelessNetSettingsCtrlId, ZET_XP_WINDOWS_WIRELESS_NET_SETTINGS_CTRL_ID),
     {absent, 15055, 7024, absent}},
    {ROW(getXpAvailableNetworksListCtrlId, ZET_XP_AVAILABLE_NETWORKS_LIST_CTRL_ID), {absent, 15060, 0, absent}},
    {ROW(getXpPreferredNetworksListCtrlId, ZET_XP_PREFERRED_NETWORKS_LIST_CTRL_ID),
     {absent, 15061, 7030, absent}},
    {ROW(getXpWirelessConfigureButtonCtrlId, ZET_XP_WIRELESS_CONFIGURE_BUTTON_CTRL_ID),
     {absent, 15064, 0, absent}},
    {ROW(getXpWirelessRefreshButtonCtrlId, ZET_XP_WIRELESS_REFRESH_BUTTON_CTRL_ID), {absent, 15065, 0, absent}},
    {ROW(getXpWirelessAddButtonCtrlId, ZET_XP_WIRELESS_ADD_BUTTON_CTRL_ID), {absent, 15066, 7033, absent}},
    {ROW(getXpWirelessPropertiesButtonCtrlId, ZET_XP_WIRELESS_PROPERTIES_BUTTON_CTRL_ID),
     {absent, 1007, 7035, absent}},
    {ROW(getXpAdvancedButtonCtrlId, ZET_XP_ADVANCED_BUTTON_CTRL_ID), {absent, 1003, 7037, absent}},
    {ROW(getXpAnyAvailableNetCtrlId, ZET_XP_ANY_AVAILABLE_NET_CTRL_ID), {absent, 1004, 1004, absent}},
    {ROW(getXpAutoConnectCtrlId, ZET_XP_AUTO_CONNECT_CTRL_ID), {absent, 15068, 15068, absent}},
    {ROW(getXpNetworkNameSsidEditCtrlId, ZET_XP_NETWORK_NAME_SSID_EDIT_CTRL_ID),
     {absent, 15041, 15041, absent}},
    {ROW(getXpNetworkAuthenticationCtrlId, ZET_XP_NETWORK_AUTHENTICATION_CTRL_ID),
     {absent, 1010, 1010, absent}},
    {ROW(getXpDataEncryptionWepCtrlId, ZET_XP_DATA_ENCRYPTION_WEP_CTRL_ID), {absent, 1008, 1008, absent}},
    {ROW(getXpNetworkKeyCtrlId, ZET_XP_NETWORK_KEY_CTRL_ID), {absent, 15052, 15052, absent}},
    {ROW(getXpConfNetworkKeyCtrlId, ZET_XP_CONF_NETWORK_KEY_CTRL_ID), {absent, 15050, 15050, absent}},
    {ROW(getXpKeyIndexCtrlId, ZET_XP_KEY_INDEX_CTRL_ID), {absent, 15054, 15054, absent}},
    {ROW(getXpTheKeyIsProvidedAutoCtrlId, ZET_XP_THE_KEY_IS_PROVIDED_AUTO_CTRL_ID),
     {absent, 1009, 1009, absent}},
    {ROW(getXpThisIsComputerToComputerCtrlId, ZET_XP_THIS_IS_COMPUTER_TO_COMPUTER_CTRL_ID),
     {absent, 1005, 1005, absent}},
    {ROW(getXpWpaNetworkNameSsidEditCtrlId, ZET_XP_WPA_NETWORK_NAME_SSID_EDIT_CTRL_ID),
     {absent, 6011, 6011, absent}},
    {ROW(getXpWpaNetworkAuthenticationCtrlId, ZET_XP_WPA_NETWORK_AUTHENTICATION_CTRL_ID),
     {absent, 6014, 6014, absent}},
    {ROW(getXpWpaDataEncryptionWepCtrlId, ZET_XP_WPA_DATA_ENCRYPTION_WEP_CTRL_ID),
     {absent, 6013, 6013, absent}},
    {ROW(getXpWpaNetworkKeyCtrlId, ZET_XP_WPA_NETWORK_KEY_CTRL_ID), {absent, 6016, 6016, absent}},
    {ROW(getXpWpaConfNetworkKeyCtrlId, ZET_XP_WPA_CONF_NETWORK_KEY_CTRL_ID), {absent, 6018, 6018, absent}},
    {ROW(getXpWpaKeyIndexCtrlId, ZET_XP_WPA_KEY_INDEX_CTRL_ID), {absent, 6020, 6020, absent}},
    {ROW(getXpWpaTheKeyIsProvidedAutoCtrlId, ZET_XP_WPA_THE_KEY_IS_PROVIDED_AUTO_CTRL_ID),
     {absent, 6021, 6021, absent}},
    {ROW(getXpWpaThisIsComputerToComputerCtrlId, ZET_XP_WPA_THIS_IS_COMPUTER_TO_COMPUTER_CTRL_ID),
     {absent, 6022, 6022, absent}},
    {ROW(getXpWpaEnable8021xCtrlId, ZET_XP_WPA_ENABLE_8021X_CTRL_ID), {absent, 6002, 6002, absent}},
    {ROW(getXpWpaEapTypeCtrlId, ZET_XP_WPA_EAP_TYPE_CTRL_ID), {absent, 6004, 6004, absent}},
    {ROW(getXpWpaPropertiesButtonCtrlId, ZET_XP_WPA_PROPERTIES_BUTTON_CTRL_ID), {absent, 6005, 6005, absent}},
    {ROW(getXpWpaAuthenticateAsComputerCtrlId, ZET_XP_WPA_AUTHENTICATION_AS_COMP_CTRL_ID),
     {absent, 6006, 6006, absent}},
    {ROW(getXpWpaAuthenticateAsGuestCtrlId, ZET_XP_WPA_AUTHENTICATION_AS_GUEST_CTRL_ID),
     {absent, 6007, 6007, absent}},
    {ROW(getXpWirelessNetworkAvailableNetworksCtrlId, ZET_XP_WIRELESS_NETWORK_AVAILABLE_NETWORKS_CTRL_ID),
     {absent, 2004, 2004, absent}},
    {ROW(getXpWirelessNetworkConnectCtrlId, ZET_XP_WIRELESS_NETWORK_CONNECT_CTRL_ID),
     {absent, 2010, 2010, absent}},
    {ROW(getXpWirelessNetworkAdvancedCtrlId, ZET_XP_WIRELESS_NETWORK_ADVANCED_CTRL_ID),
     {absent, 2009, 7017, absent}},
    {ROW(getXpWirelessNetworkEnable8021xCtrlId, ZET_XP_WIRELESS_NETWORK_ENABLE_8021X_CTRL_ID),
     {absent, 2016, 0, absent}},
    {ROW(getXpWirelessNetworkKeyEditBox1CtrlId, ZET_XP_WIRELESS_NETWORK_KEY_EDIT_BOX_1_CTRL_ID),
     {absent, 2007, 0, absent}},
    {ROW(getXpWirelessNetworkKeyEditBox2CtrlId, ZET_XP_WIRELESS_NETWORK_KEY_EDIT_BOX_2_CTRL_ID),
     {absent, 2012, 0, absent}},
    {ROW(getXpWirelessNetworkWarningCtrlId, ZET_XP_WIRELESS_NETWORK_WARNING_CTRL_ID),
     {absent, 2013, 0, absent}},
    {ROW(getXpWirelessNetworkAllowConnectCtrlId, ZET_XP_WIRELESS_NETWORK_ALLOW_CONNECT_CTRL_ID),
     {absent, 2014, 0, absent}},
    {ROW(getXpWirelessNetworkBangIconCtrlId, ZET_XP_WIRELESS_NETWORK_BANG_ICON_CTRL_ID),
     {absent, 2015, 0, absent}},
};
#undef ROW

std::string narrow(const std::wstring& text)
{
    return std::string(text.begin(), text.end());
}

// What InitializeDefaults left in the object, against the table's column: the entries (so
// also which keys are absent) and what every getter answers.
std::vector<std::string> mismatchesWith(Column column, ZETConfigParam& param)
{
    std::vector<std::string> problems;
    std::map<std::wstring, int> expectedNumbers;
    for (const NumberRow& row : kNumbers) {
        if (row.byColumn[column])
            expectedNumbers[row.key] = *row.byColumn[column];
        const int got = (param.*row.getter)();
        if (got != row.byColumn[column].value_or(0))
            problems.push_back("getter of " + narrow(row.key) + " gives " + std::to_string(got));
    }
    std::map<std::wstring, std::wstring> expectedTexts;
    for (const TextRow& row : kTexts) {
        const wchar_t* expected = row.byColumn[column];
        if (expected)
            expectedTexts[row.key] = expected;
        if (row.getter && (param.*row.getter)() != (expected ? expected : L""))
            problems.push_back("getter of " + narrow(row.key) + " gives \"" + narrow((param.*row.getter)()) +
                               "\"");
    }
    if (ZETConfigParamTestAccess::numbers(param) != expectedNumbers)
        problems.push_back("the numeric entries differ from the table");
    if (ZETConfigParamTestAccess::texts(param) != expectedTexts)
        problems.push_back("the text entries differ from the table");
    if (param.getListOfRootCertToCheck() !=
        std::vector<std::wstring>{L"Class 3 Public Primary Certification Authority"})
        problems.push_back("the root certificate list is not the one default name");
    return problems;
}

bool versionQueriesMatch(Column column, const ZETConfigParam& param)
{
    return param.isWindows2000() == (column == kWindows2000) &&
           param.isWindowsXP() == (column == kWindowsXP || column == kWindowsXPSP2) &&
           param.isWindowsXPSP2() == (column == kWindowsXPSP2);
}

// Exit codes: 0 the defaults match, 1 they don't, 2 the process does not run on the version
// the test asked for, 3 a bad argument.
ZET_CHILD_SCENARIO(ConfigParamDefaults)
{
    int column = 0;
    while (column < kColumns && (args.empty() || args[0] != kColumnNames[column]))
        ++column;
    if (column == kColumns)
        return 3;
    ZETConfigParam param;
    param.InitializeDefaults();
    if (!versionQueriesMatch(static_cast<Column>(column), param)) {
        const OSVERSIONINFOEXW& version = ZETConfigParamTestAccess::version(param);
        std::fprintf(stderr, "running on %u.%u service pack %u\n", unsigned(version.dwMajorVersion),
                     unsigned(version.dwMinorVersion), unsigned(version.wServicePackMajor));
        return 2;
    }
    const std::vector<std::string> problems = mismatchesWith(static_cast<Column>(column), param);
    for (const std::string& problem : problems)
        std::fprintf(stderr, "%s\n", problem.c_str());
    return problems.empty() ? 0 : 1;
}

// Wine fixes a process's version when the process starts, from the setting for its program
// name; the setting is written into the real HKEY_CURRENT_USER, before the test registry
// redirects it, and removed again.
class WineVersionSetting
{
public:
    explicit WineVersionSetting(const std::wstring& version)
    {
        HKEY key = 0;
        if (RegCreateKeyExW(HKEY_CURRENT_USER, kAppDefaults, 0, 0, 0, KEY_ALL_ACCESS, 0, &key, 0) !=
            ERROR_SUCCESS)
            return;
        RegSetValueExW(key, L"Version", 0, REG_SZ, reinterpret_cast<const BYTE*>(version.c_str()),
                       static_cast<DWORD>((version.size() + 1) * sizeof(wchar_t)));
        RegCloseKey(key);
    }
    ~WineVersionSetting() { RegDeleteKeyW(HKEY_CURRENT_USER, kAppDefaults); }

private:
    static constexpr const wchar_t* kAppDefaults = L"Software\\Wine\\AppDefaults\\zetsettings_tests.exe";
};

struct VersionCase {
    const char* name;
    const wchar_t* currentVersion;  // null: nothing recorded in the store
    const wchar_t* servicePack;
    const wchar_t* build;
    const wchar_t* wineVersion;  // null: Wine can't be set to it; empty: Wine's default
    Column column;
};

const VersionCase kVersionCases[] = {
    {"Windows2000", L"5.0", L"Service Pack 4", L"2195", L"win2k", kWindows2000},
    {"WindowsXPWithoutServicePack", L"5.1", L"", L"2600", nullptr, kWindowsXP},
    {"WindowsXPServicePack1", L"5.1", L"Service Pack 1", L"2600", nullptr, kWindowsXP},
    {"WindowsXPServicePack2", L"5.1", L"Service Pack 2", L"2600", nullptr, kWindowsXPSP2},
    {"WindowsXPServicePack3", L"5.1", L"Service Pack 3", L"2600", L"winxp", kWindowsXP},
    {"WindowsServer2003", L"5.2", L"Service Pack 2", L"3790", L"win2003", kOther},
    {"NoVersionRecorded", nullptr, nullptr, nullptr, L"", kOther},
};

void PrintTo(const VersionCase& version, std::ostream* out)
{
    *out << version.name;
}

class ParameterDefaultsTest : public ::testing::TestWithParam<VersionCase>
{
};

TEST_P(ParameterDefaultsTest, InitializeDefaultsSetsTheColumnOfTheVersionClass)
{
    const VersionCase& version = GetParam();
    std::unique_ptr<WineVersionSetting> wine;
    if (!zettest::TestRegistry::isPortable()) {
        if (!version.wineVersion)
            GTEST_SKIP() << "Wine's version setting has no " << version.name
                         << " (its winxp is service pack 3); the class is checked natively";
        if (*version.wineVersion)
            wine.reset(new WineVersionSetting(version.wineVersion));
    }
    zettest::TestRegistry registry;
    if (zettest::TestRegistry::isPortable() && version.currentVersion)
        paramtest::setEmulatedVersion(version.currentVersion, version.servicePack, version.build);

    const int result = zettest::runChild("ConfigParamDefaults", {kColumnNames[version.column]});
    EXPECT_NE(2, result) << "the child did not run on " << version.name;
    EXPECT_EQ(0, result) << "defaults differ from the table, see the child's output";
}

INSTANTIATE_TEST_SUITE_P(VersionClasses, ParameterDefaultsTest, ::testing::ValuesIn(kVersionCases),
                         [](const ::testing::TestParamInfo<VersionCase>& info) {
                             return std::string(info.param.name);
                         });

class ParameterTableTest : public zettest::RegistryTest
{
};

TEST_F(ParameterTableTest, MissingKeysGiveZeroAndOneSharedEmptyStringWithoutCreatingEntries)
{
    ZETConfigParam first;
    ZETConfigParam second;
    const std::wstring& caption = first.getNetworkPanelCaption();
    EXPECT_TRUE(caption.empty());
    EXPECT_EQ(&caption, &first.getNetworkPanelCaption());
    EXPECT_EQ(&caption, &second.getAdapterCaption());
    EXPECT_EQ(&caption, &ZETConfigParamTestAccess::configString(second, L"ZET_NO_SUCH_KEY"));
    EXPECT_EQ(0, first.getMainWindowTimeout());
    EXPECT_EQ(0, ZETConfigParamTestAccess::configInt(first, L"ZET_NO_SUCH_KEY"));
    EXPECT_TRUE(ZETConfigParamTestAccess::texts(first).empty());
    EXPECT_TRUE(ZETConfigParamTestAccess::numbers(first).empty());
}

TEST_F(ParameterTableTest, ARepeatedInitializeDefaultsRestoresTheClassAndKeepsForeignEntries)
{
    ZETConfigParam param;
    param.InitializeDefaults();
    const std::map<std::wstring, int> defaults = ZETConfigParamTestAccess::numbers(param);

    // A value brought in from the registry, under a key every class has.
    ZETSettings::intSetConfiguratorValue(paramtest::kModeName, 1);
    ZETSettings::intSetConfiguratorValue(L"ZET_MAIN_WINDOW_TIMEOUT", 99);
    param.LoadFromRegistry(L"");
    ASSERT_EQ(99, param.getMainWindowTimeout());
    ZETConfigParamTestAccess::numbers(param)[L"ZET_NOT_A_PARAMETER"] = 7;

    param.InitializeDefaults();
    EXPECT_EQ(30, param.getMainWindowTimeout());
    std::map<std::wstring, int> expected = defaults;
    expected[L"ZET_NOT_A_PARAMETER"] = 7;
    EXPECT_EQ(expected, ZETConfigParamTestAccess::numbers(param));
}

}  // namespace
