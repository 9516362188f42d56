// The stores this process has open, one per store directory, opened on first use.
//
// A directory is known by its real path, so two spellings of it share one environment (LMDB
// must not be opened twice in one process). The directory named by ZET_REGISTRY_DIR is looked
// up on every call that starts from a predefined root; each thread remembers the store it
// found last and the spelling it was found under, so that a thread that keeps to one store
// takes no lock for it. Stores that nothing uses any more (no handle, no thread's memory) are
// closed once more than a few are open. After fork() the child forgets the parent's stores
// without closing them and opens its own.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_STORECATALOG_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_STORECATALOG_H

#include <sys/types.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "zetsettings/platform/posix/registry/Store.h"

namespace zet {
namespace portable {
namespace registry {

class StoreCatalog {
public:
    static StoreCatalog& instance();

    // Throw StoreFailure when the store cannot be opened.
    std::shared_ptr<Store> current();
    std::shared_ptr<Store> forDirectory(const std::string& directory);

    StoreCatalog();
    StoreCatalog(const StoreCatalog&) = delete;
    StoreCatalog& operator=(const StoreCatalog&) = delete;

private:
    struct Entry {
        std::vector<std::string> spellings;
        std::shared_ptr<Store> store;
    };

    static const size_t kStoresKept = 4;

    static void lockForFork();
    static void unlockAfterFork();

    std::shared_ptr<Store> find(const std::string& spelling) const;
    std::shared_ptr<Store> openByRealPath(const std::string& spelling);
    void closeUnused(const Store* keep);

    std::mutex m_mutex;
    pid_t m_process;
    std::vector<Entry> m_entries;
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
