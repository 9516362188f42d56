#include "zetsettings/platform/posix/registry/MapLock.h"

namespace zet {
namespace portable {
namespace registry {

MapLock::MapLock()
{
    pthread_rwlockattr_t attributes;
    pthread_rwlockattr_init(&attributes);
#ifdef __GLIBC__
    pthread_rwlockattr_setkind_np(&attributes, PTHREAD_RWLOCK_PREFER_WRITER_NONRECURSIVE_NP);
#endif
    pthread_rwlock_init(&m_lock, &attributes);
    pthread_rwlockattr_destroy(&attributes);
}

MapLock::~MapLock()
{
    pthread_rwlock_destroy(&m_lock);
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
