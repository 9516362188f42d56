// What makes an LMDB environment a registry store: a format record, the counter of key ids,
// and the four predefined root keys (each an independent tree with a fixed id).
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_STORESCHEMA_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_STORESCHEMA_H

#include <lmdb.h>

#include <cstdint>

#include "zetsettings/platform/posix/Win32Portable.h"

namespace zet {
namespace portable {
namespace registry {

class Store;

class StoreSchema {
public:
    static const uint32_t kFormat = 1;
    // Ids below this belong to the predefined roots; ids are never reused, so a handle of a
    // deleted key can never reach a later one.
    static const uint64_t kFirstKeyId = 16;

    // The root's id if the handle is a predefined root we provide, else 0.
    static uint64_t rootId(HKEY key);

    // Lays out a new store, or checks that an existing one is ours. Throws StoreFailure:
    // ERROR_BADDB for another format or a foreign database.
    static void prepare(Store& store);

    static uint64_t allocateKeyId(MDB_txn* txn, MDB_dbi dbi);
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
