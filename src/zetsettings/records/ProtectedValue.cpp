#include "zetsettings/records/ProtectedValue.h"

#include <cstdlib>

#include "zetsettings/components/ZETProtectData.h"
#include "zetsettings/store/MallocedPtr.h"

using JetByteTools::CRegistryKey;

namespace zet {
namespace records {

ProtectedLoad readProtectedBytes(const wchar_t* valueName, BaseKeyOpener openBase, ZETBuf& plain)
{
    ZETProtectData protector;
    plain = ZETBuf();
    try {
        BYTE* data = 0;
        DWORD length = 0;
        openBase().QueryValue(valueName, &data, length);
        if (!data)
            return ProtectedLoad::Absent;
        const zet::MallocedPtr<BYTE> owned(data);
        if (length == 0)
            return ProtectedLoad::Absent;
        plain.assign(data, length);
        plain = protector.decryptData(plain, ZETBuf(""));
    } catch (CRegistryKey::Exception&) {
        plain = ZETBuf();
        return ProtectedLoad::Absent;
    }
    return plain.isEmpty() ? ProtectedLoad::Undecryptable : ProtectedLoad::Loaded;
}

void saveProtectedValue(const wchar_t* valueName, const ZETSerializeInterface& object, BaseKeyOpener openBase)
{
    ZETProtectData protector;
    ZETBuf buffer;
    const int length = object.getSerLength();
    {
        const zet::MallocedPtr<unsigned char> block(static_cast<unsigned char*>(std::malloc(length)));
        if (!block)
            return;
        object.serialize(block.get());
        buffer.assign(block.get(), length);
    }

    buffer = protector.encryptData(buffer, ZETBuf(""));
    // An empty result means the encryption failed: the stored value stays as it was.
    if (buffer.isEmpty())
        return;
    openBase().SetValue(valueName, buffer.getData(), static_cast<DWORD>(buffer.getSize()));
}

}  // namespace records
}  // namespace zet
