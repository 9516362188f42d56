#include "zetsettings/platform/posix/registry/WriteBatch.h"

#include <atomic>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "zetsettings/platform/posix/registry/Mutation.h"
#include "zetsettings/platform/posix/registry/Store.h"
#include "zetsettings/platform/posix/registry/ThisProcess.h"

namespace zet {
namespace portable {
namespace registry {
namespace {

const uint64_t kViewMark = uint64_t(1) << 63;
std::atomic<uint64_t> s_lastView{0};

uint64_t nextView()
{
    return kViewMark | ++s_lastView;
}

bool isMapFull(const StoreFailure& failure)
{
    return failure.cause() == MDB_MAP_FULL;
}

// The transaction of a thread's batch, from its first write to the batch's end.
class OpenBatch {
public:
    explicit OpenBatch(std::shared_ptr<Store> store)
        : m_store(std::move(store)), m_transaction(*m_store), m_base(mdb_txn_id(m_transaction.txn())), m_view(nextView())
    {
    }

    const Store& store() const { return *m_store; }
    MDB_txn* txn() const { return m_transaction.txn(); }
    // False once a rebuild failed: the transaction no longer holds the batch's writes.
    bool intact() const { return m_intact; }
    uint64_t view() const { return m_view; }

    LONG write(const std::function<LONG(WriteTransaction&)>& body)
    {
        m_view = nextView();
        for (;;) {
            std::vector<Mutation> made;
            try {
                LONG result;
                {
                    MutationRecorder recorder(m_transaction.txn(), made);
                    result = body(m_transaction);
                }
                if (result == ERROR_SUCCESS) {
                    keep(made);
                    return result;
                }
                if (!made.empty())
                    rebuild(false);  // a call that fails leaves nothing behind
                return result;
            } catch (const StoreFailure& failure) {
                rebuild(isMapFull(failure));
                if (!isMapFull(failure))
                    throw;
            } catch (...) {
                rebuild(false);
                throw;
            }
        }
    }

    int commit()
    {
        for (;;) {
            const int rc = m_transaction.commit();
            if (rc != MDB_MAP_FULL)
                return rc;
            rebuild(true);
        }
    }

private:
    // Only the last change of each record counts: changes of different records don't depend
    // on each other's order.
    void keep(std::vector<Mutation>& made)
    {
        for (Mutation& change : made)
            m_changes[std::move(change.first)] = std::move(change.second);
    }

    // A new transaction on the state the batch began on, holding the changes kept so far.
    void rebuild(bool grow)
    {
        m_intact = false;
        for (;;) {
            m_transaction.restart(grow);
            if (mdb_txn_id(m_transaction.txn()) != m_base)
                throw StoreFailure(ERROR_REGISTRY_CORRUPT);  // someone wrote without the writer lock
            try {
                replay();
                m_intact = true;
                return;
            } catch (const StoreFailure& failure) {
                if (!isMapFull(failure))
                    throw;
                grow = true;
            }
        }
    }

    void replay()
    {
        MDB_txn* txn = m_transaction.txn();
        const MDB_dbi dbi = m_transaction.dbi();
        for (const auto& change : m_changes) {
            MDB_val key = {change.first.size(), const_cast<char*>(change.first.data())};
            if (change.second) {
                MDB_val data = {change.second->size(), const_cast<char*>(change.second->data())};
                checkLmdb(mdb_put(txn, dbi, &key, &data, 0));
                continue;
            }
            const int rc = mdb_del(txn, dbi, &key, nullptr);
            if (rc != MDB_NOTFOUND)  // made and removed again within the batch
                checkLmdb(rc);
        }
    }

    std::shared_ptr<Store> m_store;
    WriteTransaction m_transaction;
    const uint64_t m_base;
    uint64_t m_view;
    bool m_intact = true;
    std::map<std::string, std::optional<std::string> > m_changes;
};

struct ThreadBatch {
    unsigned depth = 0;
    pid_t process = 0;
    std::unique_ptr<OpenBatch> open;
    LONG lost = ERROR_SUCCESS;  // why the batch's writes were lost, if they were

    // A child of fork() inherits the state of the thread that forked, but not its
    // transaction: it forgets the batch without touching what belongs to its parent.
    void forgetParents()
    {
        if (depth == 0 || process == ThisProcess::id())
            return;
        open.release();
        depth = 0;
        lost = ERROR_SUCCESS;
    }
    // Drops the transaction and every write in it.
    void drop(LONG why)
    {
        open.reset();
        lost = why;
    }
};

thread_local ThreadBatch t_batch;

ThreadBatch& threadBatch()
{
    t_batch.forgetParents();
    return t_batch;
}

OpenBatch* openOn(const Store& store)
{
    ThreadBatch& batch = threadBatch();
    if (batch.open && &batch.open->store() == &store)
        return batch.open.get();
    return nullptr;
}

}  // namespace

void WriteBatch::begin()
{
    ThreadBatch& batch = threadBatch();
    if (batch.depth++ == 0) {
        batch.process = ThisProcess::id();
        batch.lost = ERROR_SUCCESS;
    }
}

LONG WriteBatch::end(bool keep)
{
    ThreadBatch& batch = threadBatch();
    if (batch.depth == 0)
        return ERROR_INVALID_PARAMETER;
    if (--batch.depth > 0)
        return keep ? ERROR_SUCCESS : ERROR_NOT_SUPPORTED;
    const LONG lost = batch.lost;
    batch.lost = ERROR_SUCCESS;
    std::unique_ptr<OpenBatch> open = std::move(batch.open);
    if (!keep)
        return ERROR_SUCCESS;  // the transaction goes with `open`, unwritten
    if (!open)
        return lost;
    const int rc = open->commit();
    return rc == MDB_SUCCESS ? ERROR_SUCCESS : win32ErrorOfLmdb(rc);
}

bool WriteBatch::takes(const Store& store)
{
    const ThreadBatch& batch = threadBatch();
    if (batch.depth == 0)
        return false;
    if (batch.lost != ERROR_SUCCESS)
        return true;
    return !batch.open || &batch.open->store() == &store;
}

LONG WriteBatch::write(Store& store, const std::function<LONG(WriteTransaction&)>& body)
{
    ThreadBatch& batch = threadBatch();
    if (batch.lost != ERROR_SUCCESS)
        return batch.lost;
    // A transaction that can't be begun loses nothing: the call fails alone.
    if (!batch.open)
        batch.open.reset(new OpenBatch(store.shared_from_this()));
    try {
        return batch.open->write(body);
    } catch (const StoreFailure& failure) {
        if (!batch.open->intact())
            batch.drop(failure.win32Error());
        throw;
    } catch (...) {
        if (!batch.open->intact())
            batch.drop(ERROR_REGISTRY_IO_FAILED);
        throw;
    }
}

MDB_txn* WriteBatch::transactionFor(const Store& store, uint64_t& view)
{
    OpenBatch* open = openOn(store);
    if (!open || !open->intact())
        return nullptr;
    view = open->view();
    return open->txn();
}

}  // namespace registry
}  // namespace portable
}  // namespace zet

using zet::portable::registry::WriteBatch;

extern "C" {

void ZetRegBeginBatch(void)
{
    WriteBatch::begin();
}

LSTATUS ZetRegEndBatch(BOOL keep)
{
    try {
        return WriteBatch::end(keep != FALSE);
    } catch (const zet::portable::registry::StoreFailure& failure) {
        return failure.win32Error();
    } catch (const std::bad_alloc&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    } catch (...) {
        return ERROR_REGISTRY_IO_FAILED;
    }
}

}  // extern "C"
