#include "zetsettings/params/ParameterDefaults.h"

#include <limits>

#include "zetsettings/params/ParameterKeys.h"

namespace zet {
namespace params {
namespace {

// No entry for the key in that class: the getter then reads 0, which on XP SP2 is also a
// real default, so absence needs a mark of its own.
const int kAbsent = std::numeric_limits<int>::min();

// Columns in the order of VersionClass: Windows 2000, XP, XP SP2, Other.
struct NumberDefault {
    const wchar_t* key;
    int byClass[kVersionClassCount];
};

struct TextDefault {
    const wchar_t* key;
    const wchar_t* byClass[kVersionClassCount];  // null: absent
};

// The authentication server the client is to trust, and the root it is to accept.
const wchar_t kTrustedServer[] = L"radius.orvane.com";
const wchar_t kTrustedRoot[] = L"\"Class 3 Public Primary Certification Authority\"";

const TextDefault kTextDefaults[] = {
    {kNetworkPanelCaption,
     {L"Network and Dial-up Connections", L"Network Connections", L"Network Connections", nullptr}},
    {kAdapterCaption,
     {L"Local Area Connection", L"Wireless Network Connection", L"Wireless Network Connection", nullptr}},
    {kConnectToTheseServersString, {kTrustedServer, kTrustedServer, kTrustedServer, kTrustedServer}},
    {kListOfRootCertToCheck, {kTrustedRoot, kTrustedRoot, kTrustedRoot, kTrustedRoot}},
};

const NumberDefault kNumberDefaults[] = {
    {kMainWindowTimeout, {30, 30, 30, 30}},
    {kChildWindowTimeout, {10, 10, 10, 10}},
    {kPriviledgeAccessMsgBoxTimeout, {3, 3, 3, 3}},

    {kEnable8021xCtrlId, {15036, 15036, 6002, 15036}},
    {kEapTypeCtrlId, {15037, 15037, 6004, 15037}},
    {kPropertiesButtonCtrlId, {15038, 15038, 6005, 15038}},
    {kAuthenticationAsCompCtrlId, {15034, 15034, 6006, 15034}},
    {kAuthenticationAsGuestCtrlId, {15035, 15035, 6007, 15035}},
    {kComponentsListCtrlId, {15007, 15007, 16012, 15007}},
    {kShowIconInTaskBarCtrlId, {15001, 15001, 16011, 15001}},

    {kValidateServerCertificateCtrlId, {1302, 15527, 15527, kAbsent}},
    {kConnectToTheseServersCheckBoxCtrlId, {1303, 15528, 15528, kAbsent}},
    {kConnectToTheseServersEditCtrlId, {1304, 15529, 15529, kAbsent}},
    {kRootCertAuthCtrlId, {1001, 15507, 15507, kAbsent}},
    {kEnableFastReconnectCtrlId, {1025, 15524, 15524, kAbsent}},
    {kConfigureButtonCtrlId, {1013, 15518, 15518, kAbsent}},
    {kSelectAuthenticationMethodCtrlId, {1012, 15517, 15517, kAbsent}},
    {kAutomaticallyWindLogonCtrlId, {1004, 15009, 15009, kAbsent}},

    {kXpWindowsWirelessNetSettingsCtrlId, {kAbsent, 15055, 7024, kAbsent}},
    {kXpAvailableNetworksListCtrlId, {kAbsent, 15060, 0, kAbsent}},
    {kXpPreferredNetworksListCtrlId, {kAbsent, 15061, 7030, kAbsent}},
    {kXpWirelessConfigureButtonCtrlId, {kAbsent, 15064, 0, kAbsent}},
    {kXpWirelessRefreshButtonCtrlId, {kAbsent, 15065, 0, kAbsent}},
    {kXpWirelessAddButtonCtrlId, {kAbsent, 15066, 7033, kAbsent}},
    {kXpWirelessPropertiesButtonCtrlId, {kAbsent, 1007, 7035, kAbsent}},
    {kXpAdvancedButtonCtrlId, {kAbsent, 1003, 7037, kAbsent}},
    {kXpAnyAvailableNetCtrlId, {kAbsent, 1004, 1004, kAbsent}},
    {kXpAutoConnectCtrlId, {kAbsent, 15068, 15068, kAbsent}},

    {kXpNetworkNameSsidEditCtrlId, {kAbsent, 15041, 15041, kAbsent}},
    {kXpNetworkAuthenticationCtrlId, {kAbsent, 1010, 1010, kAbsent}},
    {kXpDataEncryptionWepCtrlId, {kAbsent, 1008, 1008, kAbsent}},
    {kXpNetworkKeyCtrlId, {kAbsent, 15052, 15052, kAbsent}},
    {kXpConfNetworkKeyCtrlId, {kAbsent, 15050, 15050, kAbsent}},
    {kXpKeyIndexCtrlId, {kAbsent, 15054, 15054, kAbsent}},
    {kXpTheKeyIsProvidedAutoCtrlId, {kAbsent, 1009, 1009, kAbsent}},
    {kXpThisIsComputerToComputerCtrlId, {kAbsent, 1005, 1005, kAbsent}},

    {kXpWpaNetworkNameSsidEditCtrlId, {kAbsent, 6011, 6011, kAbsent}},
    {kXpWpaNetworkAuthenticationCtrlId, {kAbsent, 6014, 6014, kAbsent}},
    {kXpWpaDataEncryptionWepCtrlId, {kAbsent, 6013, 6013, kAbsent}},
    {kXpWpaNetworkKeyCtrlId, {kAbsent, 6016, 6016, kAbsent}},
    {kXpWpaConfNetworkKeyCtrlId, {kAbsent, 6018, 6018, kAbsent}},
    {kXpWpaKeyIndexCtrlId, {kAbsent, 6020, 6020, kAbsent}},
    {kXpWpaTheKeyIsProvidedAutoCtrlId, {kAbsent, 6021, 6021, kAbsent}},
    {kXpWpaThisIsComputerToComputerCtrlId, {kAbsent, 6022, 6022, kAbsent}},
    {kXpWpaEnable8021xCtrlId, {kAbsent, 6002, 6002, kAbsent}},
    {kXpWpaEapTypeCtrlId, {kAbsent, 6004, 6004, kAbsent}},
    {kXpWpaPropertiesButtonCtrlId, {kAbsent, 6005, 6005, kAbsent}},
    {kXpWpaAuthenticationAsCompCtrlId, {kAbsent, 6006, 6006, kAbsent}},
    {kXpWpaAuthenticationAsGuestCtrlId, {kAbsent, 6007, 6007, kAbsent}},

    {kXpWirelessNetworkAvailableNetworksCtrlId, {kAbsent, 2004, 2004, kAbsent}},
    {kXpWirelessNetworkConnectCtrlId, {kAbsent, 2010, 2010, kAbsent}},
    {kXpWirelessNetworkAdvancedCtrlId, {kAbsent, 2009, 7017, kAbsent}},
    {kXpWirelessNetworkEnable8021xCtrlId, {kAbsent, 2016, 0, kAbsent}},
    {kXpWirelessNetworkKeyEditBox1CtrlId, {kAbsent, 2007, 0, kAbsent}},
    {kXpWirelessNetworkKeyEditBox2CtrlId, {kAbsent, 2012, 0, kAbsent}},
    {kXpWirelessNetworkWarningCtrlId, {kAbsent, 2013, 0, kAbsent}},
    {kXpWirelessNetworkAllowConnectCtrlId, {kAbsent, 2014, 0, kAbsent}},
    {kXpWirelessNetworkBangIconCtrlId, {kAbsent, 2015, 0, kAbsent}},
};

}  // namespace

void setDefaults(VersionClass versionClass, std::map<std::wstring, std::wstring>& texts,
                 std::map<std::wstring, int>& numbers)
{
    for (const TextDefault& row : kTextDefaults) {
        if (const wchar_t* value = row.byClass[versionClass])
            texts[row.key] = value;
    }
    for (const NumberDefault& row : kNumberDefaults) {
        const int value = row.byClass[versionClass];
        if (value != kAbsent)
            numbers[row.key] = value;
    }
}

}  // namespace params
}  // namespace zet
