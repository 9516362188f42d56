// The parameter table of ZETConfigParam and the NDIS stacking order check.
#include "Commands.h"
#include "RecordFields.h"
#include "zetsettings/ZETConfigParam.h"
#include "zetsettings/ZETSettings.h"

namespace zettool {
namespace {

typedef int (ZETConfigParam::*IntGetter)() const;
typedef const std::wstring& (ZETConfigParam::*TextGetter)() const;

const std::pair<const char*, TextGetter> kTextParameters[] = {
    {"ZET_NETWORK_PANEL_CAPTION", &ZETConfigParam::getNetworkPanelCaption},
    {"ZET_ADAPTER_CAPTION", &ZETConfigParam::getAdapterCaption},
    {"ZET_CONNECT_TO_THESE_SERVERS_STRING", &ZETConfigParam::getConnectToTheseServersString},
};

const std::pair<const char*, IntGetter> kIntParameters[] = {
    {"ZET_MAIN_WINDOW_TIMEOUT", &ZETConfigParam::getMainWindowTimeout},
    {"ZET_CHILD_WINDOW_TIMEOUT", &ZETConfigParam::getChildWindowTimeout},
    {"ZET_PRIVILEDGE_ACCESS_MSG_BOX_TIMEOUT", &ZETConfigParam::getPriviledgeAccessMsgBoxTimeout},
    {"ZET_ENABLE_8021X_CTRL_ID", &ZETConfigParam::getEnable8021xCtrlId},
    {"ZET_EAP_TYPE_CTRL_ID", &ZETConfigParam::getEapTypeCtrlId},
    {"ZET_PROPERTIES_BUTTON_CTRL_ID", &ZETConfigParam::getPropertiesButtonCtrlId},
    {"ZET_AUTHENTICATION_AS_COMP_CTRL_ID", &ZETConfigParam::getAuthenticateAsComputerCtrlId},
    {"ZET_AUTHENTICATION_AS_GUEST_CTRL_ID", &ZETConfigParam::getAuthenticateAsGuestCtrlId},
    {"ZET_COMPONENTS_LIST_CTRL_ID", &ZETConfigParam::getComponentsListCtrlId},
    {"ZET_SHOW_ICON_IN_TASK_BAR_CTRL_ID", &ZETConfigParam::getShowIconInTaskBarCtrlId},
    {"ZET_VALIDATE_SERVER_CERTIFICATE_CTRL_ID", &ZETConfigParam::getValidateServerCertCtrlId},
    {"ZET_CONNECT_TO_THESE_SERVERS_CHECK_BOX_CTRL_ID", &ZETConfigParam::getConnectToTheseServersCheckBoxCtrlId},
    {"ZET_CONNECT_TO_THESE_SERVERS_EDIT_CTRL_ID", &ZETConfigParam::getConnectToTheseServersEditCtrlId},
    {"ZET_ROOT_CERT_AUTH_CTRL_ID", &ZETConfigParam::getRootCertAuthorityCtrlId},
    {"ZET_ENABLE_FAST_RECONNECT_CTRL_ID", &ZETConfigParam::getEnableFastReconnectCtrlId},
    {"ZET_CONFIGURE_BUTTON_CTRL_ID", &ZETConfigParam::getConfigureCtrlId},
    {"ZET_SELECT_AUTHENTICATION_METHOD_CTRL_ID", &ZETConfigParam::getAuthenticationMethodCtrlId},
    {"ZET_AUTOMATICALLY_WIND_LOGON_CTRL_ID", &ZETConfigParam::getAutoWindowsLogonCtrlId},
    {"ZET_XP_WINDOWS_WIRELESS_NET_SETTINGS_CTRL_ID", &ZETConfigParam::getXpWindowsWirelessNetSettingsCtrlId},
    {"ZET_XP_AVAILABLE_NETWORKS_LIST_CTRL_ID", &ZETConfigParam::getXpAvailableNetworksListCtrlId},
    {"ZET_XP_PREFERRED_NETWORKS_LIST_CTRL_ID", &ZETConfigParam::getXpPreferredNetworksListCtrlId},
    {"ZET_XP_WIRELESS_CONFIGURE_BUTTON_CTRL_ID", &ZETConfigParam::getXpWirelessConfigureButtonCtrlId},
    {"ZET_XP_WIRELESS_REFRESH_BUTTON_CTRL_ID", &ZETConfigParam::getXpWirelessRefreshButtonCtrlId},
    {"ZET_XP_WIRELESS_ADD_BUTTON_CTRL_ID", &ZETConfigParam::getXpWirelessAddButtonCtrlId},
    {"ZET_XP_WIRELESS_PROPERTIES_BUTTON_CTRL_ID", &ZETConfigParam::getXpWirelessPropertiesButtonCtrlId},
    {"ZET_XP_ADVANCED_BUTTON_CTRL_ID", &ZETConfigParam::getXpAdvancedButtonCtrlId},
    {"ZET_XP_ANY_AVAILABLE_NET_CTRL_ID", &ZETConfigParam::getXpAnyAvailableNetCtrlId},
    {"ZET_XP_AUTO_CONNECT_CTRL_ID", &ZETConfigParam::getXpAutoConnectCtrlId},
    {"ZET_XP_NETWORK_NAME_SSID_EDIT_CTRL_ID", &ZETConfigParam::getXpNetworkNameSsidEditCtrlId},
    {"ZET_XP_NETWORK_AUTHENTICATION_CTRL_ID", &ZETConfigParam::getXpNetworkAuthenticationCtrlId},
    {"ZET_XP_DATA_ENCRYPTION_WEP_CTRL_ID", &ZETConfigParam::getXpDataEncryptionWepCtrlId},
    {"ZET_XP_NETWORK_KEY_CTRL_ID", &ZETConfigParam::getXpNetworkKeyCtrlId},
    {"ZET_XP_CONF_NETWORK_KEY_CTRL_ID", &ZETConfigParam::getXpConfNetworkKeyCtrlId},
    {"ZET_XP_KEY_INDEX_CTRL_ID", &ZETConfigParam::getXpKeyIndexCtrlId},
    {"ZET_XP_THE_KEY_IS_PROVIDED_AUTO_CTRL_ID", &ZETConfigParam::getXpTheKeyIsProvidedAutoCtrlId},
    {"ZET_XP_THIS_IS_COMPUTER_TO_COMPUTER_CTRL_ID", &ZETConfigParam::getXpThisIsComputerToComputerCtrlId},
    {"ZET_XP_WPA_NETWORK_NAME_SSID_EDIT_CTRL_ID", &ZETConfigParam::getXpWpaNetworkNameSsidEditCtrlId},
    {"ZET_XP_WPA_NETWORK_AUTHENTICATION_CTRL_ID", &ZETConfigParam::getXpWpaNetworkAuthenticationCtrlId},
    {"ZET_XP_WPA_DATA_ENCRYPTION_WEP_CTRL_ID", &ZETConfigParam::getXpWpaDataEncryptionWepCtrlId},
    {"ZET_XP_WPA_NETWORK_KEY_CTRL_ID", &ZETConfigParam::getXpWpaNetworkKeyCtrlId},
    {"ZET_XP_WPA_CONF_NETWORK_KEY_CTRL_ID", &ZETConfigParam::getXpWpaConfNetworkKeyCtrlId},
    {"ZET_XP_WPA_KEY_INDEX_CTRL_ID", &ZETConfigParam::getXpWpaKeyIndexCtrlId},
    {"ZET_XP_WPA_THE_KEY_IS_PROVIDED_AUTO_CTRL_ID", &ZETConfigParam::getXpWpaTheKeyIsProvidedAutoCtrlId},
    {"ZET_XP_WPA_THIS_IS_COMPUTER_TO_COMPUTER_CTRL_ID", &ZETConfigParam::getXpWpaThisIsComputerToComputerCtrlId},
    {"ZET_XP_WPA_ENABLE_8021X_CTRL_ID", &ZETConfigParam::getXpWpaEnable8021xCtrlId},
    {"ZET_XP_WPA_EAP_TYPE_CTRL_ID", &ZETConfigParam::getXpWpaEapTypeCtrlId},
    {"ZET_XP_WPA_PROPERTIES_BUTTON_CTRL_ID", &ZETConfigParam::getXpWpaPropertiesButtonCtrlId},
    {"ZET_XP_WPA_AUTHENTICATION_AS_COMP_CTRL_ID", &ZETConfigParam::getXpWpaAuthenticateAsComputerCtrlId},
    {"ZET_XP_WPA_AUTHENTICATION_AS_GUEST_CTRL_ID", &ZETConfigParam::getXpWpaAuthenticateAsGuestCtrlId},
    {"ZET_XP_WIRELESS_NETWORK_AVAILABLE_NETWORKS_CTRL_ID", &ZETConfigParam::getXpWirelessNetworkAvailableNetworksCtrlId},
    {"ZET_XP_WIRELESS_NETWORK_CONNECT_CTRL_ID", &ZETConfigParam::getXpWirelessNetworkConnectCtrlId},
    {"ZET_XP_WIRELESS_NETWORK_ADVANCED_CTRL_ID", &ZETConfigParam::getXpWirelessNetworkAdvancedCtrlId},
    {"ZET_XP_WIRELESS_NETWORK_ENABLE_8021X_CTRL_ID", &ZETConfigParam::getXpWirelessNetworkEnable8021xCtrlId},
    {"ZET_XP_WIRELESS_NETWORK_KEY_EDIT_BOX_1_CTRL_ID", &ZETConfigParam::getXpWirelessNetworkKeyEditBox1CtrlId},
    {"ZET_XP_WIRELESS_NETWORK_KEY_EDIT_BOX_2_CTRL_ID", &ZETConfigParam::getXpWirelessNetworkKeyEditBox2CtrlId},
    {"ZET_XP_WIRELESS_NETWORK_WARNING_CTRL_ID", &ZETConfigParam::getXpWirelessNetworkWarningCtrlId},
    {"ZET_XP_WIRELESS_NETWORK_ALLOW_CONNECT_CTRL_ID", &ZETConfigParam::getXpWirelessNetworkAllowConnectCtrlId},
    {"ZET_XP_WIRELESS_NETWORK_BANG_ICON_CTRL_ID", &ZETConfigParam::getXpWirelessNetworkBangIconCtrlId},
};

std::string versionClass(const ZETConfigParam& parameters)
{
    if (parameters.isWindows2000())
        return "Windows 2000";
    if (parameters.isWindowsXPSP2())
        return "Windows XP SP2";
    if (parameters.isWindowsXP())
        return "Windows XP";
    return "Other";
}

int runParams(Args& args, Console& console)
{
    const std::wstring adapter = wide(args.option("--adapter").value_or(""));
    args.finish();
    ZETConfigParam parameters;
    parameters.InitializeDefaults();
    parameters.LoadFromRegistry(adapter);

    Node table = Node::list();
    for (const auto& parameter : kTextParameters)
        table.push(Node::record()
                       .add("key", Node::text(parameter.first))
                       .add("value", Node::text((parameters.*parameter.second)())));
    for (const auto& parameter : kIntParameters)
        table.push(Node::record()
                       .add("key", Node::text(parameter.first))
                       .add("value", Node::number((parameters.*parameter.second)())));
    Node certificates = Node::list();
    for (const std::wstring& name : parameters.getListOfRootCertToCheck())
        certificates.push(Node::text(name));
    printNode(console.out,
              Node::record()
                  .add("version", Node::text(versionClass(parameters)))
                  .add("adapter", Node::text(adapter))
                  .add("rootCertificates", certificates)
                  .add("parameters", table),
              console.json);
    return kExitSuccess;
}

std::string paramsHelp()
{
    return "usage: zetsettings params [--adapter ID]\n"
           "\n"
           "The configurator's parameter table: a ZETConfigParam after InitializeDefaults and\n"
           "LoadFromRegistry(ID). ID is the adapter's identification ending in its GUID in braces;\n"
           "it chooses the adapter caption. A getter reads 0 or the empty text for a parameter\n"
           "that the version's table lacks.\n"
           "Note: the load mirrors the table in ConfiguratorSettings as its stored mode says, so\n"
           "with mode 0 (the first load stores it) this writes every parameter.\n";
}

int runNdis(Args& args, Console& console)
{
    const std::string action = args.next("an action: check");
    if (action != "check")
        throw UsageError("unknown action " + action);
    args.finish();
    const bool inOrder = ZETSettings::checkNdisStackingOrder();
    printNode(console.out,
              console.json ? Node::record().add("foundInOrder", Node::boolean(inOrder))
                           : Node::text(inOrder ? "failover stands last (or the list could not be read): nothing changed"
                                                : "failover did not stand last: the list was rewritten with it last"),
              console.json);
    return kExitSuccess;
}

std::string ndisHelp()
{
    return "usage: zetsettings ndis check\n"
           "\n"
           "Checks that the NDIS filter class \"failover\" stands last in FilterClasses of\n"
           "HKLM\\SYSTEM\\CurrentControlSet\\Control\\Network, and puts it last when it does not.\n";
}

}  // namespace

const CommandFamily kParamsFamily = {"params", "the configurator's parameter table", paramsHelp, runParams};
const CommandFamily kNdisFamily = {"ndis", "the NDIS stacking order check", ndisHelp, runNdis};

}  // namespace zettool
