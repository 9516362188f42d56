// ZETConfigParam: the parameters with which the configurator drives the system's own network
// dialogs: timeouts, captions, the trusted server and root certificates, and the dialogs'
// control identifiers.
//
// A value object that belongs to its caller, used in this order: construct, InitializeDefaults
// (the table of defaults for the running Windows version: 2000, XP, XP SP2 or other), then
// optionally LoadFromRegistry (mirrors the table against the ConfiguratorSettings values in the
// direction the stored mode says, and takes the two captions from the running system), then
// the getters. Each parameter has a key (ZET_...) that is also the name of its registry value.
//
// A getter whose key the table has no entry for gives 0 or the empty text; it never creates an
// entry. A text getter returns a reference into the object (or to one empty string shared by
// all objects), valid until the entry changes or the object goes.
//
// No lock is taken: an object shared between threads is guarded by its owner.
#ifndef ZETSETTINGS_ZETCONFIGPARAM_H
#define ZETSETTINGS_ZETCONFIGPARAM_H

#include <map>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "zetsettings/platform/Win32.h"

class ZETConfigParam {
public:
    // Leaves both tables empty; the version record is not read until InitializeDefaults.
    ZETConfigParam();
    ZETConfigParam(const ZETConfigParam& other);
    ZETConfigParam& operator=(const ZETConfigParam& other);
    ~ZETConfigParam();

    // Reads the running version, then sets every parameter of its version class to the default.
    // Nothing is cleared first: entries outside the class stay as they are.
    void InitializeDefaults();

    // Brings the table in line with the registry by the mode ZET_CONFIGURATOR_REGISTRY_MODE:
    // absent (stored as 0 now) or 0, the table is written over the registry; 1, a stored value
    // wins and a missing one is written from the table; any other, nothing is mirrored. Then
    // the panel caption comes from the network connections folder's name, and the adapter
    // caption from the connection name of the adapter whose GUID in braces ends adapterId.
    // Registry failures are dropped.
    void LoadFromRegistry(const std::wstring& adapterId);

    // Version class of the record InitializeDefaults read.
    bool isWindows2000() const;
    bool isWindowsXP() const;     // any service pack
    bool isWindowsXPSP2() const;  // service pack 2 exactly

    // The quoted names of ZET_LIST_OF_ROOT_CERT_TO_CHECK ("a", "b, c"), in order, unquoted.
    std::vector<std::wstring> getListOfRootCertToCheck() const;

    // The ServiceName of each network card of the machine, in the registry's order. The walk
    // stops at a card without one; a machine without the list gives an empty vector.
    static boost::shared_ptr<std::vector<std::wstring> > getNetworkCardsGuids();

    // ---- timeouts ------------------------------------------------------------------------
    int getMainWindowTimeout() const;
    int getChildWindowTimeout() const;
    int getPriviledgeAccessMsgBoxTimeout() const;

    // ---- captions and the trusted server -------------------------------------------------
    const std::wstring& getNetworkPanelCaption() const;
    const std::wstring& getAdapterCaption() const;
    const std::wstring& getConnectToTheseServersString() const;

    // ---- the connection's 802.1X page and properties -------------------------------------
    int getEnable8021xCtrlId() const;
    int getEapTypeCtrlId() const;
    int getPropertiesButtonCtrlId() const;
    int getAuthenticateAsComputerCtrlId() const;
    int getAuthenticateAsGuestCtrlId() const;
    int getComponentsListCtrlId() const;
    int getShowIconInTaskBarCtrlId() const;

    // ---- the EAP properties dialogs ------------------------------------------------------
    int getValidateServerCertCtrlId() const;
    int getConnectToTheseServersCheckBoxCtrlId() const;
    int getConnectToTheseServersEditCtrlId() const;
    int getRootCertAuthorityCtrlId() const;
    int getEnableFastReconnectCtrlId() const;
    int getConfigureCtrlId() const;
    int getAuthenticationMethodCtrlId() const;
    int getAutoWindowsLogonCtrlId() const;

    // ---- XP: the wireless networks page --------------------------------------------------
    int getXpWindowsWirelessNetSettingsCtrlId() const;
    int getXpAvailableNetworksListCtrlId() const;
    int getXpPreferredNetworksListCtrlId() const;
    int getXpWirelessConfigureButtonCtrlId() const;
    int getXpWirelessRefreshButtonCtrlId() const;
    int getXpWirelessAddButtonCtrlId() const;
    int getXpWirelessPropertiesButtonCtrlId() const;
    int getXpAdvancedButtonCtrlId() const;
    int getXpAnyAvailableNetCtrlId() const;
    int getXpAutoConnectCtrlId() const;

    // ---- XP: the properties of one wireless network --------------------------------------
    int getXpNetworkNameSsidEditCtrlId() const;
    int getXpNetworkAuthenticationCtrlId() const;
    int getXpDataEncryptionWepCtrlId() const;
    int getXpNetworkKeyCtrlId() const;
    int getXpConfNetworkKeyCtrlId() const;
    int getXpKeyIndexCtrlId() const;
    int getXpTheKeyIsProvidedAutoCtrlId() const;
    int getXpThisIsComputerToComputerCtrlId() const;

    // ---- XP: the same with WPA, and its 802.1X controls ----------------------------------
    int getXpWpaNetworkNameSsidEditCtrlId() const;
    int getXpWpaNetworkAuthenticationCtrlId() const;
    int getXpWpaDataEncryptionWepCtrlId() const;
    int getXpWpaNetworkKeyCtrlId() const;
    int getXpWpaConfNetworkKeyCtrlId() const;
    int getXpWpaKeyIndexCtrlId() const;
    int getXpWpaTheKeyIsProvidedAutoCtrlId() const;
    int getXpWpaThisIsComputerToComputerCtrlId() const;
    int getXpWpaEnable8021xCtrlId() const;
    int getXpWpaEapTypeCtrlId() const;
    int getXpWpaPropertiesButtonCtrlId() const;
    int getXpWpaAuthenticateAsComputerCtrlId() const;
    int getXpWpaAuthenticateAsGuestCtrlId() const;

    // ---- XP: the dialog that connects to a wireless network ------------------------------
    int getXpWirelessNetworkAvailableNetworksCtrlId() const;
    int getXpWirelessNetworkConnectCtrlId() const;
    int getXpWirelessNetworkAdvancedCtrlId() const;
    int getXpWirelessNetworkEnable8021xCtrlId() const;
    int getXpWirelessNetworkKeyEditBox1CtrlId() const;
    int getXpWirelessNetworkKeyEditBox2CtrlId() const;
    int getXpWirelessNetworkWarningCtrlId() const;
    int getXpWirelessNetworkAllowConnectCtrlId() const;
    int getXpWirelessNetworkBangIconCtrlId() const;

private:
    friend struct ZETConfigParamTestAccess;

    // 0 when the key has no entry.
    int getConfigInt(const std::wstring& key) const;
    // The one shared empty string when the key has no entry.
    const std::wstring& getConfigString(const std::wstring& key) const;

    std::map<std::wstring, std::wstring> m_configStrings;
    std::map<std::wstring, int> m_configInts;
    OSVERSIONINFOEXW m_osVersion;
};

#endif
