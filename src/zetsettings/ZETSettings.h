// ZETSettings: every setting of the product that persists, as static operations over the
// machine's registry.
//
// The library keeps nothing in memory between calls: every operation opens its keys below
// HKEY_LOCAL_MACHINE\Software\Orvane\QXL, creating what is missing (reads included), does its
// work and closes them again, so every process on the machine sees the same data.
//
// Failures: the registry component reports every failure, an absent value included, as
// CRegistryKey::Exception. Each public operation drops it inside its lock: a read then yields
// its default, sentinel, empty record or null pointer, and a write has not happened. The
// exceptions to this rule are named where they are declared. Any other exception (memory
// exhausted, std::out_of_range from a foreign value name) reaches the caller, the lock
// released on the way.
//
// Locks: sm_mutex orders the threads of one process and guards everything but the chooser's
// list, its walk and the alert states, which sm_mutexPreferredNet, named
// "zetPreferredNetMutex", guards across all processes. No operation holds both.
//
// Records, maps and vectors cross the interface through boost::shared_ptr; each one handed
// out is new and belongs to the caller. Three operations change the caller's object:
// setNetworkSettings leaves ciphertext in protectedBlob, setFallbackSettings lower-cases
// owner, updateChooserPreferredNets may bring position down.
#ifndef ZETSETTINGS_ZETSETTINGS_H
#define ZETSETTINGS_ZETSETTINGS_H

#include <map>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "zetsettings/components/CRegistryKey.h"
#include "zetsettings/components/ZETMutex.h"
#include "zetsettings/serial/ZETAlertSettings.h"
#include "zetsettings/serial/ZETFallbackKeySettings.h"
#include "zetsettings/serial/ZETFallbackSettings.h"
#include "zetsettings/serial/ZETLoginData.h"
#include "zetsettings/serial/ZETNetworkSettings.h"
#include "zetsettings/serial/ZETNetworkToFallbackSettingsMap.h"
#include "zetsettings/serial/ZETOwnerToNetworkMap.h"
#include "zetsettings/serial/ZETPreferredNetEntry.h"
#include "zetsettings/serial/ZETPreferredNetworks.h"
#include "zetsettings/serial/ZETUserSettings.h"
#include "zetsettings/serial/ZETUserSettingsMap.h"
#include "zetsettings/serial/ser_map.h"
#include "zetsettings/serial/ser_wstring.h"

class ZETSettings {
public:
    ZETSettings() {}
    ~ZETSettings() {}
    ZETSettings& operator=(const ZETSettings&) { return *this; }

    // ---- base family: values directly on the base key ----------------------------------
    // A failed read returns defaultValue, stored first when writeDefault is true.
    static int intGetBaseValue(const std::wstring& name, int defaultValue, bool writeDefault);
    static void intSetBaseValue(const std::wstring& name, int value);
    static std::wstring strGetBaseValue(const std::wstring& name, const std::wstring& defaultValue,
                                        bool writeDefault);
    static void strSetBaseValue(const std::wstring& name, const std::wstring& value);

    // ---- value families, one subkey of the base key each --------------------------------
    // Configurator (ConfiguratorSettings): a failed read gives -1 or the empty text, writes nothing.
    static int intGetConfiguratorValue(const std::wstring& name);
    static void intSetConfiguratorValue(const std::wstring& name, int value);
    static std::wstring strGetConfiguratorValue(const std::wstring& name);
    static void strSetConfiguratorValue(const std::wstring& name, const std::wstring& value);
    // Netlib (NetlibSettings): a failed read stores the default and returns it.
    static int intGetNetlibValue(const std::wstring& name, int defaultValue);
    static void intSetNetlibValue(const std::wstring& name, int value);
    static std::wstring strGetNetlibValue(const std::wstring& name, const std::wstring& defaultValue);
    static void strSetNetlibValue(const std::wstring& name, const std::wstring& value);
    // GuiHelper (GuiHelper): text only; a failed read stores the default and returns it.
    static std::wstring strGetGuiHelperValue(const std::wstring& name, const std::wstring& defaultValue);
    static void strSetGuiHelperValue(const std::wstring& name, const std::wstring& value);
    // RasEap (RasEapSettings): the number getter stores its default; the text getter has none
    // and gives the empty text.
    static int intGetRasEapValue(const std::wstring& name, int defaultValue);
    static void intSetRasEapValue(const std::wstring& name, int value);
    static std::wstring strGetRasEapValue(const std::wstring& name);
    static void strSetRasEapValue(const std::wstring& name, const std::wstring& value);
    // ZetGuard (Settings): a failed read returns the default, stored first if writeDefault.
    static int intGetZetGuardValue(const std::wstring& name, int defaultValue, bool writeDefault);
    static void intSetZetGuardValue(const std::wstring& name, int value);
    static std::wstring strGetZetGuardValue(const std::wstring& name, const std::wstring& defaultValue,
                                            bool writeDefault);
    static void strSetZetGuardValue(const std::wstring& name, const std::wstring& value);

