// A key or value name in both of its forms: as the caller wrote it, which the store keeps and
// enumeration gives back, and folded, by which it is found.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_REGISTRYNAME_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_REGISTRYNAME_H

#include <cstddef>
#include <string>

#include "zetsettings/platform/posix/Win32Portable.h"

namespace zet {
namespace portable {
namespace registry {

struct RegistryName {
    // Windows' limits, in UTF-16 units.
    static const size_t kMaxKeyNameUnits = 255;
    static const size_t kMaxValueNameUnits = 16383;

    std::u16string original;
    std::u16string folded;

    static RegistryName of(std::u16string original);
    // A value name; null is the key's default value, as the empty name is.
    static RegistryName ofValue(const WCHAR* name);
    // Its folded form alone, which is all that finding a value takes.
    static std::u16string foldedValue(const WCHAR* name);
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
