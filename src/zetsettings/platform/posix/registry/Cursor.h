// An LMDB cursor that is always closed, whatever way its scope ends.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_CURSOR_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_CURSOR_H

#include <lmdb.h>

#include <string>

namespace zet {
namespace portable {
namespace registry {

class Cursor {
public:
    Cursor(MDB_txn* txn, MDB_dbi dbi);
    ~Cursor();

    Cursor(const Cursor&) = delete;
    Cursor& operator=(const Cursor&) = delete;

    // False at the end or where nothing matches; throws StoreFailure on any other failure.
    bool get(MDB_val& key, MDB_val& data, MDB_cursor_op op);
    // The first record at or after the key.
    bool seek(const std::string& key, MDB_val& foundKey, MDB_val& data);
    bool next(MDB_val& key, MDB_val& data) { return get(key, data, MDB_NEXT); }

private:
    MDB_cursor* m_cursor = nullptr;
};

inline bool startsWith(const MDB_val& key, const std::string& prefix)
{
    return key.mv_size >= prefix.size() && prefix.compare(0, prefix.size(), static_cast<const char*>(key.mv_data),
                                                          prefix.size()) == 0;
}

inline MDB_val valueOf(const std::string& bytes)
{
    MDB_val value = {bytes.size(), const_cast<char*>(bytes.data())};
    return value;
}

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
