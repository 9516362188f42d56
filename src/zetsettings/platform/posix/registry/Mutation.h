// Every change that the registry makes to the store goes through these two calls, so that a
// write batch can keep a copy of what it changed (WriteBatch.h): a batch that has to give up its
// LMDB transaction (to grow the map, or to drop the half-done work of a failed call) writes the
// changes it kept again into a fresh one.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_MUTATION_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_MUTATION_H

#include <lmdb.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zet {
namespace portable {
namespace registry {

// Throw StoreFailure as checkLmdb does. Deleting a record that is not there is a failure.
void putRecord(MDB_txn* txn, MDB_dbi dbi, const MDB_val& key, const MDB_val& data);
void deleteRecord(MDB_txn* txn, MDB_dbi dbi, const MDB_val& key);

// One change: the record's new data, or nothing for a deletion.
typedef std::pair<std::string, std::optional<std::string> > Mutation;

// While one lives, the changes that this thread makes through `txn` are appended to `changes`.
class MutationRecorder {
public:
    MutationRecorder(MDB_txn* txn, std::vector<Mutation>& changes);
    ~MutationRecorder();

    MutationRecorder(const MutationRecorder&) = delete;
    MutationRecorder& operator=(const MutationRecorder&) = delete;

private:
    MutationRecorder* m_outer;
    MDB_txn* m_txn;
    std::vector<Mutation>& m_changes;

    friend void putRecord(MDB_txn*, MDB_dbi, const MDB_val&, const MDB_val&);
    friend void deleteRecord(MDB_txn*, MDB_dbi, const MDB_val&);
    static void note(MDB_txn* txn, const MDB_val& key, const MDB_val* data);
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
