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
// Paths are compared by their folded text, so differently cased spellings of a path share an
// entry; spellings that differ only in their separators just miss. Per thread: no lock, and a
// fork's child can't meet its parent's stores (each Store has a serial of its own).
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_PATHCACHE_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_PATHCACHE_H

#include <cstdint>
#include <string_view>

namespace zet {
namespace portable {
namespace registry {

class Store;

class PathCache {
public:
    // The id that `foldedPath` below `parent` led to, if this thread walked it in the state
    // that `store` is in now. Throws StoreFailure when the store is closed.
    static bool find(Store& store, uint64_t parent, std::u16string_view foldedPath, uint64_t& id);
    // What a walk found in the snapshot `snapshotId`.
    static void remember(const Store& store, uint64_t parent, std::u16string_view foldedPath, uint64_t id,
                         uint64_t snapshotId);
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
