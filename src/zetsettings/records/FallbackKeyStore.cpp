// The machine's set of fallback keys: one protected value, read and replaced whole.
#include "zetsettings/ZETSettings.h"

#include "zetsettings/components/ZETMutexGrabber.h"
#include "zetsettings/platform/RegistryBatch.h"
#include "zetsettings/records/CommitOrThrow.h"
#include "zetsettings/records/ProtectedValue.h"
#include "zetsettings/records/RecordNames.h"

using namespace zet::records;

typedef std::map<std::wstring, ZETFallbackKeySettings> FallbackKeyMap;

void ZETSettings::loadFallbackKeySettings(ser_map<ser_wstring, ZETFallbackKeySettings>& map)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    loadProtectedValue(kFallbackKeysValue, map, &getLocalMachineBase);
}

void ZETSettings::saveFallbackKeySettings(ser_map<ser_wstring, ZETFallbackKeySettings>& map)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    saveProtectedValue(kFallbackKeysValue, map, &getLocalMachineBase);
    commitOrThrow(batch, kFallbackKeysValue);
}

// No load comes first: the caller's set replaces the stored one whole. The one set operation
// of the record stores that lets CRegistryKey::Exception through to its caller.
void ZETSettings::setFallbackKeySettings(boost::shared_ptr<FallbackKeyMap> settings)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    if (!settings)
        return;
    ser_map<ser_wstring, ZETFallbackKeySettings> stored;
    for (const FallbackKeyMap::value_type& entry : *settings)
        stored.emplace_hint(stored.end(), ser_wstring(entry.first), entry.second);
    saveFallbackKeySettings(stored);
    commitOrThrow(batch, kFallbackKeysValue);
}

boost::shared_ptr<FallbackKeyMap> ZETSettings::getFallbackKeySettings()
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    boost::shared_ptr<FallbackKeyMap> result(new FallbackKeyMap);
    ser_map<ser_wstring, ZETFallbackKeySettings> stored;
    loadFallbackKeySettings(stored);
    for (const auto& entry : stored)
        result->emplace_hint(result->end(), std::wstring(entry.first), entry.second);
    return result;
}
