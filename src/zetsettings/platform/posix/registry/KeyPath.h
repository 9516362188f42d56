// A subkey path as the registry functions take it: names separated by backslashes, relative to
// an open key. Null or empty names the key itself; a trailing backslash, or several in a row,
// add nothing; a leading one is refused (ERROR_BAD_PATHNAME), as is a name longer than 255
// units (ERROR_INVALID_PARAMETER).
//
// Every registry call that names a subkey parses one, so a path of ordinary length is held in
// the object itself, with no allocation; only a long one spills to the heap.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_KEYPATH_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_KEYPATH_H

#include <cstddef>
#include <memory_resource>
#include <string>
#include <string_view>
#include <vector>

#include "zetsettings/platform/posix/Win32Portable.h"
#include "zetsettings/platform/posix/registry/RegistryName.h"

namespace zet {
namespace portable {
namespace registry {

class KeyPath {
public:
    KeyPath();
    KeyPath(const KeyPath&) = delete;
    KeyPath& operator=(const KeyPath&) = delete;

    // allowLeadingSeparator: HKEY_CLASSES_ROOT takes one leading backslash, as Windows lets it.
    static LONG parse(const WCHAR* text, bool allowLeadingSeparator, KeyPath& path);

    size_t size() const { return m_components.size(); }
    bool empty() const { return m_components.empty(); }
    // Valid while the path lives and is not parsed again.
    NameView component(size_t index) const;

private:
    struct Span {
        size_t start;
        size_t units;
    };

    // Room for the texts and spans of a path of a few hundred units.
    static const size_t kInlineBytes = 2048;
    static const size_t kUsualDepth = 8;

    char16_t* allocateUnits(size_t units);

    alignas(std::max_align_t) unsigned char m_inline[kInlineBytes];
    std::pmr::monotonic_buffer_resource m_memory;
    std::u16string_view m_original;
    std::u16string_view m_folded;
    std::pmr::vector<Span> m_components;
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
