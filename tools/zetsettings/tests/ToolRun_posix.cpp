#include "ToolRun.h"

#include <gtest/gtest.h>

#include "support/ProcessRights.h"
#include "support/StartProgram_posix.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
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

std::string contentOf(FILE* file)
{
    std::rewind(file);
    std::string content;
    char buffer[4096];
    for (std::size_t got; (got = std::fread(buffer, 1, sizeof buffer, file)) > 0;)
        content.append(buffer, got);
    std::fclose(file);
    return content;
}

ToolResult runProgram(const std::string& program, const std::vector<std::string>& args, const ToolSetting& setting)
{
    FILE* files[3] = {unnamedFile(setting.input), unnamedFile(), unnamedFile()};
    const pid_t child = zettest::startProgram(program, args, [&] {
        for (int fd = 0; fd < 3; ++fd)
            dup2(fileno(files[fd]), fd);
        for (const auto& variable : setting.environment)
            setenv(variable.first.c_str(), variable.second.c_str(), 1);
        return !setting.unprivileged || zettest::becomeUnprivileged();
    });
    int status = 0;
    waitpid(child, &status, 0);
    std::fclose(files[0]);
    ToolResult result;
    result.out = contentOf(files[1]);
    result.err = contentOf(files[2]);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

}  // namespace

ToolResult runTool(const std::vector<std::string>& args, const ToolSetting& setting)
{
    return runProgram(ZET_TOOL_PATH, args, setting);
}

ToolResult runToolAs(const std::vector<std::string>& identity, const std::vector<std::string>& args)
{
    std::vector<std::string> command = identity;
    command.push_back(ZET_TOOL_PATH);
    command.insert(command.end(), args.begin(), args.end());
    return runProgram("/usr/bin/setpriv", command, ToolSetting());
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

std::string ToolTest::ok(const std::vector<std::string>& args, const std::vector<std::string>& as)
{
    const ToolResult result = as.empty() ? runTool(args) : runToolAs(as, args);
    EXPECT_EQ(0, result.status) << args[0] << " " << (args.size() > 1 ? args[1] : "") << ": " << result.err;
    return result.out;
}

}  // namespace zettooltest
