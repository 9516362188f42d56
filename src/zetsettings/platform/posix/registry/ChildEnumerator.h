// The subkeys or values of a key by index, in the store's order (folded names, ascending).
//
// Enumerating all n children by index 0..n-1 costs O(n) in all: a handle keeps where the last
// call stopped (an EnumerationCursor), and the next index starts from there as long as the
// snapshot is the same one, that is no write was committed in between. After a write the walk
// starts again from the first child.
//
// A walk over values also reads a few small records ahead and keeps copies of them with the
// position: while the store is still in the state they were read in (no commit since, by any
// process), the next indexes are answered from those copies with no snapshot at all.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_CHILDENUMERATOR_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_CHILDENUMERATOR_H

#include <lmdb.h>

#include <cstdint>
#include <string>
#include <vector>

#include "zetsettings/platform/posix/Win32Portable.h"
#include "zetsettings/platform/posix/registry/Cursor.h"
#include "zetsettings/platform/posix/registry/RecordKeys.h"

namespace zet {
namespace portable {
namespace registry {

class ReadTransaction;

struct EnumerationCursor {
    bool valid = false;
    uint64_t snapshotId = 0;
    DWORD index = 0;  // the last child read, whose store key is `key`
    std::string key;
    // Copies of the children from index aheadFirst on, one after another in `aheadBytes`;
    // reused in place, so a warm walk allocates nothing.
    DWORD aheadFirst = 0;
    std::string aheadBytes;
    std::vector<size_t> aheadEnds;
};

class ChildEnumerator {
public:
    ChildEnumerator(ReadTransaction& snapshot, RecordKeys::Tag tag, uint64_t owner);

    // The child at the index, or false past the last one. With readAhead, a few children from
    // the index on are copied into the position (see above).
    bool at(DWORD index, EnumerationCursor& position, MDB_val& data, bool readAhead = false);
    // The child at the index from the copies in the position, if they hold it and the store is
    // still in the state `lastCommitted` that they were read in. Valid while the position is.
    static bool readBefore(const EnumerationCursor& position, DWORD index, uint64_t lastCommitted, MDB_val& data);

    // Calls visit(data) for every child.
    template <class Visit>
    void forEach(Visit&& visit)
    {
        MDB_val key, data;
        for (bool more = m_cursor.seek(m_prefix, key, data); more && startsWith(key, m_prefix);
             more = m_cursor.next(key, data))
            visit(data);
    }

private:
    bool resume(DWORD index, const EnumerationCursor& position, MDB_val& key, MDB_val& data);
    void copyAhead(DWORD index, MDB_val key, MDB_val data, EnumerationCursor& position);

    const ReadTransaction& m_snapshot;
    std::string m_prefix;
    Cursor m_cursor;
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
