#include "zetsettings/platform/posix/registry/Cursor.h"

#include "zetsettings/platform/posix/registry/StoreFailure.h"

namespace zet {
namespace portable {
namespace registry {

Cursor::Cursor(MDB_txn* txn, MDB_dbi dbi)
{
    checkLmdb(mdb_cursor_open(txn, dbi, &m_cursor));
}

Cursor::~Cursor()
{
    mdb_cursor_close(m_cursor);
}

bool Cursor::get(MDB_val& key, MDB_val& data, MDB_cursor_op op)
{
    const int rc = mdb_cursor_get(m_cursor, &key, &data, op);
    if (rc == MDB_NOTFOUND)
        return false;
    checkLmdb(rc);
    return true;
}

bool Cursor::seek(const std::string& key, MDB_val& foundKey, MDB_val& data)
{
    foundKey = valueOf(key);
    return get(foundKey, data, MDB_SET_RANGE);
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
