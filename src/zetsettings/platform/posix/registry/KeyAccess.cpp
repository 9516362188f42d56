#include "zetsettings/platform/posix/registry/KeyAccess.h"

#include "zetsettings/platform/posix/registry/HandleTable.h"
#include "zetsettings/platform/posix/registry/StoreCatalog.h"
#include "zetsettings/platform/posix/registry/StoreSchema.h"

namespace zet {
namespace portable {
namespace registry {
namespace {

const REGSAM kGenericRead = 0x80000000u;
const REGSAM kGenericWrite = 0x40000000u;
const REGSAM kGenericExecute = 0x20000000u;
const REGSAM kGenericAll = 0x10000000u;
const REGSAM kMaximumAllowed = 0x02000000u;
const REGSAM kWriteRights = KEY_SET_VALUE | KEY_CREATE_SUB_KEY | KEY_CREATE_LINK | DELETE | WRITE_DAC | WRITE_OWNER;

}  // namespace

LONG KeyAccess::resolve(HKEY handle, KeyReference& key)
{
    if (const uint64_t root = StoreSchema::rootId(handle)) {
        key.store = StoreCatalog::instance().current();
        key.id = root;
        key.access = KEY_ALL_ACCESS;
        key.open.reset();
        return ERROR_SUCCESS;
    }
    key.open = HandleTable::instance().find(handle);
    if (!key.open)
        return ERROR_INVALID_HANDLE;
    key.store = key.open->store;
    if (!key.store->belongsToThisProcess() || key.store->closed())
        key.store = StoreCatalog::instance().forDirectory(key.store->directory());
    key.id = key.open->id;
    key.access = key.open->access;
    return ERROR_SUCCESS;
}

REGSAM KeyAccess::normalize(REGSAM desired, bool storeWritable)
{
    REGSAM rights = desired & ~(KEY_WOW64_64KEY | KEY_WOW64_32KEY);
    if (rights & kGenericRead)
        rights |= KEY_READ;
    if (rights & kGenericWrite)
        rights |= KEY_WRITE;
    if (rights & kGenericExecute)
        rights |= KEY_EXECUTE;
    if (rights & (kGenericAll | (storeWritable ? kMaximumAllowed : 0)))
        rights |= KEY_ALL_ACCESS;
    if (rights & kMaximumAllowed)
        rights |= KEY_READ;
    return rights & ~(kGenericRead | kGenericWrite | kGenericExecute | kGenericAll | kMaximumAllowed);
}

bool KeyAccess::asksToWrite(REGSAM rights)
{
    return (rights & kWriteRights) != 0;
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
