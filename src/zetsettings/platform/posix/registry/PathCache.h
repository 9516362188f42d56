// Where a subkey path led, remembered per thread so that opening the same key again costs no
// walk down the tree.
//
// The library opens the same few keys on every call (its base key, then one subkey below it),
// and each step of a walk is one LMDB lookup. An entry holds the key id that a path below a
// parent key led to in one committed state of the store, and counts only while the store is
// still in that state: any commit, of this process or another, makes every entry stale. So a
// hit gives exactly what a walk in a fresh snapshot would give, and nothing is ever
// invalidated by hand.
//
// Paths are compared as the caller spelled them, before they are parsed: a hit spares the parse
// too, and the same text always parses the same way. Another spelling of the same key just
// misses. Per thread: no lock, and a fork's child can't meet its parent's stores (each Store
// has a serial of its own).
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_PATHCACHE_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_PATHCACHE_H

#include <cstdint>

#include "zetsettings/platform/posix/Win32Portable.h"

namespace zet {
namespace portable {
namespace registry {

class Store;

class PathCache {
public:
    struct Found {
        uint64_t id = 0;
        bool emptyPath = false;  // the text named no subkey: the key is the parent itself
    };

    // Where the subkey path `text` (null for none) below `parent` led, if this thread walked
    // it in the state that `store` is in now. Throws StoreFailure when the store is closed.
    static bool find(Store& store, uint64_t parent, const WCHAR* text, Found& found);
    // What a walk found in the snapshot `snapshotId`.
    static void remember(const Store& store, uint64_t parent, const WCHAR* text, const Found& found,
                         uint64_t snapshotId);
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
