// The keys of the configuration parameters. Each is also the name of the parameter's value in
// ConfiguratorSettings, so the spelling is stored data: ZET_PRIVILEDGE_... stays as it is.
#ifndef ZETSETTINGS_PARAMS_PARAMETERKEYS_H
#define ZETSETTINGS_PARAMS_PARAMETERKEYS_H

namespace zet {
namespace params {

// Not a parameter: says in which direction LoadFromRegistry mirrors the table.
const wchar_t kRegistryMode[] = L"ZET_CONFIGURATOR_REGISTRY_MODE";

// Text parameters.
const wchar_t kNetworkPanelCaption[] = L"ZET_NETWORK_PANEL_CAPTION";
const wchar_t kAdapterCaption[] = L"ZET_ADAPTER_CAPTION";
const wchar_t kConnectToTheseServersString[] = L"ZET_CONNECT_TO_THESE_SERVERS_STRING";
const wchar_t kListOfRootCertToCheck[] = L"ZET_LIST_OF_ROOT_CERT_TO_CHECK";

// Timeouts.
const wchar_t kMainWindowTimeout[] = L"ZET_MAIN_WINDOW_TIMEOUT";
const wchar_t kChildWindowTimeout[] = L"ZET_CHILD_WINDOW_TIMEOUT";
const wchar_t kPriviledgeAccessMsgBoxTimeout[] = L"ZET_PRIVILEDGE_ACCESS_MSG_BOX_TIMEOUT";

// The connection's 802.1X page and properties.
const wchar_t kEnable8021xCtrlId[] = L"ZET_ENABLE_8021X_CTRL_ID";
const wchar_t kEapTypeCtrlId[] = L"ZET_EAP_TYPE_CTRL_ID";
const wchar_t kPropertiesButtonCtrlId[] = L"ZET_PROPERTIES_BUTTON_CTRL_ID";
const wchar_t kAuthenticationAsCompCtrlId[] = L"ZET_AUTHENTICATION_AS_COMP_CTRL_ID";
const wchar_t kAuthenticationAsGuestCtrlId[] = L"ZET_AUTHENTICATION_AS_GUEST_CTRL_ID";
const wchar_t kComponentsListCtrlId[] = L"ZET_COMPONENTS_LIST_CTRL_ID";
const wchar_t kShowIconInTaskBarCtrlId[] = L"ZET_SHOW_ICON_IN_TASK_BAR_CTRL_ID";

// The EAP properties dialogs.
const wchar_t kValidateServerCertificateCtrlId[] = L"ZET_VALIDATE_SERVER_CERTIFICATE_CTRL_ID";
const wchar_t kConnectToTheseServersCheckBoxCtrlId[] = L"ZET_CONNECT_TO_THESE_SERVERS_CHECK_BOX_CTRL_ID";
const wchar_t kConnectToTheseServersEditCtrlId[] = L"ZET_CONNECT_TO_THESE_SERVERS_EDIT_CTRL_ID";
const wchar_t kRootCertAuthCtrlId[] = L"ZET_ROOT_CERT_AUTH_CTRL_ID";
const wchar_t kEnableFastReconnectCtrlId[] = L"ZET_ENABLE_FAST_RECONNECT_CTRL_ID";
const wchar_t kConfigureButtonCtrlId[] = L"ZET_CONFIGURE_BUTTON_CTRL_ID";
const wchar_t kSelectAuthenticationMethodCtrlId[] = L"ZET_SELECT_AUTHENTICATION_METHOD_CTRL_ID";
const wchar_t kAutomaticallyWindLogonCtrlId[] = L"ZET_AUTOMATICALLY_WIND_LOGON_CTRL_ID";

// XP: the wireless networks page.
const wchar_t kXpWindowsWirelessNetSettingsCtrlId[] = L"ZET_XP_WINDOWS_WIRELESS_NET_SETTINGS_CTRL_ID";
const wchar_t kXpAvailableNetworksListCtrlId[] = L"ZET_XP_AVAILABLE_NETWORKS_LIST_CTRL_ID";
const wchar_t kXpPreferredNetworksListCtrlId[] = L"ZET_XP_PREFERRED_NETWORKS_LIST_CTRL_ID";
const wchar_t kXpWirelessConfigureButtonCtrlId[] = L"ZET_XP_WIRELESS_CONFIGURE_BUTTON_CTRL_ID";
const wchar_t kXpWirelessRefreshButtonCtrlId[] = L"ZET_XP_WIRELESS_REFRESH_BUTTON_CTRL_ID";
const wchar_t kXpWirelessAddButtonCtrlId[] = L"ZET_XP_WIRELESS_ADD_BUTTON_CTRL_ID";
const wchar_t kXpWirelessPropertiesButtonCtrlId[] = L"ZET_XP_WIRELESS_PROPERTIES_BUTTON_CTRL_ID";
const wchar_t kXpAdvancedButtonCtrlId[] = L"ZET_XP_ADVANCED_BUTTON_CTRL_ID";
const wchar_t kXpAnyAvailableNetCtrlId[] = L"ZET_XP_ANY_AVAILABLE_NET_CTRL_ID";
const wchar_t kXpAutoConnectCtrlId[] = L"ZET_XP_AUTO_CONNECT_CTRL_ID";

// XP: the properties of one wireless network.
const wchar_t kXpNetworkNameSsidEditCtrlId[] = L"ZET_XP_NETWORK_NAME_SSID_EDIT_CTRL_ID";
const wchar_t kXpNetworkAuthenticationCtrlId[] = L"ZET_XP_NETWORK_AUTHENTICATION_CTRL_ID";
const wchar_t kXpDataEncryptionWepCtrlId[] = L"ZET_XP_DATA_ENCRYPTION_WEP_CTRL_ID";
const wchar_t kXpNetworkKeyCtrlId[] = L"ZET_XP_NETWORK_KEY_CTRL_ID";
const wchar_t kXpConfNetworkKeyCtrlId[] = L"ZET_XP_CONF_NETWORK_KEY_CTRL_ID";
const wchar_t kXpKeyIndexCtrlId[] = L"ZET_XP_KEY_INDEX_CTRL_ID";
const wchar_t kXpTheKeyIsProvidedAutoCtrlId[] = L"ZET_XP_THE_KEY_IS_PROVIDED_AUTO_CTRL_ID";
const wchar_t kXpThisIsComputerToComputerCtrlId[] = L"ZET_XP_THIS_IS_COMPUTER_TO_COMPUTER_CTRL_ID";

// XP: the same with WPA, and its 802.1X controls.
const wchar_t kXpWpaNetworkNameSsidEditCtrlId[] = L"ZET_XP_WPA_NETWORK_NAME_SSID_EDIT_CTRL_ID";
const wchar_t kXpWpaNetworkAuthenticationCtrlId[] = L"ZET_XP_WPA_NETWORK_AUTHENTICATION_CTRL_ID";
const wchar_t kXpWpaDataEncryptionWepCtrlId[] = L"ZET_XP_WPA_DATA_ENCRYPTION_WEP_CTRL_ID";
const wchar_t kXpWpaNetworkKeyCtrlId[] = L"ZET_XP_WPA_NETWORK_KEY_CTRL_ID";
const wchar_t kXpWpaConfNetworkKeyCtrlId[] = L"ZET_XP_WPA_CONF_NETWORK_KEY_CTRL_ID";
const wchar_t kXpWpaKeyIndexCtrlId[] = L"ZET_XP_WPA_KEY_INDEX_CTRL_ID";
const wchar_t kXpWpaTheKeyIsProvidedAutoCtrlId[] = L"ZET_XP_WPA_THE_KEY_IS_PROVIDED_AUTO_CTRL_ID";
const wchar_t kXpWpaThisIsComputerToComputerCtrlId[] = L"ZET_XP_WPA_THIS_IS_COMPUTER_TO_COMPUTER_CTRL_ID";
const wchar_t kXpWpaEnable8021xCtrlId[] = L"ZET_XP_WPA_ENABLE_8021X_CTRL_ID";
const wchar_t kXpWpaEapTypeCtrlId[] = L"ZET_XP_WPA_EAP_TYPE_CTRL_ID";
const wchar_t kXpWpaPropertiesButtonCtrlId[] = L"ZET_XP_WPA_PROPERTIES_BUTTON_CTRL_ID";
const wchar_t kXpWpaAuthenticationAsCompCtrlId[] = L"ZET_XP_WPA_AUTHENTICATION_AS_COMP_CTRL_ID";
const wchar_t kXpWpaAuthenticationAsGuestCtrlId[] = L"ZET_XP_WPA_AUTHENTICATION_AS_GUEST_CTRL_ID";

// XP: the dialog that connects to a wireless network.
const wchar_t kXpWirelessNetworkAvailableNetworksCtrlId[] = L"ZET_XP_WIRELESS_NETWORK_AVAILABLE_NETWORKS_CTRL_ID";
const wchar_t kXpWirelessNetworkConnectCtrlId[] = L"ZET_XP_WIRELESS_NETWORK_CONNECT_CTRL_ID";
const wchar_t kXpWirelessNetworkAdvancedCtrlId[] = L"ZET_XP_WIRELESS_NETWORK_ADVANCED_CTRL_ID";
const wchar_t kXpWirelessNetworkEnable8021xCtrlId[] = L"ZET_XP_WIRELESS_NETWORK_ENABLE_8021X_CTRL_ID";
const wchar_t kXpWirelessNetworkKeyEditBox1CtrlId[] = L"ZET_XP_WIRELESS_NETWORK_KEY_EDIT_BOX_1_CTRL_ID";
const wchar_t kXpWirelessNetworkKeyEditBox2CtrlId[] = L"ZET_XP_WIRELESS_NETWORK_KEY_EDIT_BOX_2_CTRL_ID";
const wchar_t kXpWirelessNetworkWarningCtrlId[] = L"ZET_XP_WIRELESS_NETWORK_WARNING_CTRL_ID";
const wchar_t kXpWirelessNetworkAllowConnectCtrlId[] = L"ZET_XP_WIRELESS_NETWORK_ALLOW_CONNECT_CTRL_ID";
const wchar_t kXpWirelessNetworkBangIconCtrlId[] = L"ZET_XP_WIRELESS_NETWORK_BANG_ICON_CTRL_ID";

}  // namespace params
}  // namespace zet

#endif
