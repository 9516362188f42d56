// The fallback database: one clear record per owner and network. Owners are subkeys of
// FallbackDatabase named in lower case; networks are values named with their case bitmap, so
// that networks differing only in case stay apart in a case-blind registry.
#include "zetsettings/ZETSettings.h"

#include <cstdlib>
#include <functional>
#include <iterator>
#include <tuple>
#include <utility>

#include "zetsettings/components/ZETMiscUtil.h"
#include "zetsettings/components/ZETMutexGrabber.h"
#include "zetsettings/platform/RegistryBatch.h"
#include "zetsettings/records/RecordNames.h"
#include "zetsettings/store/MallocedPtr.h"

using JetByteTools::CRegistryKey;
using namespace zet::records;

namespace {

// Opens the subkey, creating it if absent: the database and its owners come into being on
// first use, reads included.
CRegistryKey createOrOpen(const CRegistryKey& parent, const wchar_t* name)
{
    return parent.CreateOrOpenKey(name, 0, L"", 0, KEY_ALL_ACCESS, 0);
}

std::wstring lowerCase(const std::wstring& text)
{
    std::wstring lower(text);
    ZETMiscUtil::toLower(lower);
    return lower;
}

// The slot of key in map, made with a default value if absent; created tells which. Values
// usually arrive in key order, so the end is tried first and most of a walk costs no search.
template <class Map>
typename Map::mapped_type& slotFor(Map& map, typename Map::key_type&& key, bool& created)
{
    auto place = map.end();
    created = false;
    if (!map.empty() && !map.key_comp()(std::prev(place)->first, key)) {
        place = map.lower_bound(key);
        if (place != map.end() && !map.key_comp()(key, place->first))
            return place->second;
    }
    created = true;
    return map.emplace_hint(place, std::piecewise_construct, std::forward_as_tuple(std::move(key)),
                            std::forward_as_tuple())
        ->second;
}

// Files the record stored in one value under network, read straight into its place in the
// map. A record already filed there (another value whose name decodes to the same network) is
// replaced whole, as a fresh record would replace it. A value that gives no data files nothing.
void fileRecord(const CRegistryKey& ownerKey, const std::wstring& valueName, ser_wstring&& network,
                ZETNetworkToFallbackSettingsMap& entry)
{
    BYTE* data = 0;
    DWORD length = 0;
    ownerKey.QueryValue(valueName.c_str(), &data, length);
    if (!data)
        return;
    const zet::MallocedPtr<BYTE> owned(data);
    bool created = false;
    ZETFallbackSettings& record = slotFor(entry.networks, std::move(network), created);
    if (!created)
        record = ZETFallbackSettings();
    record.deserialize(data, static_cast<int>(length));
}

// Reads the value as fileRecord does and lets it go: the record of an owner nobody asked for.
void readAndDrop(const CRegistryKey& ownerKey, const std::wstring& valueName)
{
    BYTE* data = 0;
    DWORD length = 0;
    ownerKey.QueryValue(valueName.c_str(), &data, length);
    std::free(data);
}

// The text as a ser_wstring, handed over rather than copied.
ser_wstring adopted(std::wstring&& text)
{
    ser_wstring adopted;
    adopted.swap(text);
    return adopted;
}

// The walk of a load: every owner's subkey in the registry's order, and in each every value.
// onOwner(name) comes before the owner's values are read, so an owner without values is met
// too; onValue(ownerKey, valueName) follows for each value. A registry failure ends the walk,
// keeping what was met before; anything else that onValue throws reaches the caller.
template <class OnOwner, class OnValue>
void walkDatabase(const CRegistryKey& database, OnOwner onOwner, OnValue onValue)
{
    try {
        for (auto owner = database.BeginSubkeyIteration(); owner != database.EndSubkeyIteration(); ++owner) {
            onOwner(owner.GetName());
            const CRegistryKey ownerKey = owner.OpenKey(KEY_ALL_ACCESS);
            for (auto value = ownerKey.BeginValueIteration(); value != ownerKey.EndValueIteration(); ++value)
                onValue(ownerKey, value.GetName());
        }
    } catch (CRegistryKey::Exception&) {
    }
}

// Writes one record; a record whose block can't be allocated is skipped, its old stored form
// kept.
void writeRecord(CRegistryKey& ownerKey, const std::wstring& valueName, const ZETFallbackSettings& record)
{
    const int length = record.getSerLength();
    const zet::MallocedPtr<unsigned char> block(static_cast<unsigned char*>(std::malloc(length)));
    if (!block)
        return;
    record.serialize(block.get());
    ownerKey.SetValue(valueName.c_str(), block.get(), static_cast<DWORD>(length));
}

}  // namespace

void ZETSettings::loadFallbackSettings(ZETOwnerToNetworkMap& map)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    try {
        const CRegistryKey database = createOrOpen(getLocalMachineBase(), kFallbackDatabaseKey);
        ZETNetworkToFallbackSettingsMap* entry = nullptr;
        walkDatabase(
            database,
            [&](const std::wstring& owner) {
                bool created = false;
                entry = &slotFor(map.owners, ser_wstring(owner), created);
                entry->owner = owner;
            },
            [&](const CRegistryKey& ownerKey, const std::wstring& valueName) {
                // The network comes from the value's name, not from the record's own member.
                fileRecord(ownerKey, valueName, adopted(removeCaseBitmap(valueName)), *entry);
            });
    } catch (CRegistryKey::Exception&) {
    }
}

