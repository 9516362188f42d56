// From an HKEY to the key a call works on, and the rights it carries.
//
// Predefined roots are found in the store that ZET_REGISTRY_DIR names at the time of the call,
// with every right; other handles in the store they were opened in (after fork(), the child's
// own environment on the same directory).
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_KEYACCESS_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_KEYACCESS_H

#include <cstdint>
#include <memory>

#include "zetsettings/platform/posix/Win32Portable.h"
#include "zetsettings/platform/posix/registry/OpenKey.h"
#include "zetsettings/platform/posix/registry/Store.h"

namespace zet {
namespace portable {
namespace registry {

struct KeyReference {
    std::shared_ptr<Store> store;
    uint64_t id = 0;
    REGSAM access = 0;
    std::shared_ptr<OpenKey> open;  // null for a predefined root

    bool isRoot() const { return !open; }
    bool allows(REGSAM rights) const { return (access & rights) == rights; }
};

class KeyAccess {
public:
    // ERROR_INVALID_HANDLE for anything but a root or an open handle. Throws StoreFailure
    // when the store cannot be opened.
    static LONG resolve(HKEY handle, KeyReference& key);

    // The specific rights that a request stands for (generic rights mapped as for keys).
    static REGSAM normalize(REGSAM desired, bool storeWritable);
    // Whether the rights would let a handle change anything.
    static bool asksToWrite(REGSAM rights);
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
