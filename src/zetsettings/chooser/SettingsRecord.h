// One record kept in the clear as a binary value of the key Settings below the base key: the
// chooser's preferred list and the alert states. Both loads and saves run under the caller's
// lock and drop every registry failure, so the caller sees a record as far as it could be
// read, and a save that did not happen goes unnoticed.
#ifndef ZETSETTINGS_CHOOSER_SETTINGSRECORD_H
#define ZETSETTINGS_CHOOSER_SETTINGSRECORD_H

#include "zetsettings/components/CRegistryKey.h"
#include "zetsettings/components/ZETSerializeClass.h"

namespace zet {

// The key Settings below base, created if absent.
JetByteTools::CRegistryKey openSettingsKey(const JetByteTools::CRegistryKey& base);

class SettingsRecord {
public:
    typedef JetByteTools::CRegistryKey (*BaseOpener)();

    SettingsRecord(BaseOpener openBase, const wchar_t* valueName);

    // Reads the stored bytes into record. Nothing stored, or a key that can't be opened,
    // leaves record as it was; bytes cut short leave it as far as they went.
    void load(ZETSerializeClass& record) const;
    // Replaces the stored value with record's serial form, in one registry write.
    void save(const ZETSerializeClass& record) const;

private:
    BaseOpener m_openBase;
    const wchar_t* m_valueName;
};

}  // namespace zet

#endif
