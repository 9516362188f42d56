#include "ToolRun.h"

#include <gtest/gtest.h>

#include "support/StartProgram_posix.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace zettooltest {
namespace {

// The child writes into unnamed files rather than pipes: nothing to drain while it runs.
FILE* unnamedFile(const std::string& content = "")
{
    FILE* file = std::tmpfile();
    if (!file || std::fwrite(content.data(), 1, content.size(), file) != content.size() || std::fflush(file) != 0)
        throw std::runtime_error("no temporary file for the tool's run");
    std::rewind(file);
    return file;
}

// Opened anew through /proc, the file is read from its start whatever the child left its offset at.
std::string contentOf(FILE* file)
{
    const std::string content = readFile("/proc/self/fd/" + std::to_string(fileno(file)));
    std::fclose(file);
    return content;
}

}  // namespace

ToolResult runTool(const std::vector<std::string>& args, const ToolSetting& setting)
{
    const bool asOther = !setting.as.empty();
    std::vector<std::string> command = setting.as;
    if (asOther)
        command.push_back(ZET_TOOL_PATH);
    command.insert(command.end(), args.begin(), args.end());
    FILE* files[3] = {unnamedFile(setting.input), unnamedFile(), unnamedFile()};
    const pid_t child = zettest::startProgram(asOther ? "/usr/bin/setpriv" : ZET_TOOL_PATH, command, [&] {
        for (int fd = 0; fd < 3; ++fd)
            dup2(fileno(files[fd]), fd);
        for (const auto& variable : setting.environment)
            setenv(variable.first.c_str(), variable.second.c_str(), 1);
        return true;
    });
    int status = 0;
    waitpid(child, &status, 0);
    std::fclose(files[0]);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contentOf(files[1]), contentOf(files[2])};
}

bool otherUsersCanRunTheTool()
{
    static const bool can = geteuid() == 0 && access("/usr/bin/setpriv", X_OK) == 0 &&
                            runTool({"--version"}, {{}, kOutsider}).status == 0;
    return can;
}

std::string readFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

void writeFile(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

void expectSteps(const std::vector<Step>& steps)
{
    for (const Step& step : steps) {
        const ToolResult result = runTool(step.args);
        const std::string what = step.args[0] + " " + (step.args.size() > 1 ? step.args[1] : "") + ": " + result.err;
        EXPECT_EQ(step.status, result.status) << what;
        if (step.status != 0) {
            EXPECT_TRUE(contains(result.err, step.shows)) << what;
            EXPECT_LT(result.err.size(), 1000u) << what;
            EXPECT_EQ("", result.out) << what;
        } else if (step.shows.compare(0, 3, "...") == 0) {
            EXPECT_TRUE(contains(result.out, step.shows.substr(3))) << what << result.out;
        } else if (step.shows.compare(0, 1, "!") == 0) {
            EXPECT_FALSE(contains(result.out, step.shows.substr(1))) << what << result.out;
        } else {
            EXPECT_EQ(step.shows, result.out) << what;
        }
    }
}

std::string ToolTest::scratch(const std::string& name) const
{
    const std::string& store = registry.storeDirectory();
    return store.substr(0, store.rfind('/') + 1) + name;
}

std::string ToolTest::ok(const std::vector<std::string>& args, const std::vector<std::string>& as)
{
    const ToolResult result = runTool(args, {{}, as});
    EXPECT_EQ(0, result.status) << args[0] << " " << (args.size() > 1 ? args[1] : "") << ": " << result.err;
    return result.out;
}

}  // namespace zettooltest
