#include "zetsettings/chooser/SettingsRecord.h"

#include <cstdlib>

#include "zetsettings/chooser/ChooserNames.h"
#include "zetsettings/store/MallocedPtr.h"

using JetByteTools::CRegistryKey;

namespace zet {

CRegistryKey openSettingsKey(const CRegistryKey& base)
{
    return base.CreateOrOpenKeyEx(chooser::kSettingsKey, 0, L"", 0, KEY_ALL_ACCESS);
}

SettingsRecord::SettingsRecord(BaseOpener openBase, const wchar_t* valueName)
    : m_openBase(openBase), m_valueName(valueName)
{
}

void SettingsRecord::load(ZETSerializeClass& record) const
{
    try {
        BYTE* data = 0;
        DWORD length = 0;
        {
            const CRegistryKey base = m_openBase();
            const CRegistryKey settings = openSettingsKey(base);
            settings.QueryValue(m_valueName, &data, length);
        }
        const MallocedPtr<BYTE> bytes(data);
        // What deserialize consumed is of no interest: a cut value reads as far as it goes.
        if (bytes)
            record.deserialize(bytes.get(), static_cast<int>(length));
    } catch (CRegistryKey::Exception&) {
    }
}

void SettingsRecord::save(const ZETSerializeClass& record) const
{
    const int length = record.getSerLength();
    const MallocedPtr<BYTE> bytes(static_cast<BYTE*>(std::malloc(static_cast<std::size_t>(length))));
    if (!bytes)
        return;
    record.serialize(bytes.get());
    try {
        const CRegistryKey base = m_openBase();
        CRegistryKey settings = openSettingsKey(base);
        settings.SetValue(m_valueName, bytes.get(), static_cast<DWORD>(length));
    } catch (CRegistryKey::Exception&) {
    }
}

}  // namespace zet
