// Fuzz input for a registry value: the first byte is the value's type, the rest its data as
// the registry holds it. Text types hold UTF-16 code units, low byte first, so an input means
// the same stored value where wchar_t is 16 bits and where it is 32: there the units are
// handed to the registry functions as wide characters, pairs joined, lone surrogates as
// they are.
#ifndef ZETSETTINGS_STORE_FUZZ_REGISTRYVALUEINPUT_H
#define ZETSETTINGS_STORE_FUZZ_REGISTRYVALUEINPUT_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "zetsettings/platform/Win32.h"
#include "zetsettings/serial/ZETUtf16.h"

namespace zetfuzz {

struct RegistryValueInput {
    DWORD type = REG_NONE;
    std::vector<BYTE> callerBytes;  // as RegSetValueExW takes them
    std::wstring text;              // the text up to its first NUL, for text types
};

inline bool isTextType(DWORD type)
{
    return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

inline RegistryValueInput registryValueOf(const uint8_t* data, std::size_t size)
{
    RegistryValueInput value;
    if (size == 0)
        return value;
    value.type = data[0];
    const uint8_t* bytes = data + 1;
    const std::size_t length = size - 1;
    if (!isTextType(value.type) || sizeof(wchar_t) == 2) {
        value.callerBytes.assign(bytes, bytes + length);
        if (!isTextType(value.type))
            return value;
    }
    ZETUtf16::decode(bytes, length / 2, value.text);
    if (sizeof(wchar_t) != 2) {
        value.callerBytes.resize(value.text.size() * sizeof(wchar_t));
        if (!value.text.empty())
            std::memcpy(value.callerBytes.data(), value.text.data(), value.callerBytes.size());
    }
    const std::size_t end = value.text.find(L'\0');
    if (end != std::wstring::npos)
        value.text.resize(end);
    return value;
}

}  // namespace zetfuzz

#endif
