// The chooser's walk through its preferred list, and the edits of that list. Each operation
// holds the named mutex from its read to its write, so that processes walking one list
// together each get the places that the others did not.
#include "zetsettings/ZETSettings.h"

#include <algorithm>
#include <cstddef>

#include "zetsettings/components/ZETMutexGrabber.h"
#include "zetsettings/platform/RegistryBatch.h"

namespace {

const unsigned char kMatchByMacAddress = 3;

// position is one byte: places beyond 255 can't be recorded, so the walk wraps there rather
// than hand out an entry that the next step could not go on from.
const std::size_t kLastRecordablePlace = 255;

// Whether two entries stand for the same network, as moving one to the front decides it.
// entryFlag is the caller's business and plays no part.
bool isSameNetwork(const ZETPreferredNetEntry& a, const ZETPreferredNetEntry& b)
{
    if (a.netName != b.netName || a.matchKind.value != b.matchKind.value)
        return false;
    if (a.matchKind.value == kMatchByMacAddress)
        return a.macAddress == b.macAddress;
    return a.matchByte1.value == b.matchByte1.value && a.matchByte2.value == b.matchByte2.value;
}

std::size_t walkablePlaces(const ZETPreferredNetworks& networks)
{
    return std::min(networks.entries.size(), kLastRecordablePlace);
}

}  // namespace

boost::shared_ptr<ZETPreferredNetEntry> ZETSettings::nextChooserPreferredNet(bool first, bool& wrapped)
{
    ZETMutexGrabber grabber(sm_mutexPreferredNet, true);
    zet::RegistryBatch batch;
    boost::shared_ptr<ZETPreferredNetEntry> handedOut;
    boost::shared_ptr<ZETPreferredNetworks> networks = getChooserPreferredNets();
    wrapped = false;

    const std::size_t places = walkablePlaces(*networks);
    const std::size_t last = networks->position.value;
    // A walk that was never started, or was stopped, does not start by itself.
    if (places == 0 || (!first && last == 0))
        return handedOut;

    std::size_t next = first ? 1 : last + 1;
    if (next > places) {
        next = 1;
        wrapped = true;
    }
    handedOut.reset(new ZETPreferredNetEntry(networks->entries[next - 1]));
    networks->position = static_cast<unsigned char>(next);
    updateChooserPreferredNets(networks);
    return handedOut;
}

void ZETSettings::stopChooserAutoAssociate()
{
    ZETMutexGrabber grabber(sm_mutexPreferredNet, true);
    zet::RegistryBatch batch;
    boost::shared_ptr<ZETPreferredNetworks> networks = getChooserPreferredNets();
    networks->position = 0;
    updateChooserPreferredNets(networks);
}

void ZETSettings::moveChooserPreferredNetToFront(const ZETPreferredNetEntry& entry)
{
    ZETMutexGrabber grabber(sm_mutexPreferredNet, true);
    zet::RegistryBatch batch;
    boost::shared_ptr<ZETPreferredNetworks> stored = getChooserPreferredNets();
    boost::shared_ptr<ZETPreferredNetworks> reordered(new ZETPreferredNetworks);
    reordered->entries.reserve(stored->entries.size() + 1);
    reordered->entries.push_back(entry);
    for (const ZETPreferredNetEntry& old : stored->entries)
        if (!isSameNetwork(old, entry))
            reordered->entries.push_back(old);
    // position stays on its place, not on the entry: the walk goes on behind it.
    reordered->position = stored->position;
    updateChooserPreferredNets(reordered);
}

void ZETSettings::deleteChooserPreferredNet(const std::wstring& netName)
{
    ZETMutexGrabber grabber(sm_mutexPreferredNet, true);
    zet::RegistryBatch batch;
    boost::shared_ptr<ZETPreferredNetworks> networks = getChooserPreferredNets();
    ser_vector<ZETPreferredNetEntry>& entries = networks->entries;
    const std::size_t before = entries.size();
    entries.erase(std::remove_if(entries.begin(), entries.end(),
                                 [&netName](const ZETPreferredNetEntry& entry) { return entry.netName == netName; }),
                  entries.end());
    // position is left alone: only the store clips it if it now stands beyond the end.
    if (entries.size() != before)
        updateChooserPreferredNets(networks);
}
