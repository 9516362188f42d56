#include "zetsettings/platform/posix/registry/WriterLock.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace zet {
namespace portable {
namespace registry {

WriterLock::WriterLock(int descriptor) : m_fd(descriptor < 0 ? -1 : fcntl(descriptor, F_DUPFD_CLOEXEC, 0))
{
}

WriterLock::~WriterLock()
{
    if (m_fd >= 0)
        close(m_fd);
}

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
