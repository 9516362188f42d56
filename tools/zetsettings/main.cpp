// zetsettings: everything the settings library keeps, through the library's own operations,
// and the registry underneath, with reg.exe's habits.
#include <iostream>
#include <string>
#include <vector>

#include "Commands.h"
#include "RegistryAccess.h"
#include "zetsettings/components/CRegistryKey.h"

namespace zettool {

const std::vector<CommandFamily>& commandFamilies()
{
    static const std::vector<CommandFamily> families = {
        kBaseFamily, kConfiguratorFamily, kNetlibFamily, kGuiHelperFamily, kRasEapFamily, kZetGuardFamily,
        kRasmanFamily, kNetworkFamily, kFallbackKeysFamily, kUserFamily, kLoginFamily, kFallbackDbFamily,
        kChooserFamily, kAlertFamily, kParamsFamily, kNdisFamily, kStoreFamily,
    };
    return families;
}

}  // namespace zettool

namespace {

const char kToolHelp[] =
    "usage: zetsettings [--json] COMMAND [ARGUMENTS]\n"
    "\n"
    "Reads and changes what the zetsettings library keeps below\n"
    "HKEY_LOCAL_MACHINE\\Software\\Orvane\\QXL, through the library's own operations, and the\n"
    "registry itself. On Linux the registry is the portable store in $ZET_REGISTRY_DIR, or\n"
    "/var/lib/zetsettings.\n"
    "\n"
    "Commands:\n";

const char kToolHelpEnd[] =
    "\n"
    "Options:\n"
    "  --json     print for scripts (every command but reg add/delete/export/import)\n"
    "  --help     this text; \"zetsettings COMMAND --help\" tells about one command\n"
    "\n"
    "Exit status: 0 success, 1 failure, 2 bad arguments (reg: 1 for both, as reg.exe).\n";

void printToolHelp(std::ostream& out)
{
    out << kToolHelp;
    for (const zettool::CommandFamily& family : zettool::commandFamilies())
        out << "  " << family.name << std::string(15 - std::string(family.name).size(), ' ') << family.summary << "\n";
    out << "  reg            " << zettool::kRegSummary << "\n" << kToolHelpEnd;
}

bool wantsHelp(const std::vector<std::string>& words)
{
    for (const std::string& word : words)
        if (word == "--help" || word == "-h")
            return true;
    return false;
}

int runFamily(const zettool::CommandFamily& family, std::vector<std::string> words, zettool::Console& console)
{
    if (wantsHelp(words)) {
        console.out << family.help();
        return zettool::kExitSuccess;
    }
    try {
        zettool::Args args(std::move(words));
        return family.run(args, console);
    } catch (const zettool::UsageError& error) {
        console.err << "zetsettings " << family.name << ": " << error.what() << "\n"
                    << "Try \"zetsettings " << family.name << " --help\".\n";
        return zettool::kExitUsage;
    } catch (const zettool::CommandError& error) {
        console.err << "zetsettings " << family.name << ": " << error.what() << "\n";
    } catch (const JetByteTools::CRegistryKey::Exception& error) {
        console.err << "zetsettings " << family.name << ": the registry refused: "
                    << zettool::errorMessage(static_cast<LONG>(error.GetError())) << "\n";
    } catch (const std::exception& error) {
        console.err << "zetsettings " << family.name << ": " << error.what() << "\n";
    }
    return zettool::kExitFailure;
}

}  // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> words(argv + 1, argv + argc);
    bool json = false;
    // --json counts before the command and among its own words alike.
    for (auto it = words.begin(); it != words.end();) {
        if (*it == "--json") {
            json = true;
            it = words.erase(it);
        } else {
            ++it;
        }
    }
    zettool::Console console{std::cin, std::cout, std::cerr, json};
    if (words.empty()) {
        printToolHelp(std::cerr);
        return zettool::kExitUsage;
    }
    const std::string command = words.front();
    words.erase(words.begin());
    if (command == "--help" || command == "-h" || command == "help") {
        printToolHelp(std::cout);
        return zettool::kExitSuccess;
    }
    if (command == "reg")
        return zettool::runReg(words, console);
    for (const zettool::CommandFamily& family : zettool::commandFamilies())
        if (command == family.name)
            return runFamily(family, std::move(words), console);
    std::cerr << "zetsettings: unknown command \"" << command << "\"\nTry \"zetsettings --help\".\n";
    return zettool::kExitUsage;
}
