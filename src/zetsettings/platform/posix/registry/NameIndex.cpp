#include "zetsettings/platform/posix/registry/NameIndex.h"

#include <bitset>

#include "zetsettings/platform/posix/registry/CaseFolding.h"
#include "zetsettings/platform/posix/registry/Cursor.h"
#include "zetsettings/platform/posix/registry/Mutation.h"
#include "zetsettings/platform/posix/registry/Records.h"
#include "zetsettings/platform/posix/registry/StoreFailure.h"

namespace zet {
namespace portable {
namespace registry {
namespace {

const size_t kSequences = 256;

bool isCandidate(const MDB_val& key, const std::string& stem)
{
    return key.mv_size == RecordKeys::kHashedKeySize && startsWith(key, stem);
}

bool sameFoldedName(const MDB_val& data, std::u16string_view folded)
{
    const NamedRecordView record = NamedRecordView::parse(data);
    if (record.nameUnits != folded.size())
        return false;
    return CaseFolding::fold(record.name()) == folded;
}

}  // namespace

NameIndex::NameIndex(MDB_txn* txn, MDB_dbi dbi, RecordKeys::Tag tag, NameHasher hasher)
    : m_txn(txn), m_dbi(dbi), m_tag(tag), m_hasher(hasher)
{
}

bool NameIndex::find(uint64_t owner, std::u16string_view folded, Found& found) const
{
    if (RecordKeys::isHashed(folded))
        return findHashed(RecordKeys::nameKey(m_tag, owner, folded, m_hasher), folded, found);
    char key[RecordKeys::kHashedStemSize];
    MDB_val lmdbKey{RecordKeys::writeNameKey(key, m_tag, owner, folded, m_hasher), key};
    if (!getDirect(lmdbKey, found.data))
        return false;
    found.key.assign(key, lmdbKey.mv_size);
    return true;
}

bool NameIndex::lookup(uint64_t owner, std::u16string_view folded, MDB_val& data) const
{
    if (RecordKeys::isHashed(folded)) {
        Found found;
        if (!find(owner, folded, found))
            return false;
        data = found.data;
        return true;
    }
    char key[RecordKeys::kHashedStemSize];
    MDB_val lmdbKey{RecordKeys::writeNameKey(key, m_tag, owner, folded, m_hasher), key};
    return getDirect(lmdbKey, data);
}

bool NameIndex::getDirect(MDB_val& key, MDB_val& data) const
{
    const int rc = mdb_get(m_txn, m_dbi, &key, &data);
    if (rc == MDB_NOTFOUND)
        return false;
    checkLmdb(rc);
    return true;
}

bool NameIndex::findHashed(const std::string& stem, std::u16string_view folded, Found& found) const
{
    Cursor cursor(m_txn, m_dbi);
    MDB_val key, data;
    for (bool more = cursor.seek(stem, key, data); more && startsWith(key, stem); more = cursor.next(key, data)) {
        if (isCandidate(key, stem) && sameFoldedName(data, folded)) {
            found.key.assign(static_cast<const char*>(key.mv_data), key.mv_size);
            found.data = data;
            return true;
        }
    }
    return false;
}

std::string NameIndex::freeHashedKey(const std::string& stem) const
{
    std::bitset<kSequences> taken;
    Cursor cursor(m_txn, m_dbi);
    MDB_val key, data;
    for (bool more = cursor.seek(stem, key, data); more && startsWith(key, stem); more = cursor.next(key, data)) {
        if (isCandidate(key, stem))
            taken.set(static_cast<const unsigned char*>(key.mv_data)[RecordKeys::kHashedStemSize]);
    }
    for (size_t sequence = 0; sequence < kSequences; ++sequence) {
        if (!taken.test(sequence))
            return stem + static_cast<char>(sequence);
    }
    // 256 different names sharing their first units and a 64-bit hash: not by chance.
    throwCorruptRecord();
}

void NameIndex::insert(uint64_t owner, std::u16string_view folded, const std::string& data)
{
    std::string key = RecordKeys::nameKey(m_tag, owner, folded, m_hasher);
    if (RecordKeys::isHashed(folded))
        key = freeHashedKey(key);
    MDB_val lmdbKey = valueOf(key);
    MDB_val lmdbData = valueOf(data);
    putRecord(m_txn, m_dbi, lmdbKey, lmdbData);
}

void NameIndex::replace(const Found& found, const std::string& data)
{
    MDB_val lmdbKey = valueOf(found.key);
    MDB_val lmdbData = valueOf(data);
    putRecord(m_txn, m_dbi, lmdbKey, lmdbData);
}

bool NameIndex::erase(uint64_t owner, std::u16string_view folded)
{
    Found existing;
    if (!find(owner, folded, existing))
        return false;
    MDB_val key = valueOf(existing.key);
    deleteRecord(m_txn, m_dbi, key);
    return true;
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
