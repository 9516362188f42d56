#include "Processes.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <thread>

#include "support/StartProgram_posix.h"

namespace zetstress {
namespace {

using Clock = std::chrono::steady_clock;

Ending waitWithin(pid_t pid, int milliseconds)
{
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(milliseconds);
    for (;;) {
        int status = 0;
        const pid_t done = waitpid(pid, &status, WNOHANG);
        if (done == pid)
            return {true, WIFEXITED(status) ? WEXITSTATUS(status) : -1, WIFSIGNALED(status) ? WTERMSIG(status) : 0};
        if (done < 0 && errno != EINTR)
            throw std::runtime_error("waitpid failed");
        if (Clock::now() >= deadline)
            return Ending();
        pauseMilliseconds(1);
    }
}

// Starts the program with its standard output on `outputFd`.
pid_t startWithOutput(const std::string& program, const std::vector<std::string>& args, int outputFd,
                      const Environment& environment = {})
{
    return zettest::startProgram(program, args, [outputFd, &environment] {
        for (const auto& variable : environment)
            setenv(variable.first.c_str(), variable.second.c_str(), 1);
        return dup2(outputFd, STDOUT_FILENO) >= 0;
    });
}

}  // namespace

RunDirectory::RunDirectory(const std::string& name, const std::string& base)
{
    std::string pattern = base + "/zetsettings-" + name + "-XXXXXX";
    if (!mkdtemp(&pattern[0]))
        throw std::runtime_error("mkdtemp failed");
    m_path = pattern;
    chmod(m_path.c_str(), 0755);
    setenv("ZET_REGISTRY_DIR", (m_path + "/store").c_str(), 1);
}

RunDirectory::~RunDirectory()
{
    if (m_mounted)
        umount2(m_path.c_str(), MNT_DETACH);
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

void Violations::operator()(const std::string& what)
{
    std::cerr << "VIOLATION: " << m_where << what << "\n";
    ++m_count;
}

std::string describe(const Ending& ending)
{
    if (!ending.finished)
        return "did not end in time";
    if (ending.signal)
        return "died of signal " + std::to_string(ending.signal);
    return "exited with " + std::to_string(ending.exitCode);
}

pid_t startSelf(const std::vector<std::string>& args)
{
    return zettest::startProgram(zettest::kThisProgram, args);
}

pid_t startProgram(const std::string& path, const std::vector<std::string>& args)
{
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    const pid_t pid = startWithOutput(path, args, nowhere);
    close(nowhere);
    return pid;
}

Ending killUnlessEnded(pid_t pid, int milliseconds)
{
    const Ending ending = waitWithin(pid, milliseconds);
    int status = 0;
    if (!ending.finished && kill(pid, SIGKILL) == 0)
        while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
        }
    return ending;
}

// The output goes to an unlinked file rather than a pipe, so a child that writes much never
// blocks on a reader.
Ending runSelf(const std::vector<std::string>& args, int milliseconds, std::string& output,
               const Environment& environment)
{
    char path[] = "/tmp/zetsettings-output-XXXXXX";
    const int fd = mkostemp(path, O_CLOEXEC);
    if (fd < 0)
        throw std::runtime_error("no file for a child's output");
    unlink(path);
    const pid_t pid = startWithOutput(zettest::kThisProgram, args, fd, environment);
    const Ending ending = killUnlessEnded(pid, milliseconds);
    output.clear();
    char chunk[4096];
    for (ssize_t got; (got = pread(fd, chunk, sizeof(chunk), static_cast<off_t>(output.size()))) > 0;)
        output.append(chunk, static_cast<std::size_t>(got));
    close(fd);
    return ending;
}

std::string runChecked(const std::vector<std::string>& args, int milliseconds, Violations& fault,
                       const std::string& what)
{
    std::string output;
    const Ending ending = runSelf(args, milliseconds, output);
    fault.expect(ending.succeeded(), what + " " + describe(ending));
    return output;
}

void pauseMilliseconds(int milliseconds)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

}  // namespace zetstress
