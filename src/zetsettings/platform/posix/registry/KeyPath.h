// A subkey path as the registry functions take it: names separated by backslashes, relative to
// an open key. Null or empty names the key itself; a trailing backslash, or several in a row,
// add nothing; a leading one is refused (ERROR_BAD_PATHNAME), as is a name longer than 255
// units (ERROR_INVALID_PARAMETER).
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_KEYPATH_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_KEYPATH_H

#include <vector>

#include "zetsettings/platform/posix/Win32Portable.h"
#include "zetsettings/platform/posix/registry/RegistryName.h"

namespace zet {
namespace portable {
namespace registry {

class KeyPath {
public:
    // allowLeadingSeparator: HKEY_CLASSES_ROOT takes one leading backslash, as Windows lets it.
    static LONG parse(const WCHAR* text, bool allowLeadingSeparator, KeyPath& path);

    const std::vector<RegistryName>& components() const { return m_components; }
    bool empty() const { return m_components.empty(); }

private:
    std::vector<RegistryName> m_components;
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
