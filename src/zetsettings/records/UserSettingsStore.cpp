// Per-user settings: every user's record in one map, kept as one protected value. A change
// reads the whole map, changes one entry and writes the whole map back, under one hold of
// sm_mutex.
#include "zetsettings/ZETSettings.h"

#include "zetsettings/components/ZETMiscUtil.h"
#include "zetsettings/components/ZETMutexGrabber.h"
#include "zetsettings/platform/RegistryBatch.h"
#include "zetsettings/records/CaseBlindLookup.h"
#include "zetsettings/records/CommitOrThrow.h"
#include "zetsettings/records/ProtectedValue.h"
#include "zetsettings/records/RecordNames.h"

using JetByteTools::CRegistryKey;
using namespace zet::records;

void ZETSettings::loadUserSettings(ZETUserSettingsMap& map)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    loadProtectedValue(kUserSettingsValue, map, &getLocalMachineBase);
}

void ZETSettings::saveUserSettings(ZETUserSettingsMap& map)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    saveProtectedValue(kUserSettingsValue, map, &getLocalMachineBase);
    commitOrThrow(batch, kUserSettingsValue);
}

void ZETSettings::setUserSettings(const std::wstring& user, boost::shared_ptr<ZETUserSettings> settings)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    if (!settings)
        return;
    try {
        // A stored map that doesn't decrypt was made under another key and reads as absent:
        // the map starts empty and this entry is saved as its first.
        ZETUserSettingsMap map;
        loadUserSettings(map);
        std::wstring key(user);
        ZETMiscUtil::toLower(key);
        map.users[ser_wstring(key)] = *settings;
        saveUserSettings(map);
    } catch (CRegistryKey::Exception&) {
    }
}

boost::shared_ptr<ZETUserSettings> ZETSettings::getUserSettings(const std::wstring& user)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    boost::shared_ptr<ZETUserSettings> result;
    // The load drops registry failures itself: they read as an empty map.
    ZETUserSettingsMap map;
    loadUserSettings(map);
    const auto found = findCaseBlind(map.users, user);
    if (found != map.users.end())
        result.reset(new ZETUserSettings(found->second));
    return result;
}

// Removing the last user stores an empty map; the value itself stays.
void ZETSettings::removeUserSettings(const std::wstring& user)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    try {
        ZETUserSettingsMap map;
        loadUserSettings(map);
        const auto found = findCaseBlind(map.users, user);
        if (found == map.users.end())
            return;
        map.users.erase(found);
        saveUserSettings(map);
    } catch (CRegistryKey::Exception&) {
    }
}
