// Runs the built zetsettings program as a real process, on the registry of the running test.
#ifndef ZETSETTINGS_TOOLS_TESTS_TOOLRUN_H
#define ZETSETTINGS_TOOLS_TESTS_TOOLRUN_H

#include <string>
#include <utility>
#include <vector>

#include "support/TestRegistry.h"

namespace zettooltest {

struct ToolResult {
    int status = -1;
    std::string out;
    std::string err;
};

// How the program runs besides its arguments.
struct ToolSetting {
    std::vector<std::pair<std::string, std::string> > environment;  // variables set in the child
    bool unprivileged = false;  // as a user that may read the test's store but not write it
};

// The program's exit status and everything it wrote; `input` is its standard input.
ToolResult runTool(const std::vector<std::string>& args, const std::string& input = "");
ToolResult runTool(const std::vector<std::string>& args, const ToolSetting& setting);
// The same as another user: `setpriv` run with `identity` (its options) starts the program.
ToolResult runToolAs(const std::vector<std::string>& identity, const std::vector<std::string>& args);

// Whether another user (nobody) can start the built tool: a checkout in a folder closed to
// others can't be run as them, and the tests that act as other users then skip.
bool otherUsersCanRunTheTool();

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& bytes);
// A file beside the test's store, removed with it.
std::string scratchPath(const zettest::TestRegistry& registry, const std::string& name);

}  // namespace zettooltest

#endif
