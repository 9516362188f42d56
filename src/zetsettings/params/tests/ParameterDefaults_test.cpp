// The defaults of each version class, checked in a process that runs on that version: natively
// the version recorded in the test's store, under Wine Wine's own version setting.
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "zetsettings/components/tests/ProcessSignals.h"
#include "zetsettings/params/tests/ParamTestSupport.h"
#include "zetsettings/platform/tests/RegistryTestKeys.h"

namespace {

enum Column { k2000, kXP, kXPSP2, kOther, kColumns };
const char* const kColumnNames[kColumns] = {"2000", "xp", "xpsp2", "other"};

const std::optional<int> no;  // the class has no entry for the key

struct NumberRow {
    int (ZETConfigParam::*getter)() const;
    const wchar_t* key;
    std::optional<int> byColumn[kColumns];
};

struct TextRow {
    const std::wstring& (ZETConfigParam::*getter)() const;  // null: read through the root list
    const wchar_t* key;
    const wchar_t* byColumn[kColumns];  // null: the class has no entry
};

const wchar_t kRoot[] = L"\"Class 3 Public Primary Certification Authority\"";

#define ROW(getter, key) &ZETConfigParam::getter, L"ZET_" #key
const TextRow kTexts[] = {
    {ROW(getNetworkPanelCaption, NETWORK_PANEL_CAPTION),
     {L"Network and Dial-up Connections", L"Network Connections", L"Network Connections", nullptr}},
    {ROW(getAdapterCaption, ADAPTER_CAPTION),
     {L"Local Area Connection", L"Wireless Network Connection", L"Wireless Network Connection", nullptr}},
    {nullptr, kRootList, {kRoot, kRoot, kRoot, kRoot}},
};

const NumberRow kNumbers[] = {
    {ROW(getMainWindowTimeout, MAIN_WINDOW_TIMEOUT), {30, 30, 30, 30}},
    {ROW(getChildWindowTimeout, CHILD_WINDOW_TIMEOUT), {10, 10, 10, 10}},
    {ROW(getPriviledgeAccessMsgBoxTimeout, PRIVILEDGE_ACCESS_MSG_BOX_TIMEOUT), {3, 3, 3, 3}},
    {ROW(getEnable8021xCtrlId, ENABLE_8021X_CTRL_ID), {15036, 15036, 6002, 15036}},
    {ROW(getEapTypeCtrlId, EAP_TYPE_CTRL_ID), {15037, 15037, 6004, 15037}},
    {ROW(getPropertiesButtonCtrlId, PROPERTIES_BUTTON_CTRL_ID), {15038, 15038, 6005, 15038}},
    {ROW(getAuthenticateAsComputerCtrlId, AUTHENTICATION_AS_COMP_CTRL_ID), {15034, 15034, 6006, 15034}},
    {ROW(getAuthenticateAsGuestCtrlId, AUTHENTICATION_AS_GUEST_CTRL_ID), {15035, 15035, 6007, 15035}},
    {ROW(getComponentsListCtrlId, COMPONENTS_LIST_CTRL_ID), {15007, 15007, 16012, 15007}},
    {ROW(getShowIconInTaskBarCtrlId, SHOW_ICON_IN_TASK_BAR_CTRL_ID), {15001, 15001, 16011, 15001}},
    {ROW(getValidateServerCertCtrlId, VALIDATE_SERVER_CERTIFICATE_CTRL_ID), {1302, 15527, 15527, no}},
    {ROW(getConnectToTheseServersCheckBoxCtrlId, CONNECT_TO_THESE_SERVERS_CHECK_BOX_CTRL_ID), {1303, 15528, 15528, no}},
    {ROW(getConnectToTheseServersEditCtrlId, CONNECT_TO_THESE_SERVERS_EDIT_CTRL_ID), {1304, 15529, 15529, no}},
    {ROW(getRootCertAuthorityCtrlId, ROOT_CERT_AUTH_CTRL_ID), {1001, 15507, 15507, no}},
    {ROW(getEnableFastReconnectCtrlId, ENABLE_FAST_RECONNECT_CTRL_ID), {1025, 15524, 15524, no}},
    {ROW(getConfigureCtrlId, CONFIGURE_BUTTON_CTRL_ID), {1013, 15518, 15518, no}},
    {ROW(getAuthenticationMethodCtrlId, SELECT_AUTHENTICATION_METHOD_CTRL_ID), {1012, 15517, 15517, no}},
    {ROW(getAutoWindowsLogonCtrlId, AUTOMATICALLY_WIND_LOGON_CTRL_ID), {1004, 15009, 15009, no}},
    {ROW(getXpWindowsWirelessNetSettingsCtrlId, XP_WINDOWS_WIRELESS_NET_SETTINGS_CTRL_ID), {no, 15055, 7024, no}},
    {ROW(getXpAvailableNetworksListCtrlId, XP_AVAILABLE_NETWORKS_LIST_CTRL_ID), {no, 15060, 0, no}},
    {ROW(getXpPreferredNetworksListCtrlId, XP_PREFERRED_NETWORKS_LIST_CTRL_ID), {no, 15061, 7030, no}},
    {ROW(getXpWirelessConfigureButtonCtrlId, XP_WIRELESS_CONFIGURE_BUTTON_CTRL_ID), {no, 15064, 0, no}},
    {ROW(getXpWirelessRefreshButtonCtrlId, XP_WIRELESS_REFRESH_BUTTON_CTRL_ID), {no, 15065, 0, no}},
    {ROW(getXpWirelessAddButtonCtrlId, XP_WIRELESS_ADD_BUTTON_CTRL_ID), {no, 15066, 7033, no}},
    {ROW(getXpWirelessPropertiesButtonCtrlId, XP_WIRELESS_PROPERTIES_BUTTON_CTRL_ID), {no, 1007, 7035, no}},
    {ROW(getXpAdvancedButtonCtrlId, XP_ADVANCED_BUTTON_CTRL_ID), {no, 1003, 7037, no}},
    {ROW(getXpAnyAvailableNetCtrlId, XP_ANY_AVAILABLE_NET_CTRL_ID), {no, 1004, 1004, no}},
    {ROW(getXpAutoConnectCtrlId, XP_AUTO_CONNECT_CTRL_ID), {no, 15068, 15068, no}},
    {ROW(getXpNetworkNameSsidEditCtrlId, XP_NETWORK_NAME_SSID_EDIT_CTRL_ID), {no, 15041, 15041, no}},
    {ROW(getXpNetworkAuthenticationCtrlId, XP_NETWORK_AUTHENTICATION_CTRL_ID), {no, 1010, 1010, no}},
    {ROW(getXpDataEncryptionWepCtrlId, XP_DATA_ENCRYPTION_WEP_CTRL_ID), {no, 1008, 1008, no}},
    {ROW(getXpNetworkKeyCtrlId, XP_NETWORK_KEY_CTRL_ID), {no, 15052, 15052, no}},
    {ROW(getXpConfNetworkKeyCtrlId, XP_CONF_NETWORK_KEY_CTRL_ID), {no, 15050, 15050, no}},
    {ROW(getXpKeyIndexCtrlId, XP_KEY_INDEX_CTRL_ID), {no, 15054, 15054, no}},
    {ROW(getXpTheKeyIsProvidedAutoCtrlId, XP_THE_KEY_IS_PROVIDED_AUTO_CTRL_ID), {no, 1009, 1009, no}},
    {ROW(getXpThisIsComputerToComputerCtrlId, XP_THIS_IS_COMPUTER_TO_COMPUTER_CTRL_ID), {no, 1005, 1005, no}},
    {ROW(getXpWpaNetworkNameSsidEditCtrlId, XP_WPA_NETWORK_NAME_SSID_EDIT_CTRL_ID), {no, 6011, 6011, no}},
    {ROW(getXpWpaNetworkAuthenticationCtrlId, XP_WPA_NETWORK_AUTHENTICATION_CTRL_ID), {no, 6014, 6014, no}},
    {ROW(getXpWpaDataEncryptionWepCtrlId, XP_WPA_DATA_ENCRYPTION_WEP_CTRL_ID), {no, 6013, 6013, no}},
    {ROW(getXpWpaNetworkKeyCtrlId, XP_WPA_NETWORK_KEY_CTRL_ID), {no, 6016, 6016, no}},
    {ROW(getXpWpaConfNetworkKeyCtrlId, XP_WPA_CONF_NETWORK_KEY_CTRL_ID), {no, 6018, 6018, no}},
    {ROW(getXpWpaKeyIndexCtrlId, XP_WPA_KEY_INDEX_CTRL_ID), {no, 6020, 6020, no}},
    {ROW(getXpWpaTheKeyIsProvidedAutoCtrlId, XP_WPA_THE_KEY_IS_PROVIDED_AUTO_CTRL_ID), {no, 6021, 6021, no}},
    {ROW(getXpWpaThisIsComputerToComputerCtrlId, XP_WPA_THIS_IS_COMPUTER_TO_COMPUTER_CTRL_ID), {no, 6022, 6022, no}},
    {ROW(getXpWpaEnable8021xCtrlId, XP_WPA_ENABLE_8021X_CTRL_ID), {no, 6002, 6002, no}},
    {ROW(getXpWpaEapTypeCtrlId, XP_WPA_EAP_TYPE_CTRL_ID), {no, 6004, 6004, no}},
    {ROW(getXpWpaPropertiesButtonCtrlId, XP_WPA_PROPERTIES_BUTTON_CTRL_ID), {no, 6005, 6005, no}},
    {ROW(getXpWpaAuthenticateAsComputerCtrlId, XP_WPA_AUTHENTICATION_AS_COMP_CTRL_ID), {no, 6006, 6006, no}},
    {ROW(getXpWpaAuthenticateAsGuestCtrlId, XP_WPA_AUTHENTICATION_AS_GUEST_CTRL_ID), {no, 6007, 6007, no}},
    {ROW(getXpWirelessNetworkAvailableNetworksCtrlId, XP_WIRELESS_NETWORK_AVAILABLE_NETWORKS_CTRL_ID),
     {no, 2004, 2004, no}},
    {ROW(getXpWirelessNetworkConnectCtrlId, XP_WIRELESS_NETWORK_CONNECT_CTRL_ID), {no, 2010, 2010, no}},
    {ROW(getXpWirelessNetworkAdvancedCtrlId, XP_WIRELESS_NETWORK_ADVANCED_CTRL_ID), {no, 2009, 7017, no}},
    {ROW(getXpWirelessNetworkEnable8021xCtrlId, XP_WIRELESS_NETWORK_ENABLE_8021X_CTRL_ID), {no, 2016, 0, no}},
    {ROW(getXpWirelessNetworkKeyEditBox1CtrlId, XP_WIRELESS_NETWORK_KEY_EDIT_BOX_1_CTRL_ID), {no, 2007, 0, no}},
    {ROW(getXpWirelessNetworkKeyEditBox2CtrlId, XP_WIRELESS_NETWORK_KEY_EDIT_BOX_2_CTRL_ID), {no, 2012, 0, no}},
    {ROW(getXpWirelessNetworkWarningCtrlId, XP_WIRELESS_NETWORK_WARNING_CTRL_ID), {no, 2013, 0, no}},
    {ROW(getXpWirelessNetworkAllowConnectCtrlId, XP_WIRELESS_NETWORK_ALLOW_CONNECT_CTRL_ID), {no, 2014, 0, no}},
    {ROW(getXpWirelessNetworkBangIconCtrlId, XP_WIRELESS_NETWORK_BANG_ICON_CTRL_ID), {no, 2015, 0, no}},
};
#undef ROW

using zettest::narrow;

// What InitializeDefaults left in the object against the column: the entries (so also which
// keys have none) and what every getter answers.
void findMismatches(Column column, ZETConfigParam& param, std::vector<std::string>& problems)
{
    std::map<std::wstring, int> numbers;
    for (const NumberRow& row : kNumbers) {
        if (row.byColumn[column])
            numbers[row.key] = *row.byColumn[column];
        if ((param.*row.getter)() != row.byColumn[column].value_or(0))
            problems.push_back("the getter of " + narrow(row.key));
    }
    std::map<std::wstring, std::wstring> texts;
    for (const TextRow& row : kTexts) {
        if (row.byColumn[column])
            texts[row.key] = row.byColumn[column];
        if (row.getter && (param.*row.getter)() != (row.byColumn[column] ? row.byColumn[column] : L""))
            problems.push_back("the getter of " + narrow(row.key));
        // A key without entry gives the one empty string that all objects share.
        if (row.getter && !row.byColumn[column] && &(param.*row.getter)() != &ZETConfigParam().getAdapterCaption())
            problems.push_back("the empty text of " + narrow(row.key));
    }
    // The trusted server is ours to choose, but in every class, and a bare host name.
    const std::wstring server = texts[kServerKey] = param.getConnectToTheseServersString();
    if (server.empty() || server.find_first_of(L":/ ") != std::wstring::npos)
        problems.push_back("the trusted server " + narrow(server));
    // After the getters, so that a getter that makes an entry shows here.
    if (Access::numbers(param) != numbers || Access::texts(param) != texts)
        problems.push_back("the entries of the object");
    if (param.getListOfRootCertToCheck() != std::vector<std::wstring>{L"Class 3 Public Primary Certification Authority"})
        problems.push_back("the root certificate list");
}

// Exit codes: 0 the defaults match, 1 they don't, 2 the process does not run on the version the
// test asked for.
ZET_CHILD_SCENARIO(ConfigParamDefaults)
{
    int column = 0;
    while (column < kOther && args.at(0) != kColumnNames[column])
        ++column;
    ZETConfigParam param;
    param.InitializeDefaults();
    // A second call brings a changed entry of the class back and leaves other entries alone.
    Access::numbers(param)[L"ZET_MAIN_WINDOW_TIMEOUT"] = 99;
    Access::numbers(param)[L"ZET_NOT_A_PARAMETER"] = 7;
    param.InitializeDefaults();
    if (param.isWindows2000() != (column == k2000) || param.isWindowsXP() != (column == kXP || column == kXPSP2) ||
        param.isWindowsXPSP2() != (column == kXPSP2))
        return 2;
    std::vector<std::string> problems;
    if (Access::numbers(param).erase(L"ZET_NOT_A_PARAMETER") != 1)
        problems.push_back("the entry that is no parameter");
    findMismatches(static_cast<Column>(column), param, problems);
    for (const std::string& problem : problems)
        std::fprintf(stderr, "wrong: %s\n", problem.c_str());
    return problems.empty() ? 0 : 1;
}

// Wine's ntdll fixes a process's version as it starts, from HKCU\Software\Wine\AppDefaults\<program>,
// opened by its absolute name: the test registry's redirection of HKEY_CURRENT_USER doesn't reach
// it. So the setting goes into the real key while no test registry is in place, for the child (this
// same program) to read, and all that it created goes again after.
class WineVersionSetting {
public:
    explicit WineVersionSetting(const std::wstring& version)
    {
        zettest::ScopedKey key;
        const std::wstring program = m_created + L"\\zetsettings_tests.exe";
        if (zettest::openKey(HKEY_CURRENT_USER, m_created, key, KEY_READ) == ERROR_SUCCESS)
            m_created = program;
        if (zettest::createKey(HKEY_CURRENT_USER, program, key) == ERROR_SUCCESS)
            zettest::setString(key.get(), L"Version", version);
    }
    ~WineVersionSetting() { RegDeleteTreeW(HKEY_CURRENT_USER, m_created.c_str()); }

private:
    std::wstring m_created = L"Software\\Wine\\AppDefaults";
};

struct VersionCase {
    const char* name;
    const wchar_t* currentVersion;  // natively; null: nothing recorded in the store
    const wchar_t* servicePack;
    const wchar_t* wineVersion;  // null: Wine has no such setting; empty: Wine's default
    Column column;
};

// Service packs 1 and 3 are XP, 2 alone is XP SP2; Wine's winxp is service pack 3.
const VersionCase kVersionCases[] = {
    {"Windows2000", L"5.0", L"Service Pack 4", L"win2k", k2000},
    {"WindowsXPServicePack1", L"5.1", L"Service Pack 1", nullptr, kXP},
    {"WindowsXPServicePack2", L"5.1", L"Service Pack 2", nullptr, kXPSP2},
    {"WindowsXPServicePack3", L"5.1", L"Service Pack 3", L"winxp", kXP},
    {"WindowsServer2003", L"5.2", L"Service Pack 2", L"win2003", kOther},
    {"NoVersionRecorded", nullptr, nullptr, L"", kOther},
};

class ParameterDefaultsTest : public ::testing::TestWithParam<VersionCase> {};

TEST_P(ParameterDefaultsTest, InitializeDefaultsSetsTheColumnOfTheVersionClass)
{
    const VersionCase& version = GetParam();
    std::unique_ptr<WineVersionSetting> wine;
    if (!zettest::TestRegistry::isPortable()) {
        if (!version.wineVersion)
            GTEST_SKIP() << "Wine can't be set to " << version.name << "; the class is checked natively";
        if (*version.wineVersion)
            wine.reset(new WineVersionSetting(version.wineVersion));
    }
    zettest::TestRegistry registry;
    if (zettest::TestRegistry::isPortable() && version.currentVersion) {
        rawreg::writeText(kWindowsVersionKey, L"CurrentVersion", version.currentVersion);
        rawreg::writeText(kWindowsVersionKey, L"CSDVersion", version.servicePack);
    }

    const int result = zettest::runChild("ConfigParamDefaults", {kColumnNames[version.column]});
    EXPECT_NE(2, result) << "the child did not run on " << version.name;
    EXPECT_EQ(0, result) << "the defaults differ from the table, see the child's output";
}

INSTANTIATE_TEST_SUITE_P(VersionClasses, ParameterDefaultsTest, ::testing::ValuesIn(kVersionCases),
                         [](const ::testing::TestParamInfo<VersionCase>& info) { return std::string(info.param.name); });

}  // namespace
