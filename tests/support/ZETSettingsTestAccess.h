// The private members of ZETSettings that tests reach, gathered in one place: the class
// names this struct its friend, and every test file that needs one includes this header.
#ifndef ZETSETTINGS_TESTS_SUPPORT_ZETSETTINGSTESTACCESS_H
#define ZETSETTINGS_TESTS_SUPPORT_ZETSETTINGSTESTACCESS_H

#include <string>

#include "zetsettings/ZETSettings.h"

struct ZETSettingsTestAccess {
    static std::wstring createCaseBitmap(const std::wstring& networkName)
    {
        return ZETSettings::createCaseBitmap(networkName);
    }
    static std::wstring removeCaseBitmap(const std::wstring& valueName)
    {
        return ZETSettings::removeCaseBitmap(valueName);
    }
    // The named mutex of the chooser's list and the alert states, for a test process that
    // has to hold it as an operation would.
    static ZETMutex& preferredNetMutex() { return ZETSettings::sm_mutexPreferredNet; }
    // The private key and record helpers, so that benchmarks can time them on their own.
    static JetByteTools::CRegistryKey getNetworkSettingsKey() { return ZETSettings::getNetworkSettingsKey(); }
    static void loadUserSettings(ZETUserSettingsMap& map) { ZETSettings::loadUserSettings(map); }
    static void saveUserSettings(ZETUserSettingsMap& map) { ZETSettings::saveUserSettings(map); }
    static void loadFallbackKeySettings(ser_map<ser_wstring, ZETFallbackKeySettings>& map)
    {
        ZETSettings::loadFallbackKeySettings(map);
    }
    static void saveFallbackKeySettings(ser_map<ser_wstring, ZETFallbackKeySettings>& map)
    {
        ZETSettings::saveFallbackKeySettings(map);
    }
    static void loadFallbackSettings(ZETOwnerToNetworkMap& map) { ZETSettings::loadFallbackSettings(map); }
    static void saveFallbackSettings(ZETOwnerToNetworkMap& map) { ZETSettings::saveFallbackSettings(map); }
    static void loadAlertSettings(ZETAlertSettings& settings) { ZETSettings::loadAlertSettings(settings); }
    static void saveAlertSettings(ZETAlertSettings& settings) { ZETSettings::saveAlertSettings(settings); }
};

#endif
