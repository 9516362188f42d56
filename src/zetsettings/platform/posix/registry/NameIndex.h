// Records filed by name under an owner (the subkeys of a key, the values of a key), found
// without regard to case however long the name, in one transaction.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_NAMEINDEX_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_NAMEINDEX_H

#include <lmdb.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "zetsettings/platform/posix/registry/RecordKeys.h"

namespace zet {
namespace portable {
namespace registry {

class NameIndex {
public:
    NameIndex(MDB_txn* txn, MDB_dbi dbi, RecordKeys::Tag tag, NameHasher hasher = &RecordKeys::defaultHash);

    struct Found {
        std::string key;
        MDB_val data;  // valid until the transaction writes again
    };

    // folded: the name as CaseFolding folds it.
    bool find(uint64_t owner, std::u16string_view folded, Found& found) const;
    // The record's data alone (valid until the transaction writes again), as reads need it.
    bool lookup(uint64_t owner, std::u16string_view folded, MDB_val& data) const;
    // Files a record under a name that has none yet.
    void insert(uint64_t owner, std::u16string_view folded, const std::string& data);
    // Puts new data in place of a record that find() gave.
    void replace(const Found& found, const std::string& data);
    bool erase(uint64_t owner, std::u16string_view folded);

private:
    bool getDirect(MDB_val& key, MDB_val& data) const;
    bool findHashed(const std::string& stem, std::u16string_view folded, Found& found) const;
    std::string freeHashedKey(const std::string& stem) const;

    MDB_txn* m_txn;
    MDB_dbi m_dbi;
    RecordKeys::Tag m_tag;
    NameHasher m_hasher;
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
