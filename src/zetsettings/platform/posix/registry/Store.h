// One LMDB environment: the store of one directory, as this process sees it.
//
// Files: data.mdb and lock.mdb in the store directory, with the store's owner, group and data
// mode (StoreFiles.h) whatever the umask and whoever makes them.
//
// Rights: a process that may open lock.mdb for writing gets a writable store. One that may not
// (LMDB needs a writable lock file even to register a reader) falls back to a read-only,
// lock-less environment (MDB_RDONLY | MDB_NOLOCK): its readers are invisible to writers, so
// every snapshot is checked after use and taken again if a writer may have reused its pages
// (more than one commit since it began). Such a process is refused every write; nothing in the
// store is ever made world-writable to let it in.
//
// Durability: MDB_NOMETASYNC and nothing weaker: a commit syncs the data once, and the meta
// page it wrote is synced by the next commit. A process killed at any instant leaves every
// transaction committed or not; a machine crash may lose the last commit, never the store.
//
// Map: starts at ZET_REGISTRY_INITIAL_MAP bytes if set (a knob for tests of the growth; read
// when the store is opened), else 16 MiB; doubled on MDB_MAP_FULL with no transaction of this
// process active, and adopted on MDB_MAP_RESIZED when another process grew it.
//
// Writers: one at a time across processes and threads, by a flock in front of LMDB's own
// writer mutex (WriterLock.h), so that a killed process can't leave another asleep on it.
//
// Threads: MDB_NOTLS; any thread may run transactions at any time. After fork() the child must
// not use this object: it opens its own store, and this one is left untouched (never closed)
// in the child, since closing it there would drop the parent's locks.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_STORE_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_STORE_H

#include <lmdb.h>
#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "zetsettings/platform/posix/Win32Portable.h"
#include "zetsettings/platform/posix/registry/MapLock.h"
#include "zetsettings/platform/posix/registry/ReadTransaction.h"
#include "zetsettings/platform/posix/registry/StoreFailure.h"
#include "zetsettings/platform/posix/registry/ThisProcess.h"
#include "zetsettings/platform/posix/registry/WriteBatch.h"
#include "zetsettings/platform/posix/registry/WriteTransaction.h"
#include "zetsettings/platform/posix/registry/WriterLock.h"

namespace zet {
namespace portable {
namespace registry {

class Store : public std::enable_shared_from_this<Store> {
public:
    // Opens the store in an existing directory. Throws StoreFailure: ERROR_NOT_SUPPORTED on a
    // network file system, ERROR_BADDB for files that are not a store.
    static std::unique_ptr<Store> open(const std::string& directory);
    ~Store();

    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    const std::string& directory() const { return m_directory; }
    bool writable() const { return m_writable; }
    bool belongsToThisProcess() const { return m_owner == ThisProcess::id(); }
    // True once a failed remap has left LMDB without its map: the environment is closed, every
    // transaction is refused, and the catalog opens the store afresh.
    bool closed() const { return m_closed; }
    // Tells this object from every other Store of the process, including later ones at the
    // same address.
    uint64_t serial() const { return m_serial; }
    // The id of the last transaction committed to the store by any process: what a snapshot
    // taken now would have. Inside this thread's batch, the view of the batch as it stands.
    // Throws StoreFailure when the store is closed.
    uint64_t lastCommitted();

    // Runs body(ReadTransaction&) on a snapshot and returns its result; inside this thread's
    // batch, on the batch's transaction, which holds the batch's writes.
    template <class Body>
    auto read(Body&& body) -> decltype(body(std::declval<ReadTransaction&>()));
    // Runs body(WriteTransaction&) in one write transaction, committed before return if the
    // body returns ERROR_SUCCESS, and run again from the start if the map had to grow. Inside
    // this thread's batch the body runs in the batch's transaction instead (WriteBatch.h).
    template <class Body>
    LONG write(Body&& body);
    // As write, always in a transaction of its own.
    template <class Body>
    LONG writeAlone(Body&& body);

    // For tests and benchmarks.
    MDB_env* environment() const { return m_env; }
    MDB_dbi database() const { return m_dbi; }
    size_t mapSize() const;
    bool lockless() const { return !m_writable; }

private:
    friend class ReadTransaction;
    friend class WriteTransaction;
    friend class WriteBatch;

    explicit Store(const std::string& directory);
    int openEnvironment(unsigned int flags);
    void checkFileHoldsData() const;
    void openDatabase();

    int startReader(MDB_txn*& txn);
    void finishReader(MDB_txn* txn);
    void clearStaleReaders();
    void adoptMapSize();
    void growMap(size_t observedSize);
    void remap(size_t size);
    void closeAfterLostMap();
    void refuseIfClosed() const;
    void lockMapUnlessClosed();
    // A read-only process retries a snapshot that writers overtook; past this, it gives up.
    static const unsigned kSnapshotAttempts = 1000;

    std::string m_directory;
    const uint64_t m_serial;
    pid_t m_owner;
    bool m_writable = true;
    MDB_env* m_env = nullptr;
    MDB_dbi m_dbi = 0;
    MapLock m_mapLock;
    // One idle reader is kept aside, taken and given back without a lock: a process whose
    // calls come one at a time never needs more. Others wait in the list.
    std::atomic<MDB_txn*> m_spareReader{nullptr};
    std::mutex m_idleReadersMutex;
    std::vector<MDB_txn*> m_idleReaders;
    std::unique_ptr<WriterLock> m_writerLock;
    std::atomic<bool> m_closed{false};
};

template <class Body>
auto Store::read(Body&& body) -> decltype(body(std::declval<ReadTransaction&>()))
{
    uint64_t view = 0;
    if (MDB_txn* batch = WriteBatch::transactionFor(*this, view)) {
        ReadTransaction inBatch(*this, batch, view);
        return body(inBatch);
    }
    for (unsigned attempt = 1;; ++attempt) {
        ReadTransaction snapshot(*this);
        try {
            auto result = body(snapshot);
            if (snapshot.stillValid())
                return result;
        } catch (const StoreFailure&) {
            // What looks damaged may only be a page that a writer reused under us.
            if (snapshot.stillValid())
                throw;
        }
        if (attempt == kSnapshotAttempts)
            throw StoreFailure(ERROR_CANTREAD);
    }
}

template <class Body>
LONG Store::write(Body&& body)
{
    if (!m_writable)
        return ERROR_ACCESS_DENIED;
    if (WriteBatch::takes(*this))
        return WriteBatch::write(*this, [&](WriteTransaction& transaction) -> LONG { return body(transaction); });
    return writeAlone(body);
}

template <class Body>
LONG Store::writeAlone(Body&& body)
{
    if (!m_writable)
        return ERROR_ACCESS_DENIED;
    for (;;) {
        size_t observedSize = 0;
        {
            WriteTransaction transaction(*this);
            try {
                const LONG result = body(transaction);
                if (result != ERROR_SUCCESS)
                    return result;
                const int rc = transaction.commit();
                if (rc != MDB_MAP_FULL) {
                    checkLmdb(rc);
                    return ERROR_SUCCESS;
                }
            } catch (const StoreFailure& failure) {
                if (failure.cause() != MDB_MAP_FULL)
                    throw;
            }
            observedSize = mapSize();
        }
        growMap(observedSize);
    }
}

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
