#include "zetsettings/platform/posix/registry/Mutation.h"

#include "zetsettings/platform/posix/registry/StoreFailure.h"

namespace zet {
namespace portable {
namespace registry {
namespace {

thread_local MutationRecorder* t_recorder = nullptr;

std::string bytesOf(const MDB_val& value)
{
    return std::string(static_cast<const char*>(value.mv_data), value.mv_size);
}

}  // namespace

MutationRecorder::MutationRecorder(MDB_txn* txn, std::vector<Mutation>& changes)
    : m_outer(t_recorder), m_txn(txn), m_changes(changes)
{
    t_recorder = this;
}

MutationRecorder::~MutationRecorder()
{
    t_recorder = m_outer;
}

// Noted before LMDB sees the change: a key found by a cursor points into a page that a deletion
// may change. A change that then fails fails its whole call, and the call's notes go with it.
void MutationRecorder::note(MDB_txn* txn, const MDB_val& key, const MDB_val* data)
{
    MutationRecorder* recorder = t_recorder;
    if (!recorder || recorder->m_txn != txn)
        return;
    if (data)
        recorder->m_changes.emplace_back(bytesOf(key), bytesOf(*data));
    else
        recorder->m_changes.emplace_back(bytesOf(key), std::nullopt);
}

void putRecord(MDB_txn* txn, MDB_dbi dbi, const MDB_val& key, const MDB_val& data)
{
    MutationRecorder::note(txn, key, &data);
    MDB_val lmdbKey = key;
    MDB_val lmdbData = data;
    checkLmdb(mdb_put(txn, dbi, &lmdbKey, &lmdbData, 0));
}

void deleteRecord(MDB_txn* txn, MDB_dbi dbi, const MDB_val& key)
{
    MutationRecorder::note(txn, key, nullptr);
    MDB_val lmdbKey = key;
    checkLmdb(mdb_del(txn, dbi, &lmdbKey, nullptr));
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
