// The registry's keys and values as records of one LMDB transaction. A key is its id: its
// entry in the parent ('K'), its info ('I', whose absence means the key was deleted) and its
// values ('V') all hang on it. Results that the caller sees are Windows error codes; store
// failures throw StoreFailure.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_REGISTRYTREE_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_REGISTRYTREE_H

#include <lmdb.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "zetsettings/platform/posix/Win32Portable.h"
#include "zetsettings/platform/posix/registry/KeyPath.h"
#include "zetsettings/platform/posix/registry/Records.h"
#include "zetsettings/platform/posix/registry/RecordKeys.h"

namespace zet {
namespace portable {
namespace registry {

class RegistryTree {
public:
    RegistryTree(MDB_txn* txn, MDB_dbi dbi) : m_txn(txn), m_dbi(dbi) {}

    bool keyExists(uint64_t id) const;
    bool keyInfo(uint64_t id, KeyInfo& info) const;
    // ERROR_KEY_DELETED when the base is gone, ERROR_FILE_NOT_FOUND when the path is not there.
    LONG openPath(uint64_t base, const KeyPath& path, uint64_t& id) const;
    // Creates what is missing of the path below an existing base.
    LONG createPath(uint64_t base, const KeyPath& path, uint64_t& id, bool& created);
    bool hasSubkeys(uint64_t id) const;
    // A key without subkeys, with its values.
    void deleteKey(uint64_t id);
    // Everything below the key, and the key itself unless keepKey.
    void deleteTree(uint64_t id, bool keepKey);

    // The stored record of the value; parse it with ValueRecordView.
    bool findValueRecord(uint64_t key, std::u16string_view folded, MDB_val& record) const;
    // The key must exist.
    void setValue(uint64_t key, const RegistryName& name, uint32_t type, const std::string& data);
    bool deleteValue(uint64_t key, std::u16string_view folded);
    // Marks the key as written now.
    void touch(uint64_t id);

private:
    uint64_t findSubkey(uint64_t parent, std::u16string_view folded) const;
    uint64_t createSubkey(uint64_t parent, const NameView& name);
    std::vector<uint64_t> subkeysOf(uint64_t id) const;
    void eraseAll(const std::string& prefix);
    void putKeyInfo(uint64_t id, const KeyInfo& info);

    MDB_txn* m_txn;
    MDB_dbi m_dbi;
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
