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

// The key the product's settings live under.
inline const std::string kBase = "HKLM\\Software\\Orvane\\QXL";

// reg's answer when a key or value is not there.
inline const std::string kMissing = "ERROR: The system was unable to find the specified registry key or value.";

// setpriv's options for nobody without groups: a user that may read a store made on the fly, not
// write it, and may not enter a group store.
inline const std::vector<std::string> kOutsider = {"--reuid=65534", "--regid=65534", "--clear-groups"};

// How the program runs besides its arguments.
struct ToolSetting {
    std::vector<std::pair<std::string, std::string> > environment;  // variables set in the child
    std::vector<std::string> as{};  // setpriv's options, to run as another user
    std::string input{};            // its standard input
};

// The program's exit status and everything it wrote.
ToolResult runTool(const std::vector<std::string>& args, const ToolSetting& setting = ToolSetting());

// Whether another user (nobody) can start the built tool: a checkout in a folder closed to
// others can't be run as them, and the tests that act as other users then skip.
bool otherUsersCanRunTheTool();

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& bytes);
bool contains(const std::string& text, const std::string& part);

// One run of the program and what it must answer. On success `shows` is its whole output, or
// after a leading "..." a part of it, or after a leading "!" text it must not print. A failing
// run prints nothing on standard output and a short message holding `shows` on standard error.
struct Step {
    std::vector<std::string> args;
    std::string shows;
    int status = 0;
};
void expectSteps(const std::vector<Step>& steps);

// Base of the tool's tests: a store of the test's own, and files beside it.
class ToolTest : public zettest::RegistryTest {
protected:
    // A file beside the test's store, removed with it.
    std::string scratch(const std::string& name) const;
    // Runs a command that must succeed and gives what it printed.
    std::string ok(const std::vector<std::string>& args, const std::vector<std::string>& as = {});
};

}  // namespace zettooltest

#endif
