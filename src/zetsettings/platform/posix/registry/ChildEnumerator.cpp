#include "zetsettings/platform/posix/registry/ChildEnumerator.h"

#include "zetsettings/platform/posix/registry/ReadTransaction.h"

namespace zet {
namespace portable {
namespace registry {

ChildEnumerator::ChildEnumerator(ReadTransaction& snapshot, RecordKeys::Tag tag, uint64_t owner)
    : m_snapshot(snapshot), m_prefix(RecordKeys::prefix(tag, owner)), m_cursor(snapshot.txn(), snapshot.dbi())
{
}

bool ChildEnumerator::resume(DWORD index, const EnumerationCursor& position, MDB_val& key, MDB_val& data)
{
    if (!position.valid || position.snapshotId != m_snapshot.snapshotId() || position.index > index)
        return false;
    key = valueOf(position.key);
    return m_cursor.get(key, data, MDB_SET_KEY) && startsWith(key, m_prefix);
}

bool ChildEnumerator::at(DWORD index, EnumerationCursor& position, MDB_val& data)
{
    MDB_val key;
    DWORD reached = 0;
    bool found;
    if (resume(index, position, key, data)) {
        reached = position.index;
        found = true;
    } else {
        found = m_cursor.seek(m_prefix, key, data) && startsWith(key, m_prefix);
    }
    for (; found && reached < index; ++reached)
        found = m_cursor.next(key, data) && startsWith(key, m_prefix);
    if (!found)
        return false;
    position.valid = true;
    position.snapshotId = m_snapshot.snapshotId();
    position.index = index;
    position.key.assign(static_cast<const char*>(key.mv_data), key.mv_size);
    return true;
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
