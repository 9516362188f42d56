#include "zetsettings/platform/posix/registry/ValueOutput.h"

#include <cstring>

#include "zetsettings/platform/posix/registry/WideText.h"

namespace zet {
namespace portable {
namespace registry {
namespace {

// Windows adds a terminator to text that was stored without one, when the buffer has room.
void terminateText(LPBYTE data, size_t size, DWORD capacity)
{
    if (size < sizeof(WCHAR) || size + sizeof(WCHAR) > capacity)
        return;
    WCHAR last;
    std::memcpy(&last, data + size - sizeof(WCHAR), sizeof(WCHAR));
    if (last != 0) {
        const WCHAR terminator = 0;
        std::memcpy(data + size, &terminator, sizeof(WCHAR));
    }
}

}  // namespace

bool ValueOutput::isText(DWORD type)
{
    return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

std::string ValueOutput::toStored(DWORD type, const BYTE* data, DWORD size)
{
    if (size == 0)
        return std::string();
    if (isText(type))
        return WideText::callerBytesToStored(data, size);
    return std::string(reinterpret_cast<const char*>(data), size);
}

size_t ValueOutput::callerSize(const ValueRecordView& value)
{
    return isText(value.type) ? WideText::storedToCallerBytes(value.data, value.size) : value.size;
}

LONG ValueOutput::deliver(const ValueRecordView& value, LPDWORD type, LPBYTE data, LPDWORD size)
{
    const size_t needed = callerSize(value);
    if (type)
        *type = value.type;
    if (data) {
        if (needed > *size) {
            *size = static_cast<DWORD>(needed);
            return ERROR_MORE_DATA;
        }
        if (isText(value.type)) {
            WideText::storedToCaller(value.data, value.size, data);
            terminateText(data, needed, *size);
        } else if (needed) {
            std::memcpy(data, value.data, needed);
        }
    }
    if (size)
        *size = static_cast<DWORD>(needed);
    return ERROR_SUCCESS;
}

// Names are read from the stored bytes in place: enumeration hands out one per call.
size_t ValueOutput::nameUnits(const NamedRecordView& record)
{
    return WideText::storedToCallerBytes(record.nameBytes, 2 * record.nameUnits) / sizeof(WCHAR);
}

LONG ValueOutput::deliverName(const NamedRecordView& record, LPWSTR name, LPDWORD units)
{
    const size_t length = nameUnits(record);
    if (length >= *units)
        return ERROR_MORE_DATA;
    WideText::storedToCaller(record.nameBytes, 2 * record.nameUnits, reinterpret_cast<BYTE*>(name));
    name[length] = 0;
    *units = static_cast<DWORD>(length);
    return ERROR_SUCCESS;
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
