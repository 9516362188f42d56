// The typed getters: each reads one parameter by its key, and nothing more.
#include "zetsettings/ZETConfigParam.h"

#include "zetsettings/params/ParameterKeys.h"

using namespace zet::params;

int ZETConfigParam::getMainWindowTimeout() const
{
    return getConfigInt(kMainWindowTimeout);
}
int ZETConfigParam::getChildWindowTimeout() const
{
    return getConfigInt(kChildWindowTimeout);
}
int ZETConfigParam::getPriviledgeAccessMsgBoxTimeout() const
{
    return getConfigInt(kPriviledgeAccessMsgBoxTimeout);
}
const std::wstring& ZETConfigParam::getNetworkPanelCaption() const
{
    return getConfigString(kNetworkPanelCaption);
}
const std::wstring& ZETConfigParam::getAdapterCaption() const
{
    return getConfigString(kAdapterCaption);
}
const std::wstring& ZETConfigParam::getConnectToTheseServersString() const
{
    return getConfigString(kConnectToTheseServersString);
}
int ZETConfigParam::getEnable8021xCtrlId() const
{
    return getConfigInt(kEnable8021xCtrlId);
}
int ZETConfigParam::getEapTypeCtrlId() const
{
    return getConfigInt(kEapTypeCtrlId);
}
int ZETConfigParam::getPropertiesButtonCtrlId() const
{
    return getConfigInt(kPropertiesButtonCtrlId);
}
int ZETConfigParam::getAuthenticateAsComputerCtrlId() const
{
    return getConfigInt(kAuthenticationAsCompCtrlId);
}
int ZETConfigParam::getAuthenticateAsGuestCtrlId() const
{
    return getConfigInt(kAuthenticationAsGuestCtrlId);
}
int ZETConfigParam::getComponentsListCtrlId() const
{
    return getConfigInt(kComponentsListCtrlId);
}
int ZETConfigParam::getShowIconInTaskBarCtrlId() const
{
    return getConfigInt(kShowIconInTaskBarCtrlId);
}
int ZETConfigParam::getValidateServerCertCtrlId() const
{
    return getConfigInt(kValidateServerCertificateCtrlId);
}
int ZETConfigParam::getConnectToTheseServersCheckBoxCtrlId() const
{
    return getConfigInt(kConnectToTheseServersCheckBoxCtrlId);
}
int ZETConfigParam::getConnectToTheseServersEditCtrlId() const
{
    return getConfigInt(kConnectToTheseServersEditCtrlId);
}
int ZETConfigParam::getRootCertAuthorityCtrlId() const
{
    return getConfigInt(kRootCertAuthCtrlId);
}
int ZETConfigParam::getEnableFastReconnectCtrlId() const
{
    return getConfigInt(kEnableFastReconnectCtrlId);
}
int ZETConfigParam::getConfigureCtrlId() const
{
    return getConfigInt(kConfigureButtonCtrlId);
}
int ZETConfigParam::getAuthenticationMethodCtrlId() const
{
    return getConfigInt(kSelectAuthenticationMethodCtrlId);
}
int ZETConfigParam::getAutoWindowsLogonCtrlId() const
{
    return getConfigInt(kAutomaticallyWindLogonCtrlId);
}
int ZETConfigParam::getXpWindowsWirelessNetSettingsCtrlId() const
{
    return getConfigInt(kXpWindowsWirelessNetSettingsCtrlId);
}
int ZETConfigParam::getXpAvailableNetworksListCtrlId() const
{
    return getConfigInt(kXpAvailableNetworksListCtrlId);
}
int ZETConfigParam::getXpPreferredNetworksListCtrlId() const
{
    return getConfigInt(kXpPreferredNetworksListCtrlId);
}
int ZETConfigParam::getXpWirelessConfigureButtonCtrlId() const
{
    return getConfigInt(kXpWirelessConfigureButtonCtrlId);
}
int ZETConfigParam::getXpWirelessRefreshButtonCtrlId() const
{
    return getConfigInt(kXpWirelessRefreshButtonCtrlId);
}
int ZETConfigParam::getXpWirelessAddButtonCtrlId() const
{
    return getConfigInt(kXpWirelessAddButtonCtrlId);
}
int ZETConfigParam::getXpWirelessPropertiesButtonCtrlId() const
{
    return getConfigInt(kXpWirelessPropertiesButtonCtrlId);
}
int ZETConfigParam::getXpAdvancedButtonCtrlId() const
{
    return getConfigInt(kXpAdvancedButtonCtrlId);
}
int ZETConfigParam::getXpAnyAvailableNetCtrlId() const
{
    return getConfigInt(kXpAnyAvailableNetCtrlId);
}
int ZETConfigParam::getXpAutoConnectCtrlId() const
{
    return getConfigInt(kXpAutoConnectCtrlId);
}
int ZETConfigParam::getXpNetworkNameSsidEditCtrlId() const
{
    return getConfigInt(kXpNetworkNameSsidEditCtrlId);
}
int ZETConfigParam::getXpNetworkAuthenticationCtrlId() const
{
    return getConfigInt(kXpNetworkAuthenticationCtrlId);
}
int ZETConfigParam::getXpDataEncryptionWepCtrlId() const
{
    return getConfigInt(kXpDataEncryptionWepCtrlId);
}
int ZETConfigParam::getXpNetworkKeyCtrlId() const
{
    return getConfigInt(kXpNetworkKeyCtrlId);
}
int ZETConfigParam::getXpConfNetworkKeyCtrlId() const
{
    return getConfigInt(kXpConfNetworkKeyCtrlId);
}
int ZETConfigParam::getXpKeyIndexCtrlId() const
{
    return getConfigInt(kXpKeyIndexCtrlId);
}
int ZETConfigParam::getXpTheKeyIsProvidedAutoCtrlId() const
{
    return getConfigInt(kXpTheKeyIsProvidedAutoCtrlId);
}
int ZETConfigParam::getXpThisIsComputerToComputerCtrlId() const
{
    return getConfigInt(kXpThisIsComputerToComputerCtrlId);
}
int ZETConfigParam::getXpWpaNetworkNameSsidEditCtrlId() const
{
    return getConfigInt(kXpWpaNetworkNameSsidEditCtrlId);
}
int ZETConfigParam::getXpWpaNetworkAuthenticationCtrlId() const
{
    return getConfigInt(kXpWpaNetworkAuthenticationCtrlId);
}
int ZETConfigParam::getXpWpaDataEncryptionWepCtrlId() const
{
    return getConfigInt(kXpWpaDataEncryptionWepCtrlId);
}
int ZETConfigParam::getXpWpaNetworkKeyCtrlId() const
{
    return getConfigInt(kXpWpaNetworkKeyCtrlId);
}
int ZETConfigParam::getXpWpaConfNetworkKeyCtrlId() const
{
    return getConfigInt(kXpWpaConfNetworkKeyCtrlId);
}
int ZETConfigParam::getXpWpaKeyIndexCtrlId() const
{
    return getConfigInt(kXpWpaKeyIndexCtrlId);
}
int ZETConfigParam::getXpWpaTheKeyIsProvidedAutoCtrlId() const
{
    return getConfigInt(kXpWpaTheKeyIsProvidedAutoCtrlId);
}
int ZETConfigParam::getXpWpaThisIsComputerToComputerCtrlId() const
{
    return getConfigInt(kXpWpaThisIsComputerToComputerCtrlId);
}
int ZETConfigParam::getXpWpaEnable8021xCtrlId() const
{
    return getConfigInt(kXpWpaEnable8021xCtrlId);
}
int ZETConfigParam::getXpWpaEapTypeCtrlId() const
{
    return getConfigInt(kXpWpaEapTypeCtrlId);
}
int ZETConfigParam::getXpWpaPropertiesButtonCtrlId() const
{
    return getConfigInt(kXpWpaPropertiesButtonCtrlId);
}
int ZETConfigParam::getXpWpaAuthenticateAsComputerCtrlId() const
{
    return getConfigInt(kXpWpaAuthenticationAsCompCtrlId);
}
int ZETConfigParam::getXpWpaAuthenticateAsGuestCtrlId() const
{
    return getConfigInt(kXpWpaAuthenticationAsGuestCtrlId);
}
int ZETConfigParam::getXpWirelessNetworkAvailableNetworksCtrlId() const
{
    return getConfigInt(kXpWirelessNetworkAvailableNetworksCtrlId);
}
int ZETConfigParam::getXpWirelessNetworkConnectCtrlId() const
{
    return getConfigInt(kXpWirelessNetworkConnectCtrlId);
}
int ZETConfigParam::getXpWirelessNetworkAdvancedCtrlId() const
{
    return getConfigInt(kXpWirelessNetworkAdvancedCtrlId);
}
int ZETConfigParam::getXpWirelessNetworkEnable8021xCtrlId() const
{
    return getConfigInt(kXpWirelessNetworkEnable8021xCtrlId);
}
int ZETConfigParam::getXpWirelessNetworkKeyEditBox1CtrlId() const
{
    return getConfigInt(kXpWirelessNetworkKeyEditBox1CtrlId);
}
int ZETConfigParam::getXpWirelessNetworkKeyEditBox2CtrlId() const
{
    return getConfigInt(kXpWirelessNetworkKeyEditBox2CtrlId);
}
int ZETConfigParam::getXpWirelessNetworkWarningCtrlId() const
{
    return getConfigInt(kXpWirelessNetworkWarningCtrlId);
}
int ZETConfigParam::getXpWirelessNetworkAllowConnectCtrlId() const
{
    return getConfigInt(kXpWirelessNetworkAllowConnectCtrlId);
}
int ZETConfigParam::getXpWirelessNetworkBangIconCtrlId() const
{
    return getConfigInt(kXpWirelessNetworkBangIconCtrlId);
}