    // RasMan's EAP type 26 settings, outside the base key and never created here. These two
    // alone report failure: 0, or the Windows error code. value is left alone on failure.
    static DWORD strGetRasmanEapSettings(const std::wstring& name, std::wstring& value);
    static DWORD strSetRasmanEapSettings(const std::wstring& name, const std::wstring& value);

    // ---- network profiles ----------------------------------------------------------------
    // The secret member protectedBlob is stored encrypted; after the call the caller's record
    // holds that ciphertext.
    static void setNetworkSettings(const std::wstring& name, boost::shared_ptr<ZETNetworkSettings> settings);
    // Null when nothing is stored under the name; a default record for the empty name.
    static boost::shared_ptr<ZETNetworkSettings> getNetworkSettings(const std::wstring& name);
    static boost::shared_ptr<ZETNetworkSettings> deleteNetworkSettings(const std::wstring& name);
    // std::out_of_range passes for a foreign value name with too few case digits.
    static std::vector<std::wstring> getNetworkSettingsKeys();

    // ---- per-user settings (one encrypted map; user names match in any case) -------------
    static void setUserSettings(const std::wstring& user, boost::shared_ptr<ZETUserSettings> settings);
    static boost::shared_ptr<ZETUserSettings> getUserSettings(const std::wstring& user);
    static void removeUserSettings(const std::wstring& user);

    // ---- the machine's login (one encrypted record) --------------------------------------
    static void setLoginData(std::wstring userName, std::wstring password, bool loginEnabled,
                             bool keepPassword, bool dependentFlag);
    static void getLoginData(std::wstring& userName, std::wstring& password, bool& loginEnabled,
                             bool& keepPassword, bool& dependentFlag);
    static void removeLoginData();

    // ---- fallback keys (one encrypted map, replaced whole) -------------------------------
    // The one write of the record stores that lets CRegistryKey::Exception reach its caller.
    static void setFallbackKeySettings(
        boost::shared_ptr<std::map<std::wstring, ZETFallbackKeySettings> > settings);
    static boost::shared_ptr<std::map<std::wstring, ZETFallbackKeySettings> > getFallbackKeySettings();

    // ---- fallback database (one clear record per owner and network) ----------------------
    // Lower-cases the caller's owner in place.
    static void setFallbackSettings(boost::shared_ptr<ZETFallbackSettings> settings);
    static boost::shared_ptr<ZETFallbackSettings> getFallbackSettings(const std::wstring& owner,
                                                                      const std::wstring& network);
    static void removeFallbackSettings(const std::wstring& owner, const std::wstring& network);
    static boost::shared_ptr<std::vector<std::wstring> > getListOfNetworks(const std::wstring& owner);
    static boost::shared_ptr<std::vector<std::wstring> > getListOfOwners();

    // ---- the network chooser -------------------------------------------------------------
    static bool isChooserActive();
    static void setChooserActive(bool active);
    static boost::shared_ptr<ZETPreferredNetworks> getChooserPreferredNets();
    // Brings the caller's position down to its number of entries before storing.
    static void updateChooserPreferredNets(boost::shared_ptr<ZETPreferredNetworks> networks);
    static boost::shared_ptr<ZETPreferredNetEntry> nextChooserPreferredNet(bool first, bool& wrapped);
    static void stopChooserAutoAssociate();
    static void moveChooserPreferredNetToFront(const ZETPreferredNetEntry& entry);
    static void deleteChooserPreferredNet(const std::wstring& netName);

    // ---- alerts --------------------------------------------------------------------------
    // An alert never seen counts as enabled, and is recorded so when first asked for.
    static bool isAlertNotificationEnabled(int alert);
    static void updateAlertNotificationState(int alert, bool enabled);

    // ---- system checks -------------------------------------------------------------------
    // true: failover already stands last (or the list could not be read); false: the list
    // was found wrong and rewritten with failover last.
    static bool checkNdisStackingOrder();

private:
    friend struct ZETSettingsTestAccess;
    // LoadFromRegistry holds sm_mutex across its calls of the Configurator family, so that its
    // writes are one batch taken under the mutex, as every operation's are.
    friend class ZETConfigParam;

    static JetByteTools::CRegistryKey getCurrentUserBase();
    static JetByteTools::CRegistryKey getLocalMachineBase();
    static JetByteTools::CRegistryKey getNetworkSettingsKey();

    static std::wstring createCaseBitmap(const std::wstring& networkName);
    static std::wstring removeCaseBitmap(const std::wstring& valueName);

    static void loadUserSettings(ZETUserSettingsMap& map);
    static void saveUserSettings(ZETUserSettingsMap& map);
    static void loadFallbackKeySettings(ser_map<ser_wstring, ZETFallbackKeySettings>& map);
    static void saveFallbackKeySettings(ser_map<ser_wstring, ZETFallbackKeySettings>& map);
    static void loadFallbackSettings(ZETOwnerToNetworkMap& map);
    static void saveFallbackSettings(ZETOwnerToNetworkMap& map);
    static void loadAlertSettings(ZETAlertSettings& settings);
    static void saveAlertSettings(ZETAlertSettings& settings);

    static ZETMutex sm_mutex;
    static ZETMutex sm_mutexPreferredNet;
};

#endif
