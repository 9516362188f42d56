#include "support/ChildProcess.h"
#include "support/StartProgram_posix.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

namespace zettest {

struct ChildProcess::Impl {
    pid_t pid = -1;  // -1 once reaped
    int status = 0;
};

pid_t startProgram(const std::string& path, const std::vector<std::string>& args,
                   const std::function<bool()>& inChild)
{
    std::vector<std::string> words(1, path);
    words.insert(words.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (auto& word : words)
        argv.push_back(&word[0]);
    argv.push_back(nullptr);
    const pid_t pid = fork();
    if (pid < 0)
        throw std::runtime_error("fork failed");
    if (pid == 0) {
        if (!inChild || inChild())
            execv(path.c_str(), argv.data());
        _exit(126);
    }
    return pid;
}

ChildProcess::ChildProcess(const std::string& scenario, const std::vector<std::string>& args)
    : m_impl(new Impl)
{
    std::vector<std::string> words(1, "--zet-child=" + scenario);
    words.insert(words.end(), args.begin(), args.end());
    m_impl->pid = startProgram(kThisProgram, words);
}

ChildProcess::~ChildProcess()
{
    killHard();
    wait();
}

int ChildProcess::wait()
{
    while (m_impl->pid > 0 && waitpid(m_impl->pid, &m_impl->status, 0) < 0) {
    }
    m_impl->pid = -1;
    return WIFEXITED(m_impl->status) ? WEXITSTATUS(m_impl->status) : -1;
}

void ChildProcess::killHard()
{
    if (m_impl->pid > 0)
        kill(m_impl->pid, SIGKILL);
}

}  // namespace zettest
