// The load and save of a protected value: a binary value directly on the base key whose whole
// data is the encrypted serial form of one object, with no header of its own. The fallback
// keys, the user settings map and the login record are kept this way.
//
// Neither function takes a lock: the store operation that calls them holds sm_mutex.
#ifndef ZETSETTINGS_RECORDS_PROTECTEDVALUE_H
#define ZETSETTINGS_RECORDS_PROTECTEDVALUE_H

#include "zetsettings/components/CRegistryKey.h"
#include "zetsettings/components/ZETBuf.h"
#include "zetsettings/components/ZETSerializeInterface.h"

namespace zet {
namespace records {

// Opens the base key; ZETSettings hands in its own, private getLocalMachineBase.
typedef JetByteTools::CRegistryKey (*BaseKeyOpener)();

enum class ProtectedLoad {
    // Nothing to read: the value is absent or empty, or the registry refused the read.
    Absent,
    // Stored bytes that decrypt to nothing (tampered with, or made under another key).
    Undecryptable,
    // The object was read from the plain bytes, as far as they go.
    Loaded
};

// Fills plain with the decrypted bytes of the value (empty unless Loaded). Drops
// CRegistryKey::Exception: an absent value is the usual way for this to find nothing.
ProtectedLoad readProtectedBytes(const wchar_t* valueName, BaseKeyOpener openBase, ZETBuf& plain);

// Reads the object from the value. Only a load that decrypted at least one byte touches the
// object; a cut value fills it as far as it goes and leaves the rest at its defaults.
template <class Object>
ProtectedLoad loadProtectedValue(const wchar_t* valueName, Object& object, BaseKeyOpener openBase)
{
    ZETBuf plain;
    const ProtectedLoad result = readProtectedBytes(valueName, openBase, plain);
    if (result == ProtectedLoad::Loaded)
        object.deserialize(plain.getData(), static_cast<int>(plain.getSize()));
    return result;
}

// Replaces the value with the encrypted serial form of the object. Writes nothing when memory
// or the encryption fails. CRegistryKey::Exception passes to the caller.
void saveProtectedValue(const wchar_t* valueName, const ZETSerializeInterface& object, BaseKeyOpener openBase);

}  // namespace records
}  // namespace zet

#endif
