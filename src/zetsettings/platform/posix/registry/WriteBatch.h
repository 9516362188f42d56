// A write batch: the registry writes of one operation of a thread as one LMDB write transaction,
// committed once, when the operation's outermost batch ends.
//
// A batch takes nothing when it begins. Its transaction begins at the first write of the thread
// inside it (so an operation that only reads never waits for the writer lock) and holds the
// store's writer lock until the batch ends; the batch's writes go to the store of that first
// write, and writes to any other store go on alone. From then on the thread's reads of that
// store are made in the transaction and see its writes; other threads and processes see none
// of them until the commit, and all of them after it. A process killed before the commit
// leaves none of them.
//
// Each write still succeeds or fails on its own: one that fails leaves nothing behind, and the
// writes before it stay. To undo what a failing call did half-way, and to grow the map when it
// is full (which LMDB allows only with no transaction running), the batch keeps a copy of every
// change it made (Mutation.h), ends its transaction, begins another on the same state (the
// writer lock is kept all along) and writes the copy into it. Should even that fail (no room
// for a larger map, a damaged store), the batch is lost: its writes are dropped, and every
// later write of it fails with the same error.
//
// Deadlock: the writer lock is held from the first write to the end of the batch, so a thread
// that holds it must never wait, inside the batch, for a lock that another thread or process
// may hold while it waits for the writer lock. The library opens its batches inside an
// operation that already holds its mutex, and no operation holds both mutexes.
//
// Reads in the batch: what the thread remembers between calls (PathCache, ValueMemo, the
// enumeration positions) is marked with the committed state it was read in. Inside a batch,
// lastCommitted() and the snapshot id of a read give the batch's view instead: a number of its
// own (top bit set, so never a committed id) that changes with every write, so nothing
// remembered outside the batch, or before its last write, is taken for what it holds now.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_WRITEBATCH_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_WRITEBATCH_H

#include <lmdb.h>

#include <cstdint>
#include <functional>

#include "zetsettings/platform/posix/Win32Portable.h"

namespace zet {
namespace portable {
namespace registry {

class Store;
class WriteTransaction;

class WriteBatch {
public:
    // Nest: only the outermost end commits (keep) or drops (discard) the writes.
    static void begin();
    // ERROR_SUCCESS, or why the writes could not be committed (they are then lost). Dropping
    // them gives ERROR_SUCCESS in the outermost batch; a nested one can't drop what the outer
    // one holds, and gives ERROR_NOT_SUPPORTED.
    static LONG end(bool keep);

    // For the store: whether this thread's writes to it go to a batch.
    static bool takes(const Store& store);
    // Runs body in the batch's transaction, begun now if this is its first write.
    static LONG write(Store& store, const std::function<LONG(WriteTransaction&)>& body);
    // The batch's transaction when it writes to this store, and its view; null otherwise.
    static MDB_txn* transactionFor(const Store& store, uint64_t& view);
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
