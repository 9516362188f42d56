// LMDB's one write transaction of a store, aborted unless committed.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_WRITETRANSACTION_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_WRITETRANSACTION_H

#include <lmdb.h>

#include "zetsettings/platform/posix/registry/WriterLock.h"

namespace zet {
namespace portable {
namespace registry {

class Store;

class WriteTransaction {
public:
    // Waits for the store's writer lock, shared by all processes. Throws StoreFailure.
    explicit WriteTransaction(Store& store);
    ~WriteTransaction();

    WriteTransaction(const WriteTransaction&) = delete;
    WriteTransaction& operator=(const WriteTransaction&) = delete;

    MDB_txn* txn() const { return m_txn; }
    MDB_dbi dbi() const;
    // LMDB's result; the transaction is over either way.
    int commit();
    // Ends the transaction, if one is running, and begins another, keeping the writer lock in
    // between so that the new one starts from the same state. With grow, the map is made larger
    // first (which LMDB allows only with no transaction of this process running). For a batch.
    void restart(bool grow);

private:
    void begin();
    void end();

    // Holds the store's writer lock from before the transaction begins until after it ended.
    class Turn {
    public:
        explicit Turn(WriterLock& lock) : m_lock(lock) { m_lock.lock(); }
        ~Turn() { m_lock.unlock(); }
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

    private:
        WriterLock& m_lock;
    };

    Store& m_store;
    Turn m_turn;
    MDB_txn* m_txn = nullptr;
    bool m_holdsMap = false;
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
