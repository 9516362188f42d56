// Handing names and value data to the caller the way the registry functions do: sizes in the
// caller's units, ERROR_MORE_DATA with the size needed when a buffer is short, and a size
// query when no buffer is given.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_VALUEOUTPUT_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_VALUEOUTPUT_H

#include <cstddef>
#include <string>

#include "zetsettings/platform/posix/Win32Portable.h"
#include "zetsettings/platform/posix/registry/Records.h"

namespace zet {
namespace portable {
namespace registry {

class ValueOutput {
public:
    // REG_SZ, REG_EXPAND_SZ and REG_MULTI_SZ are held as UTF-16 and converted for the caller.
    static bool isText(DWORD type);

    // The data as the store holds it.
    static std::string toStored(DWORD type, const BYTE* data, DWORD size);
    // The data's size in the caller's bytes.
    static size_t callerSize(const ValueRecordView& value);
    // type, data and size may each be null; data needs size.
    static LONG deliver(const ValueRecordView& value, LPDWORD type, LPBYTE data, LPDWORD size);

    // The name and its terminator into a buffer of *units; on success *units is the name's
    // length. ERROR_MORE_DATA, *units untouched, when it does not fit.
    static LONG deliverName(const NamedRecordView& record, LPWSTR name, LPDWORD units);
    // The name's length in the caller's units.
    static size_t nameUnits(const NamedRecordView& record);
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
