// LoadFromRegistry: the table mirrored against ConfiguratorSettings, then the two captions taken
// from the running system.
#include "zetsettings/ZETConfigParam.h"

#include <map>
#include <stdexcept>

#include "zetsettings/ZETSettings.h"
#include "zetsettings/components/CRegistryKey.h"
#include "zetsettings/components/ZETMutexGrabber.h"
#include "zetsettings/params/ParameterKeys.h"
#include "zetsettings/platform/RegistryBatch.h"

using JetByteTools::CRegistryKey;

namespace {

// The network connections folder: its default value is the folder's name in the system's
// language.
const wchar_t kConnectionsFolderKey[] = L"SOFTWARE\\Classes\\CLSID\\{7007ACC7-3202-11D1-AAD2-00805FC1270E}";
// The network adapter class: one subkey per adapter, named by its GUID in braces.
const wchar_t kAdapterClassKey[] =
    L"System\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}";
const wchar_t kConnectionSubkey[] = L"Connection";
const wchar_t kConnectionName[] = L"Name";

enum RegistryMode { kTableWins = 0, kRegistryWins = 1 };
const int kNothingStored = -1;

// Each entry's mirror for one value type: the table's value goes to the registry, or a stored
// one comes into the table.
void mirror(int mode, const std::wstring& key, std::wstring& value)
{
    if (mode == kRegistryWins) {
        const std::wstring stored = ZETSettings::strGetConfiguratorValue(key);
        // An empty text is what a missing value reads as.
        if (!stored.empty()) {
            value = stored;
            return;
        }
    }
    ZETSettings::strSetConfiguratorValue(key, value);
}

void mirror(int mode, const std::wstring& key, int& value)
{
    if (mode == kRegistryWins) {
        const int stored = ZETSettings::intGetConfiguratorValue(key);
        // 0 is a real identifier; only -1 means nothing stored.
        if (stored != kNothingStored) {
            value = stored;
            return;
        }
    }
    ZETSettings::intSetConfiguratorValue(key, value);
}

// Only the object's own entries are walked: a key the version class has no default for is
// neither read nor written.
template <class Table>
void mirrorTable(int mode, Table& table)
{
    if (mode != kTableWins && mode != kRegistryWins)
        return;
    for (typename Table::iterator entry = table.begin(); entry != table.end(); ++entry)
        mirror(mode, entry->first, entry->second);
}

// A machine that never had a mode gets "table wins", stored for the loads to come.
int registryMode()
{
    const int mode = ZETSettings::intGetConfiguratorValue(zet::params::kRegistryMode);
    if (mode != kNothingStored)
        return mode;
    ZETSettings::intSetConfiguratorValue(zet::params::kRegistryMode, kTableWins);
    return kTableWins;
}

// The folder's name in the system's language; left as it was when the key can't be read.
void takePanelCaption(std::map<std::wstring, std::wstring>& texts)
{
    try {
        CRegistryKey folder(HKEY_LOCAL_MACHINE, kConnectionsFolderKey, KEY_READ);
        const CRegistryKey::Value name = folder.QueryValue(nullptr);
        texts[zet::params::kNetworkPanelCaption] = static_cast<const wchar_t*>(name);
    } catch (CRegistryKey::Exception&) {
    }
}

// The connection name of the adapter whose GUID in braces ends adapterId; left as it was when
// no adapter matches or its name can't be read.
void takeAdapterCaption(const std::wstring& adapterId, std::map<std::wstring, std::wstring>& texts)
{
    try {
        CRegistryKey adapters(HKEY_LOCAL_MACHINE, kAdapterClassKey, KEY_READ);
        for (CRegistryKey::SubkeyIterator it = adapters.BeginSubkeyIteration();
             it != adapters.EndSubkeyIteration(); ++it) {
            // Without an opening brace the cut throws std::out_of_range, caught below.
            const std::wstring guid = adapterId.substr(adapterId.find(L'{'));
            if (guid != it.GetName())
                continue;
            CRegistryKey adapter = it.OpenKey(KEY_READ);
            if (!adapter.HasSubkey(kConnectionSubkey, KEY_READ))
                continue;
            CRegistryKey connection = adapter.OpenKey(kConnectionSubkey, KEY_READ);
            texts[zet::params::kAdapterCaption] = connection.QueryValue(kConnectionName).AsString();
            return;
        }
    } catch (std::exception&) {
    } catch (CRegistryKey::Exception&) {
    }
}

}  // namespace

void ZETConfigParam::LoadFromRegistry(const std::wstring& adapterId)
{
    // The table's values reach the disk in one commit. The batch keeps the store's writer lock
    // from its first write to its end, so it is opened under the store's mutex, held across all
    // the family calls below (each takes it again): a thread holding the writer lock never
    // waits for the mutex that another thread holds while it waits for the writer lock.
    ZETMutexGrabber grabber(ZETSettings::sm_mutex, true);
    zet::RegistryBatch batch;
    const int mode = registryMode();
    mirrorTable(mode, m_configStrings);
    mirrorTable(mode, m_configInts);
    // The captions come after the mirror, so they go to the object only: never written back,
    // and they win over what the family holds.
    takePanelCaption(m_configStrings);
    takeAdapterCaption(adapterId, m_configStrings);
}