// Adds and replaces; never deletes, so values that the map doesn't hold stay in the registry.
void ZETSettings::saveFallbackSettings(ZETOwnerToNetworkMap& map)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    try {
        for (const auto& owner : map.owners) {
            CRegistryKey ownerKey = createOrOpen(createOrOpen(getLocalMachineBase(), kFallbackDatabaseKey),
                                                 owner.first.c_str());
            for (const auto& network : owner.second.networks)
                writeRecord(ownerKey, createCaseBitmap(network.first), network.second);
        }
    } catch (CRegistryKey::Exception&) {
    }
}

// Loads the whole database, files the record under its lower-cased owner (written back to the
// caller's record) and saves the whole database again, all under one hold of sm_mutex.
void ZETSettings::setFallbackSettings(boost::shared_ptr<ZETFallbackSettings> settings)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    if (!settings)
        return;
    try {
        ZETOwnerToNetworkMap map;
        loadFallbackSettings(map);
        const ser_wstring owner(lowerCase(settings->owner));
        const ser_wstring network(settings->network);
        settings->owner = owner;
        ZETNetworkToFallbackSettingsMap& entry = map.owners[owner];
        entry.networks[network] = *settings;
        entry.owner = owner;
        saveFallbackSettings(map);
    } catch (CRegistryKey::Exception&) {
    }
}

// Reads the whole database for one record: the owner matches in any case, the network exactly.
// Every value of every owner is read, as a load reads it, and gives the same failures; only the
// records of the owner that the lookup of a loaded map would find (the first in map order whose
// name matches) are decoded and filed, since no other record could be the answer.
boost::shared_ptr<ZETFallbackSettings> ZETSettings::getFallbackSettings(const std::wstring& owner,
                                                                         const std::wstring& network)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    boost::shared_ptr<ZETFallbackSettings> result;
    const std::wstring wanted = lowerCase(owner);
    ZETNetworkToFallbackSettingsMap match;
    bool matched = false;
    bool filing = false;
    try {
        const CRegistryKey database = createOrOpen(getLocalMachineBase(), kFallbackDatabaseKey);
        walkDatabase(
            database,
            [&](const std::wstring& name) {
                filing = lowerCase(name) == wanted &&
                         (!matched || std::less<ser_wstring>()(ser_wstring(name), match.owner));
                if (filing) {
                    match.networks.clear();
                    match.owner = name;
                    matched = true;
                }
            },
            [&](const CRegistryKey& ownerKey, const std::wstring& valueName) {
                // Decoded also when dropped: a name short of case digits fails this read as it
                // fails a load.
                ser_wstring network = adopted(removeCaseBitmap(valueName));
                if (filing)
                    fileRecord(ownerKey, valueName, std::move(network), match);
                else
                    readAndDrop(ownerKey, valueName);
            });
    } catch (CRegistryKey::Exception&) {
    }
    if (!matched)
        return result;
    const auto record = match.networks.find(ser_wstring(network));
    if (record != match.networks.end())
        result.reset(new ZETFallbackSettings(record->second));
    return result;
}

// Touches only the one value: the owner's subkey stays, also when its last value goes.
void ZETSettings::removeFallbackSettings(const std::wstring& owner, const std::wstring& network)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    try {
        CRegistryKey ownerKey =
            createOrOpen(createOrOpen(getLocalMachineBase(), kFallbackDatabaseKey), lowerCase(owner).c_str());
        ownerKey.DeleteValue(createCaseBitmap(network).c_str());
    } catch (CRegistryKey::Exception&) {
    }
}

// In the registry's enumeration order, never sorted.
boost::shared_ptr<std::vector<std::wstring> > ZETSettings::getListOfNetworks(const std::wstring& owner)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    boost::shared_ptr<std::vector<std::wstring> > result(new std::vector<std::wstring>);
    try {
        const CRegistryKey ownerKey =
            createOrOpen(createOrOpen(getLocalMachineBase(), kFallbackDatabaseKey), lowerCase(owner).c_str());
        for (auto value = ownerKey.BeginValueIteration(); value != ownerKey.EndValueIteration(); ++value)
            result->push_back(removeCaseBitmap(value.GetName()));
    } catch (CRegistryKey::Exception&) {
    }
    return result;
}

// Subkey names as they stand, in the registry's enumeration order.
boost::shared_ptr<std::vector<std::wstring> > ZETSettings::getListOfOwners()
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    boost::shared_ptr<std::vector<std::wstring> > result(new std::vector<std::wstring>);
    try {
        const CRegistryKey database = createOrOpen(getLocalMachineBase(), kFallbackDatabaseKey);
        for (auto owner = database.BeginSubkeyIteration(); owner != database.EndSubkeyIteration(); ++owner)
            result->push_back(owner.GetName());
    } catch (CRegistryKey::Exception&) {
    }
    return result;
}
