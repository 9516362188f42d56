#include "zetsettings/platform/posix/registry/ThisProcess.h"

#include <pthread.h>
#include <unistd.h>

#include <atomic>

namespace zet {
namespace portable {
namespace registry {
namespace {

std::atomic<pid_t> knownId(0);

void learnIdInChild()
{
    knownId.store(getpid(), std::memory_order_relaxed);
}

pid_t learnId()
{
    static const bool registered = pthread_atfork(nullptr, nullptr, &learnIdInChild) == 0;
    (void)registered;
    const pid_t id = getpid();
    knownId.store(id, std::memory_order_relaxed);
    return id;
}

}  // namespace

pid_t ThisProcess::id()
{
    const pid_t id = knownId.load(std::memory_order_relaxed);
    return id != 0 ? id : learnId();
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
