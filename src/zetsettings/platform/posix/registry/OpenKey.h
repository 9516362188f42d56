// What an HKEY of ours stands for: a key of one store, opened with some rights. It stays bound
// to that store even when the process moves to another store directory.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_OPENKEY_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_OPENKEY_H

#include <cstdint>
#include <memory>
#include <mutex>

#include "zetsettings/platform/posix/Win32Portable.h"
#include "zetsettings/platform/posix/registry/ChildEnumerator.h"

namespace zet {
namespace portable {
namespace registry {

class Store;

struct OpenKey {
    OpenKey(std::shared_ptr<Store> keyStore, uint64_t keyId, REGSAM rights)
        : store(std::move(keyStore)), id(keyId), access(rights)
    {
    }

    const std::shared_ptr<Store> store;
    const uint64_t id;
    const REGSAM access;

    // Where enumeration by index last stopped; guarded by enumerationMutex.
    std::mutex enumerationMutex;
    EnumerationCursor subkeyPosition;
    EnumerationCursor valuePosition;
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
