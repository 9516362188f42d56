#include "ToolRun.h"

#include "support/ProcessRights.h"
#include "support/StartProgram_posix.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace zettooltest {
namespace {

// Drains both pipes together, so that a chatty child never blocks on a full one.
void collect(int outFd, int errFd, std::string& out, std::string& err)
{
    pollfd fds[2] = {{outFd, POLLIN, 0}, {errFd, POLLIN, 0}};
    std::string* sinks[2] = {&out, &err};
    int open = 2;
    char buffer[4096];
    while (open > 0) {
        if (poll(fds, 2, -1) < 0)
            throw std::runtime_error("poll failed");
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd < 0 || !(fds[i].revents & (POLLIN | POLLHUP | POLLERR)))
                continue;
            const ssize_t got = read(fds[i].fd, buffer, sizeof buffer);
            if (got > 0) {
                sinks[i]->append(buffer, static_cast<std::size_t>(got));
            } else {
                close(fds[i].fd);
                fds[i].fd = -1;
                --open;
            }
        }
    }
}

ToolResult runProgram(const std::vector<std::string>& command, const std::string& input, const ToolSetting& setting)
{
    int in[2], out[2], err[2];
    if (pipe(in) != 0 || pipe(out) != 0 || pipe(err) != 0)
        throw std::runtime_error("pipe failed");
    const std::vector<std::string> args(command.begin() + 1, command.end());
    const pid_t child = zettest::startProgram(command.front(), args, [&] {
        dup2(in[0], 0);
        dup2(out[1], 1);
        dup2(err[1], 2);
        for (int fd : {in[0], in[1], out[0], out[1], err[0], err[1]})
            close(fd);
        for (const auto& variable : setting.environment)
            setenv(variable.first.c_str(), variable.second.c_str(), 1);
        return !setting.unprivileged || zettest::becomeUnprivileged();
    });
    close(in[0]);
    close(out[1]);
    close(err[1]);
    // Small inputs only: a pipe holds them whole, so writing first can't deadlock.
    if (!input.empty() && write(in[1], input.data(), input.size()) != static_cast<ssize_t>(input.size()))
        throw std::runtime_error("write to the child failed");
    close(in[1]);
    ToolResult result;
    collect(out[0], err[0], result.out, result.err);
    int status = 0;
    waitpid(child, &status, 0);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

std::vector<std::string> toolCommand(const std::vector<std::string>& args)
{
    std::vector<std::string> command{ZET_TOOL_PATH};
    command.insert(command.end(), args.begin(), args.end());
    return command;
}

}  // namespace

ToolResult runTool(const std::vector<std::string>& args, const std::string& input)
{
    return runProgram(toolCommand(args), input, ToolSetting());
}

ToolResult runTool(const std::vector<std::string>& args, const ToolSetting& setting)
{
    return runProgram(toolCommand(args), std::string(), setting);
}

ToolResult runToolAs(const std::vector<std::string>& identity, const std::vector<std::string>& args)
{
    std::vector<std::string> command{"/usr/bin/setpriv"};
    command.insert(command.end(), identity.begin(), identity.end());
    const std::vector<std::string> tool = toolCommand(args);
    command.insert(command.end(), tool.begin(), tool.end());
    return runProgram(command, std::string(), ToolSetting());
}

bool otherUsersCanRunTheTool()
{
    // Both ways the tests take: setpriv, and rights dropped before the program starts.
    static const bool can = geteuid() == 0 && access("/usr/bin/setpriv", X_OK) == 0 &&
                            runToolAs({"--reuid=65534", "--regid=65534", "--clear-groups"}, {"--version"}).status == 0 &&
                            runTool({"--version"}, ToolSetting{{}, true}).status == 0;
    return can;
}

std::string readFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

void writeFile(const std::string& path, const std::string& bytes)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string scratchPath(const zettest::TestRegistry& registry, const std::string& name)
{
    const std::string& store = registry.storeDirectory();
    return store.substr(0, store.rfind('/') + 1) + name;
}

}  // namespace zettooltest
