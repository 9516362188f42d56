// The value that this thread read last, kept while the store stays in the state it was read in.
//
// Callers read a value right after enumerating it (an iteration over a key's values, then a
// query by name), and read the same few values again and again (a setting polled, a size asked
// for before the data). Each such read would otherwise take a snapshot and search the tree for
// a record that was in hand a moment ago. The memo keeps a copy of that record with the id of
// the committed state it came from; it answers only while no commit has happened since, of
// this process or another, so it gives exactly what a fresh snapshot would.
//
// Only small records are kept: copying a large one on every read would cost more than the
// search it spares. Per thread: no lock; each Store has a serial of its own, so stores never
// mix, also across fork.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_VALUEMEMO_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_VALUEMEMO_H

#include <lmdb.h>

#include <cstdint>

#include "zetsettings/platform/posix/Win32Portable.h"
#include "zetsettings/platform/posix/registry/Records.h"

namespace zet {
namespace portable {
namespace registry {

class Store;

class ValueMemo {
public:
    // The value `name` (as the caller spells it, in any case) of key `key`, if this thread read
    // it in the state that `store` is in now; valid until this thread's next call here. The
    // name is compared with the one the record carries, as the registry compares names, so a
    // hit costs no folded copy of it. Throws StoreFailure when the store is closed.
    static bool find(Store& store, uint64_t key, const WCHAR* name, ValueRecordView& value);
    // A value record as read in the snapshot `snapshotId`.
    static void remember(const Store& store, uint64_t key, const MDB_val& record, uint64_t snapshotId);
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
