#include "zetsettings/platform/posix/MachineKeyCache.h"

#include <pthread.h>

#include "zetsettings/platform/posix/StoreLocation.h"

namespace zet {
namespace portable {
namespace {

// A key that was not read from a file (made here, or failed to load) never counts as unchanged,
// so it is loaded anew on next use.
struct CachedKey {
    std::string directory;
    MachineKey key;
};

thread_local CachedKey t_cached;

// A child starts without the parent's key: it may drop its rights before its first use, and
// the owner checks of a load must then apply to it.
void forgetInChild()
{
    t_cached.key.forget();
}

}  // namespace

const MachineKey* MachineKeyCache::fetch(const std::string& directory, bool create, DWORD& error)
{
    static const bool registered = pthread_atfork(nullptr, nullptr, &forgetInChild) == 0;
    (void)registered;
    CachedKey& cached = t_cached;
    error = ERROR_SUCCESS;
    if (cached.directory == directory && cached.key.fileUnchanged())
        return &cached.key;
    cached.directory = directory;
    error = create ? cached.key.loadOrCreate(directory) : cached.key.load(directory);
    return error == ERROR_SUCCESS ? &cached.key : nullptr;
}

}  // namespace portable
}  // namespace zet
