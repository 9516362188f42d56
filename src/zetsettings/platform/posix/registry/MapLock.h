// Keeps LMDB's map still while this process has transactions on it: every transaction holds
// it shared, and resizing the map (which LMDB allows only with no transaction active in the
// process) holds it alone. Writers are preferred, so a resize is never starved by readers.
#ifndef ZETSETTINGS_PLATFORM_POSIX_REGISTRY_MAPLOCK_H
#define ZETSETTINGS_PLATFORM_POSIX_REGISTRY_MAPLOCK_H

#include <pthread.h>

namespace zet {
namespace portable {
namespace registry {

class MapLock {
public:
    MapLock();
    ~MapLock();

    MapLock(const MapLock&) = delete;
    MapLock& operator=(const MapLock&) = delete;

    void lockShared() { pthread_rwlock_rdlock(&m_lock); }
    void unlockShared() { pthread_rwlock_unlock(&m_lock); }
    void lockExclusive() { pthread_rwlock_wrlock(&m_lock); }
    void unlockExclusive() { pthread_rwlock_unlock(&m_lock); }

private:
    pthread_rwlock_t m_lock;
};

class ExclusiveMapLock {
public:
    explicit ExclusiveMapLock(MapLock& lock) : m_lock(lock) { m_lock.lockExclusive(); }
    ~ExclusiveMapLock() { m_lock.unlockExclusive(); }

    ExclusiveMapLock(const ExclusiveMapLock&) = delete;
    ExclusiveMapLock& operator=(const ExclusiveMapLock&) = delete;

private:
    MapLock& m_lock;
};

}  // namespace registry
}  // namespace portable
}  // namespace zet

#endif
