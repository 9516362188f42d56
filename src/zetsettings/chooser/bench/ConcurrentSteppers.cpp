#include "zetsettings/chooser/bench/ConcurrentSteppers.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <new>
#include <stdexcept>
#include <thread>

#include "zetsettings/ZETSettings.h"

namespace chooserbench {
namespace {

[[noreturn]] void stepUntilStopped(std::atomic<bool>& stop, std::atomic<int>& started, std::atomic<long>& steps)
{
    bool wrapped = false;
    ZETSettings::nextChooserPreferredNet(false, wrapped);
    steps.fetch_add(1);
    started.fetch_add(1);
    while (!stop.load()) {
        ZETSettings::nextChooserPreferredNet(false, wrapped);
        steps.fetch_add(1);
    }
    // No exit handlers: they belong to the benchmark program.
    _exit(0);
}

}  // namespace

ConcurrentSteppers::ConcurrentSteppers(int helpers)
{
    void* memory = mmap(0, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::runtime_error("mmap failed");
    m_shared = new (memory) Shared{{false}, {0}, {0}};
    for (int i = 0; i < helpers; ++i) {
        const pid_t pid = fork();
        if (pid < 0) {
            stop();
            throw std::runtime_error("fork failed");
        }
        if (pid == 0)
            stepUntilStopped(m_shared->stop, m_shared->started, m_shared->steps);
        m_helpers.push_back(pid);
    }
    while (m_shared->started.load() < helpers)
        std::this_thread::yield();
}

ConcurrentSteppers::~ConcurrentSteppers()
{
    stop();
    m_shared->~Shared();
    munmap(m_shared, sizeof(Shared));
}

long ConcurrentSteppers::steps() const
{
    return m_shared->steps.load();
}

long ConcurrentSteppers::stop()
{
    m_shared->stop.store(true);
    for (pid_t helper : m_helpers) {
        int status = 0;
        while (waitpid(helper, &status, 0) < 0) {
        }
    }
    m_helpers.clear();
    return m_shared->steps.load();
}

}  // namespace chooserbench
