// The chooser's on/off flag and its preferred list, loaded and stored whole.
#include "zetsettings/ZETSettings.h"

#include "zetsettings/chooser/ChooserNames.h"
#include "zetsettings/chooser/SettingsRecord.h"
#include "zetsettings/components/ZETMutexGrabber.h"
#include "zetsettings/platform/RegistryBatch.h"

using JetByteTools::CRegistryKey;

namespace {

const int kActive = 1;

// Keeps position within the list: a stored or handed-in place beyond the end is clipped.
void bringPositionWithinList(ZETPreferredNetworks& networks)
{
    if (networks.position.value > networks.entries.size())
        networks.position = static_cast<unsigned char>(networks.entries.size());
}

}  // namespace

bool ZETSettings::isChooserActive()
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    int active = -1;
    try {
        const CRegistryKey base = getLocalMachineBase();
        const CRegistryKey settings = zet::openSettingsKey(base);
        DWORD stored = static_cast<DWORD>(active);
        settings.QueryValue(zet::chooser::kActiveValue, stored);
        active = static_cast<int>(stored);
    } catch (CRegistryKey::Exception&) {
        // An absent flag is created, as inactive, by the first question.
        active = 0;
        intSetZetGuardValue(zet::chooser::kActiveValue, 0);
    }
    return active == kActive;
}

void ZETSettings::setChooserActive(bool active)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    intSetZetGuardValue(zet::chooser::kActiveValue, active ? kActive : 0);
}

boost::shared_ptr<ZETPreferredNetworks> ZETSettings::getChooserPreferredNets()
{
    ZETMutexGrabber grabber(sm_mutexPreferredNet, true);
    zet::RegistryBatch batch;
    boost::shared_ptr<ZETPreferredNetworks> networks(new ZETPreferredNetworks);
    zet::SettingsRecord(getLocalMachineBase, zet::chooser::kPreferredNetworksValue).load(*networks);
    bringPositionWithinList(*networks);
    return networks;
}

void ZETSettings::updateChooserPreferredNets(boost::shared_ptr<ZETPreferredNetworks> networks)
{
    ZETMutexGrabber grabber(sm_mutexPreferredNet, true);
    zet::RegistryBatch batch;
    // The caller's own record is corrected, and sees it.
    bringPositionWithinList(*networks);
    zet::SettingsRecord(getLocalMachineBase, zet::chooser::kPreferredNetworksValue).save(*networks);
}
