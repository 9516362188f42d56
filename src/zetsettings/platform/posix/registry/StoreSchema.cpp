#include "zetsettings/platform/posix/registry/StoreSchema.h"

#include "zetsettings/platform/posix/registry/ByteOrder.h"
#include "zetsettings/platform/posix/registry/Cursor.h"
#include "zetsettings/platform/posix/registry/KeyClock.h"
#include "zetsettings/platform/posix/registry/Mutation.h"
#include "zetsettings/platform/posix/registry/RecordKeys.h"
#include "zetsettings/platform/posix/registry/Records.h"
#include "zetsettings/platform/posix/registry/Store.h"

namespace zet {
namespace portable {
namespace registry {
namespace {

enum class Layout { kReady, kEmpty, kForeign };

struct Root {
    HKEY handle;
    const char16_t* name;
};

const Root kRoots[] = {
    {HKEY_CLASSES_ROOT, u"HKEY_CLASSES_ROOT"},
    {HKEY_CURRENT_USER, u"HKEY_CURRENT_USER"},
    {HKEY_LOCAL_MACHINE, u"HKEY_LOCAL_MACHINE"},
    {HKEY_USERS, u"HKEY_USERS"},
};

const char kFormatName[] = "format";
const char kNextIdName[] = "next-id";

bool getMeta(MDB_txn* txn, MDB_dbi dbi, const char* name, MDB_val& data)
{
    const std::string key = RecordKeys::meta(name);
    MDB_val lmdbKey = valueOf(key);
    const int rc = mdb_get(txn, dbi, &lmdbKey, &data);
    if (rc == MDB_NOTFOUND)
        return false;
    checkLmdb(rc);
    return true;
}

void putText(MDB_txn* txn, MDB_dbi dbi, const std::string& key, const std::string& data)
{
    MDB_val lmdbKey = valueOf(key);
    MDB_val lmdbData = valueOf(data);
    putRecord(txn, dbi, lmdbKey, lmdbData);
}

void putMeta(MDB_txn* txn, MDB_dbi dbi, const char* name, const std::string& data)
{
    putText(txn, dbi, RecordKeys::meta(name), data);
}

bool isEmpty(MDB_txn* txn, MDB_dbi dbi)
{
    Cursor cursor(txn, dbi);
    MDB_val key, data;
    return !cursor.get(key, data, MDB_FIRST);
}

Layout layoutOf(MDB_txn* txn, MDB_dbi dbi)
{
    MDB_val format;
    if (getMeta(txn, dbi, kFormatName, format)) {
        const bool ours = format.mv_size == 4 &&
                          readLittleEndian32(static_cast<const unsigned char*>(format.mv_data)) == StoreSchema::kFormat;
        return ours ? Layout::kReady : Layout::kForeign;
    }
    return isEmpty(txn, dbi) ? Layout::kEmpty : Layout::kForeign;
}

void layOut(MDB_txn* txn, MDB_dbi dbi)
{
    std::string format, nextId;
    appendLittleEndian32(format, StoreSchema::kFormat);
    appendLittleEndian64(nextId, StoreSchema::kFirstKeyId);
    putMeta(txn, dbi, kFormatName, format);
    putMeta(txn, dbi, kNextIdName, nextId);
    for (const Root& root : kRoots) {
        KeyInfo info;
        info.lastWrite = KeyClock::now();
        info.name = root.name;
        putText(txn, dbi, RecordKeys::keyInfo(StoreSchema::rootId(root.handle)), info.serialize());
    }
}

}  // namespace

const uint32_t StoreSchema::kFormat;
const uint64_t StoreSchema::kFirstKeyId;

uint64_t StoreSchema::rootId(HKEY key)
{
    for (size_t i = 0; i < sizeof(kRoots) / sizeof(kRoots[0]); ++i) {
        if (kRoots[i].handle == key)
            return i + 1;
    }
    return 0;
}

void StoreSchema::prepare(Store& store)
{
    const Layout layout = store.read([](ReadTransaction& snapshot) { return layoutOf(snapshot.txn(), snapshot.dbi()); });
    if (layout == Layout::kReady)
        return;
    if (layout == Layout::kForeign)
        throw StoreFailure(ERROR_BADDB);
    // Nothing was ever written, and this process may not write: it finds no keys, and is
    // refused any open or create that asks to write, as in a store laid out by another.
    if (!store.writable())
        return;
    // The layout belongs to the store, not to the call that happened to open it: never part of
    // a caller's batch.
    const LONG result = store.writeAlone([](WriteTransaction& transaction) -> LONG {
        switch (layoutOf(transaction.txn(), transaction.dbi())) {
        case Layout::kReady:
            return ERROR_SUCCESS;  // another process laid it out first
        case Layout::kForeign:
            return ERROR_BADDB;
        case Layout::kEmpty:
            break;
        }
        layOut(transaction.txn(), transaction.dbi());
        return ERROR_SUCCESS;
    });
    if (result != ERROR_SUCCESS)
        throw StoreFailure(result);
}

uint64_t StoreSchema::allocateKeyId(MDB_txn* txn, MDB_dbi dbi)
{
    MDB_val current;
    if (!getMeta(txn, dbi, kNextIdName, current) || current.mv_size != 8)
        throwCorruptRecord();
    const uint64_t id = readLittleEndian64(static_cast<const unsigned char*>(current.mv_data));
    std::string next;
    appendLittleEndian64(next, id + 1);
    putMeta(txn, dbi, kNextIdName, next);
    return id;
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
