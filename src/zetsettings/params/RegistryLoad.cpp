// LoadFromRegistry: the table mirrored against ConfiguratorSettings, then the two captions taken
// from the running system.
#include "zetsettings/ZETConfigParam.h"

#include <stdexcept>

#include "zetsettings/ZETSettings.h"
#include "zetsettings/components/CRegistryKey.h"
#include "zetsettings/params/ParameterKeys.h"

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
void mirror(ZETSettings& store, int mode, const std::wstring& key, std::wstring& value)
{
    if (mode == kRegistryWins) {
        const std::wstring stored = store.strGetConfiguratorValue(key);
        // An empty text is what a missing value reads as.
        if (!stored.empty()) {
            value = stored;
            return;
        }
    }
    store.strSetConfiguratorValue(key, value);
}

void mirror(ZETSettings& store, int mode, const std::wstring& key, int& value)
{
    if (mode == kRegistryWins) {
        const int stored = store.intGetConfiguratorValue(key);
        // 0 is a real identifier; only -1 means nothing stored.
        if (stored != kNothingStored) {
            value = stored;
            return;
        }
    }
    store.intSetConfiguratorValue(key, value);
}

template <class Table>
void mirrorTable(ZETSettings& store, int mode, Table& table)
{
    if (mode != kTableWins && mode != kRegistryWins)
        return;
    for (typename Table::iterator entry = table.begin(); entry != table.end(); ++entry)
        mirror(store, mode, entry->first, entry->second);
}

int registryMode(ZETSettings& store)
{
    const int mode = store.intGetConfiguratorValue(zet::params::kRegistryMode);
    if (mode != kNothingStored)
        return mode;
    store.intSetConfiguratorValue(zet::params::kRegistryMode, kTableWins);
    return kTableWins;
}

}  // namespace

void ZETConfigParam::LoadFromRegistry(const std::wstring& adapterId)
{
    ZETSettings store;
    const int mode = registryMode(store);
    mirrorTable(store, mode, m_configStrings);
    mirrorTable(store, mode, m_configInts);

    // The captions go to the object only: they come after the mirror, so they are never
    // written back and win over what the family holds.
    try {
        CRegistryKey folder(HKEY_LOCAL_MACHINE, kConnectionsFolderKey, KEY_READ);
        const CRegistryKey::Value name = folder.QueryValue(nullptr);
        m_configStrings[zet::params::kNetworkPanelCaption] = static_cast<const wchar_t*>(name);
    } catch (CRegistryKey::Exception&) {
    }

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
            m_configStrings[zet::params::kAdapterCaption] = connection.QueryValue(kConnectionName).AsString();
            break;
        }
    } catch (std::exception&) {
    } catch (CRegistryKey::Exception&) {
    }
}
