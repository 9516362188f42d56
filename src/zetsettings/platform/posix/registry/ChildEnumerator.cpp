#include "zetsettings/platform/posix/registry/ChildEnumerator.h"

#include "zetsettings/platform/posix/registry/ReadTransaction.h"

namespace zet {
namespace portable {
namespace registry {
namespace {

// Enough for a walk to take a snapshot once every few children; larger records are left to be
// read where they are.
const size_t kAheadCount = 16;
const size_t kAheadBytes = 4096;
const size_t kLargestAhead = 1024;

}  // namespace

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

bool ChildEnumerator::at(DWORD index, EnumerationCursor& position, MDB_val& data, bool readAhead)
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
    position.aheadEnds.clear();
    if (readAhead) {
        copyAhead(index, key, data, position);
    } else {
        position.index = index;
        position.key.assign(static_cast<const char*>(key.mv_data), key.mv_size);
    }
    return true;
}

// Copies the child just found and the small ones after it, moving this enumerator's cursor; the
// position then continues after the last one copied.
void ChildEnumerator::copyAhead(DWORD index, MDB_val key, MDB_val data, EnumerationCursor& position)
{
    position.aheadFirst = index;
    position.aheadBytes.clear();
    MDB_val reached = key;
    while (data.mv_size <= kLargestAhead && position.aheadBytes.size() + data.mv_size <= kAheadBytes) {
        position.aheadBytes.append(static_cast<const char*>(data.mv_data), data.mv_size);
        position.aheadEnds.push_back(position.aheadBytes.size());
        if (position.aheadEnds.size() == kAheadCount || !m_cursor.next(key, data) || !startsWith(key, m_prefix))
            break;
        // The position follows the cursor, so that a later call resumes from where it stands.
        reached = key;
        ++index;
    }
    position.index = index;
    position.key.assign(static_cast<const char*>(reached.mv_data), reached.mv_size);
}

bool ChildEnumerator::readBefore(const EnumerationCursor& position, DWORD index, uint64_t lastCommitted,
                                 MDB_val& data)
{
    if (!position.valid || position.snapshotId != lastCommitted || index < position.aheadFirst ||
        index - position.aheadFirst >= position.aheadEnds.size())
        return false;
    const size_t slot = index - position.aheadFirst;
    const size_t start = slot == 0 ? 0 : position.aheadEnds[slot - 1];
    data.mv_size = position.aheadEnds[slot] - start;
    data.mv_data = const_cast<char*>(position.aheadBytes.data() + start);
    return true;
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
