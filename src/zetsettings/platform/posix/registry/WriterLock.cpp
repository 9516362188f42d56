#include "zetsettings/platform/posix/registry/WriterLock.h"

#include <errno.h>
#include <sys/file.h>

namespace zet {
namespace portable {
namespace registry {

void WriterLock::lock()
{
    m_threads.lock();
    if (m_fd < 0)
        return;
    while (flock(m_fd, LOCK_EX) != 0 && errno == EINTR) {
    }
}

void WriterLock::unlock()
{
    if (m_fd >= 0)
        flock(m_fd, LOCK_UN);
    m_threads.unlock();
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
