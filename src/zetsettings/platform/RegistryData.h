// Registry data read as wide text.
//
// The registry keeps text as UTF-16 on every platform, and data of any type can hold such text.
// What RegQueryValueExW hands out differs: on Windows always the stored bytes; in the portable
// layer the data of REG_SZ, REG_EXPAND_SZ and REG_MULTI_SZ in WCHAR units, every other type as
// stored. This one conversion undoes that, so that code above the seam never assumes the width
// of wchar_t when it reads registry bytes as text.
#ifndef ZETSETTINGS_PLATFORM_REGISTRYDATA_H
#define ZETSETTINGS_PLATFORM_REGISTRYDATA_H

#include <string>

#include "zetsettings/platform/Win32.h"

namespace zet {
namespace platform {

// Every UTF-16 code unit of the data, NULs included: size / 2 units as stored, whatever the
// type (an odd last byte is no unit). type and data are as RegQueryValueExW gave them; where
// wchar_t is 32 bits a surrogate pair becomes one character and a lone surrogate stays itself.
std::wstring wideTextOfRegistryData(DWORD type, const BYTE* data, DWORD size);

}  // namespace platform
}  // namespace zet

#endif
