#include "zetsettings/platform/posix/registry/RegistryTree.h"

#include "zetsettings/platform/posix/registry/CaseFolding.h"
#include "zetsettings/platform/posix/registry/Cursor.h"
#include "zetsettings/platform/posix/registry/KeyClock.h"
#include "zetsettings/platform/posix/registry/Mutation.h"
#include "zetsettings/platform/posix/registry/NameIndex.h"
#include "zetsettings/platform/posix/registry/StoreFailure.h"
#include "zetsettings/platform/posix/registry/StoreSchema.h"

namespace zet {
namespace portable {
namespace registry {

bool RegistryTree::keyExists(uint64_t id) const
{
    const std::string key = RecordKeys::keyInfo(id);
    MDB_val lmdbKey = valueOf(key);
    MDB_val data;
    const int rc = mdb_get(m_txn, m_dbi, &lmdbKey, &data);
    if (rc == MDB_NOTFOUND)
        return false;
    checkLmdb(rc);
    return true;
}

bool RegistryTree::keyInfo(uint64_t id, KeyInfo& info) const
{
    const std::string key = RecordKeys::keyInfo(id);
    MDB_val lmdbKey = valueOf(key);
    MDB_val data;
    const int rc = mdb_get(m_txn, m_dbi, &lmdbKey, &data);
    if (rc == MDB_NOTFOUND)
        return false;
    checkLmdb(rc);
    info = KeyInfo::parse(data);
    return true;
}

void RegistryTree::putKeyInfo(uint64_t id, const KeyInfo& info)
{
    const std::string key = RecordKeys::keyInfo(id);
    const std::string data = info.serialize();
    MDB_val lmdbKey = valueOf(key);
    MDB_val lmdbData = valueOf(data);
    putRecord(m_txn, m_dbi, lmdbKey, lmdbData);
}

uint64_t RegistryTree::findSubkey(uint64_t parent, std::u16string_view folded) const
{
    MDB_val data;
    if (!NameIndex(m_txn, m_dbi, RecordKeys::kSubkey).lookup(parent, folded, data))
        return 0;
    return SubkeyEntry::idOf(NamedRecordView::parse(data));
}

LONG RegistryTree::openPath(uint64_t base, const KeyPath& path, uint64_t& id) const
{
    id = base;
    for (size_t i = 0; i < path.size() && id != 0; ++i)
        id = findSubkey(id, path.component(i).folded);
    // A deleted key has no subkeys left, so its absence shows only where the walk stopped.
    if (id == 0 || (path.empty() && !keyExists(base)))
        return keyExists(base) ? ERROR_FILE_NOT_FOUND : ERROR_KEY_DELETED;
    return ERROR_SUCCESS;
}

uint64_t RegistryTree::createSubkey(uint64_t parent, const NameView& name)
{
    const uint64_t id = StoreSchema::allocateKeyId(m_txn, m_dbi);
    KeyInfo info;
    info.parent = parent;
    info.lastWrite = KeyClock::now();
    info.name = name.original;
    NameIndex(m_txn, m_dbi, RecordKeys::kSubkey).insert(parent, name.folded, SubkeyEntry::build(info.name, id));
    putKeyInfo(id, info);
    touch(parent);
    return id;
}

LONG RegistryTree::createPath(uint64_t base, const KeyPath& path, uint64_t& id, bool& created)
{
    created = false;
    if (!keyExists(base))
        return ERROR_KEY_DELETED;
    id = base;
    for (size_t i = 0; i < path.size(); ++i) {
        const NameView name = path.component(i);
        const uint64_t existing = findSubkey(id, name.folded);
        created = existing == 0;
        id = created ? createSubkey(id, name) : existing;
    }
    return ERROR_SUCCESS;
}

bool RegistryTree::hasSubkeys(uint64_t id) const
{
    const std::string prefix = RecordKeys::prefix(RecordKeys::kSubkey, id);
    Cursor cursor(m_txn, m_dbi);
    MDB_val key, data;
    return cursor.seek(prefix, key, data) && startsWith(key, prefix);
}

std::vector<uint64_t> RegistryTree::subkeysOf(uint64_t id) const
{
    std::vector<uint64_t> subkeys;
    const std::string prefix = RecordKeys::prefix(RecordKeys::kSubkey, id);
    Cursor cursor(m_txn, m_dbi);
    MDB_val key, data;
    for (bool more = cursor.seek(prefix, key, data); more && startsWith(key, prefix); more = cursor.next(key, data))
        subkeys.push_back(SubkeyEntry::idOf(NamedRecordView::parse(data)));
    return subkeys;
}

void RegistryTree::eraseAll(const std::string& prefix)
{
    Cursor cursor(m_txn, m_dbi);
    MDB_val key, data;
    while (cursor.seek(prefix, key, data) && startsWith(key, prefix))
        deleteRecord(m_txn, m_dbi, key);
}

void RegistryTree::deleteKey(uint64_t id)
{
    KeyInfo info;
    if (!keyInfo(id, info))
        return;
    eraseAll(RecordKeys::prefix(RecordKeys::kValue, id));
    NameIndex(m_txn, m_dbi, RecordKeys::kSubkey).erase(info.parent, CaseFolding::fold(info.name));
    const std::string key = RecordKeys::keyInfo(id);
    MDB_val lmdbKey = valueOf(key);
    deleteRecord(m_txn, m_dbi, lmdbKey);
    touch(info.parent);
}

void RegistryTree::deleteTree(uint64_t id, bool keepKey)
{
    // Deepest first, so that every key is empty of subkeys when it goes.
    std::vector<uint64_t> order(1, id);
    for (size_t i = 0; i < order.size(); ++i) {
        for (uint64_t subkey : subkeysOf(order[i]))
            order.push_back(subkey);
    }
    for (size_t i = order.size(); i-- > 1;)
        deleteKey(order[i]);
    if (keepKey) {
        eraseAll(RecordKeys::prefix(RecordKeys::kValue, id));
        touch(id);
    } else {
        deleteKey(id);
    }
}

bool RegistryTree::findValueRecord(uint64_t key, std::u16string_view folded, MDB_val& record) const
{
    return NameIndex(m_txn, m_dbi, RecordKeys::kValue).lookup(key, folded, record);
}

void RegistryTree::setValue(uint64_t key, const RegistryName& name, uint32_t type, const std::string& data)
{
    NameIndex values(m_txn, m_dbi, RecordKeys::kValue);
    NameIndex::Found found;
    // An existing value keeps the case it was first written in, as on Windows.
    if (values.find(key, name.folded, found))
        values.replace(found, ValueRecordView::build(NamedRecordView::parse(found.data).name(), type, data));
    else
        values.insert(key, name.folded, ValueRecordView::build(name.original, type, data));
    touch(key);
}

bool RegistryTree::deleteValue(uint64_t key, std::u16string_view folded)
{
    if (!NameIndex(m_txn, m_dbi, RecordKeys::kValue).erase(key, folded))
        return false;
    touch(key);
    return true;
}

void RegistryTree::touch(uint64_t id)
{
    KeyInfo info;
    if (!keyInfo(id, info))
        return;
    info.lastWrite = KeyClock::now();
    putKeyInfo(id, info);
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
