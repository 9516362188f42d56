#include "zetsettings/platform/RegistryData.h"

#include <cstring>

#ifndef _WIN32
#include "zetsettings/platform/posix/registry/ValueOutput.h"
#include "zetsettings/platform/posix/registry/WideText.h"
#endif

namespace zet {
namespace platform {

#ifdef _WIN32

// Windows hands out the stored bytes of every type.
std::wstring wideTextOfRegistryData(DWORD, const BYTE* data, DWORD size)
{
    std::wstring text(size / sizeof(WCHAR), L'\0');
    if (!text.empty())
        std::memcpy(&text[0], data, text.size() * sizeof(WCHAR));
    return text;
}

#else

std::wstring wideTextOfRegistryData(DWORD type, const BYTE* data, DWORD size)
{
    using zet::portable::registry::ValueOutput;
    using zet::portable::registry::WideText;
    if (ValueOutput::isText(type)) {
        // Converted to WCHAR units on the way out already.
        std::wstring text(size / sizeof(WCHAR), L'\0');
        if (!text.empty())
            std::memcpy(&text[0], data, text.size() * sizeof(WCHAR));
        return text;
    }
    std::wstring text(WideText::storedToCallerBytes(data, size) / sizeof(WCHAR), L'\0');
    if (!text.empty())
        WideText::storedToCaller(data, size, reinterpret_cast<BYTE*>(&text[0]));
    return text;
}

#endif

}  // namespace platform
}  // namespace zet
