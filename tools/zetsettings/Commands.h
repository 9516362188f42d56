// The tool's command families. Each takes the words behind its name and returns the exit
// status; a UsageError or CommandError thrown out of one is reported by main.
#ifndef ZETSETTINGS_TOOLS_COMMANDS_H
#define ZETSETTINGS_TOOLS_COMMANDS_H

#include <iostream>
#include <string>
#include <vector>

#include "Cli.h"

namespace zettool {

// Where a command reads answers and writes what it shows.
struct Console {
    std::istream& in;
    std::ostream& out;
    std::ostream& err;
    bool json;
};

struct CommandFamily {
    const char* name;
    const char* summary;
    std::string (*help)();
    int (*run)(Args& args, Console& console);
    // Commands that make or inspect the store itself skip the check that it can be used.
    bool checksStoreItself = false;
};

// Every family, in the order the tool's help lists them.
const std::vector<CommandFamily>& commandFamilies();

// The families, one file each.
extern const CommandFamily kBaseFamily;
extern const CommandFamily kConfiguratorFamily;
extern const CommandFamily kNetlibFamily;
extern const CommandFamily kGuiHelperFamily;
extern const CommandFamily kRasEapFamily;
extern const CommandFamily kZetGuardFamily;
extern const CommandFamily kRasmanFamily;
extern const CommandFamily kNetworkFamily;
extern const CommandFamily kFallbackKeysFamily;
extern const CommandFamily kUserFamily;
extern const CommandFamily kLoginFamily;
extern const CommandFamily kFallbackDbFamily;
extern const CommandFamily kChooserFamily;
extern const CommandFamily kAlertFamily;
extern const CommandFamily kParamsFamily;
extern const CommandFamily kNdisFamily;
extern const CommandFamily kStoreFamily;

// reg.exe's own syntax, messages and exit codes (0 or 1), so it parses its words itself.
int runReg(const std::vector<std::string>& words, Console& console);
extern const char kRegSummary[];

}  // namespace zettool

#endif
