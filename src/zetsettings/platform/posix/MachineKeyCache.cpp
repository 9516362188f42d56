#include "zetsettings/platform/posix/MachineKeyCache.h"

#include <pthread.h>
#include <sys/stat.h>

namespace zet {
namespace portable {
namespace {

struct CachedKey {
    bool valid = false;
    std::string path;
    MachineKey key;
};

thread_local CachedKey t_cached;

// A child starts without the parent's key: it may drop its rights before its first use, and
// the owner checks of a load must then apply to it.
void forgetInChild()
{
    t_cached.valid = false;
}

bool sameTime(const timespec& a, const timespec& b)
{
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

bool sameFile(const struct stat& a, const struct stat& b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size && a.st_mode == b.st_mode &&
           a.st_uid == b.st_uid && sameTime(a.st_mtim, b.st_mtim) && sameTime(a.st_ctim, b.st_ctim);
}

bool stillValid(const CachedKey& cached, const std::string& path)
{
    struct stat loaded;
    struct stat now;
    return cached.valid && cached.path == path && cached.key.loadedFrom(loaded) &&
           lstat(path.c_str(), &now) == 0 && sameFile(loaded, now);
}

}  // namespace

DWORD MachineKeyCache::fetch(const std::string& path, bool create, MachineKey& key)
{
    static const bool registered = pthread_atfork(nullptr, nullptr, &forgetInChild) == 0;
    (void)registered;
    CachedKey& cached = t_cached;
    if (stillValid(cached, path)) {
        key.copyFrom(cached.key);
        return ERROR_SUCCESS;
    }
    cached.valid = false;
    const DWORD result = create ? key.loadOrCreate(path) : key.load(path);
    struct stat file;
    if (result == ERROR_SUCCESS && key.loadedFrom(file)) {
        cached.key.copyFrom(key);
        cached.path = path;
        cached.valid = true;
    }
    return result;
}

}  // namespace portable
}  // namespace zet
