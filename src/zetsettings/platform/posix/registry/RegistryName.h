// A key or value name in both of its forms: as the caller wrote it, which the store keeps and
// enumeration gives back, and folded, by which it is found.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_REGISTRYNAME_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_REGISTRYNAME_H

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "zetsettings/platform/posix/Win32Portable.h"

namespace zet {
namespace portable {
namespace registry {

// Both forms of a name held elsewhere (a parsed path, a RegistryName).
struct NameView {
    std::u16string_view original;
    std::u16string_view folded;
};

struct RegistryName {
    // Windows' limits, in UTF-16 units.
    static const size_t kMaxKeyNameUnits = 255;
    static const size_t kMaxValueNameUnits = 16383;

    std::u16string original;
    std::u16string folded;

    static RegistryName of(std::u16string original);
    // A value name; null is the key's default value, as the empty name is.
    static RegistryName ofValue(const WCHAR* name);
};

// The folded form alone of a value name, which is all that finding a value takes. Every query
// makes one, so a name of ordinary length is held in the object itself; a long one spills to
// the heap.
class FoldedValueName {
public:
    explicit FoldedValueName(const WCHAR* name);
    FoldedValueName(const FoldedValueName&) = delete;
    FoldedValueName& operator=(const FoldedValueName&) = delete;

    std::u16string_view view() const { return m_folded; }

private:
    static const size_t kInlineUnits = 256;

    char16_t m_inline[kInlineUnits];
    std::unique_ptr<char16_t[]> m_spilled;
    std::u16string_view m_folded;
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
