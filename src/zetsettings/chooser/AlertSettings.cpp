// The on/off state of each numbered alert, one stored table for all of them. An alert never
// seen counts as enabled, and is recorded so the first time somebody asks.
#include "zetsettings/ZETSettings.h"

#include "zetsettings/chooser/ChooserNames.h"
#include "zetsettings/chooser/SettingsRecord.h"
#include "zetsettings/components/ZETMutexGrabber.h"
#include "zetsettings/platform/RegistryBatch.h"

namespace {

const unsigned int kEnabled = 1;
const unsigned int kDisabled = 0;

// The alert's number keeps the bits of the caller's int: a negative one sorts last.
TSerVar<unsigned int> alertKey(int alert)
{
    return TSerVar<unsigned int>(static_cast<unsigned int>(alert));
}

}  // namespace

void ZETSettings::loadAlertSettings(ZETAlertSettings& settings)
{
    zet::SettingsRecord(getLocalMachineBase, zet::chooser::kAlertSettingsValue).load(settings);
}

void ZETSettings::saveAlertSettings(ZETAlertSettings& settings)
{
    zet::SettingsRecord(getLocalMachineBase, zet::chooser::kAlertSettingsValue).save(settings);
}

bool ZETSettings::isAlertNotificationEnabled(int alert)
{
    // Held from load to save, since the question may record the alert.
    ZETMutexGrabber grabber(sm_mutexPreferredNet, true);
    zet::RegistryBatch batch;
    ZETAlertSettings settings;
    loadAlertSettings(settings);
    const auto found = settings.states.find(alertKey(alert));
    if (found != settings.states.end())
        return found->second.value == kEnabled;
    settings.states[alertKey(alert)] = kEnabled;
    saveAlertSettings(settings);
    return true;
}

void ZETSettings::updateAlertNotificationState(int alert, bool enabled)
{
    ZETMutexGrabber grabber(sm_mutexPreferredNet, true);
    zet::RegistryBatch batch;
    ZETAlertSettings settings;
    loadAlertSettings(settings);
    // Stored every time, also when the state is already the one asked for.
    settings.states[alertKey(alert)] = enabled ? kEnabled : kDisabled;
    saveAlertSettings(settings);
}
