// A read snapshot of a store that always ends, whatever way its scope is left.
//
// Reader handles are reset, not freed, and kept by the store for the next snapshot (LMDB's
// reset and renew), which spares the reader table's lock on every call.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_READTRANSACTION_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_READTRANSACTION_H

#include <lmdb.h>

#include <cstdint>

namespace zet {
namespace portable {
namespace registry {

class Store;

class ReadTransaction {
public:
    // Throws StoreFailure if no snapshot can be had.
    explicit ReadTransaction(Store& store);
    // The write transaction of this thread's batch, read as it stands: `view` names its state
    // (WriteBatch.h). Takes nothing and gives nothing back.
    ReadTransaction(Store& store, MDB_txn* batch, uint64_t view);
    ~ReadTransaction();

    ReadTransaction(const ReadTransaction&) = delete;
    ReadTransaction& operator=(const ReadTransaction&) = delete;

    MDB_txn* txn() const { return m_txn; }
    MDB_dbi dbi() const;
    // The id of the last transaction committed when the snapshot was taken, or the view of a
    // batch.
    uint64_t snapshotId() const { return m_snapshotId; }
    // Whether what was read can be trusted. Always so where readers are registered with LMDB;
    // a read-only process reads without that, and a snapshot is good only while no writer has
    // had the chance to reuse its pages (at most one commit after it).
    bool stillValid() const;

private:
    Store& m_store;
    MDB_txn* m_txn = nullptr;
    uint64_t m_snapshotId = 0;
    bool m_borrowed = false;
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
