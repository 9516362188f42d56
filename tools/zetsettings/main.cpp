// zetsettings: everything the settings library keeps, through the library's own operations,
// and the registry underneath, with reg.exe's habits.
#include <iostream>
#include <string>
#include <vector>

#include "Commands.h"
#include "RegistryAccess.h"
#include "StoreAccess.h"
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
    "       zetsettings --version\n"
    "\n"
    "Reads and changes what the zetsettings library keeps below\n"
    "HKEY_LOCAL_MACHINE\\Software\\Orvane\\QXL, through the library's own operations, and the\n"
    "registry itself. On Linux the registry is the portable store in $ZET_REGISTRY_DIR, or\n"
    "/var/lib/zetsettings.\n"
    "\n"
    "Commands:\n";

const char kToolHelpEnd[] =
    "\n"
    "What writes: every set, remove and delete; and these, which look like reads:\n"
    "  netlib get-*, guihelper get-str, raseap get-int\n"
    "                                  store the --default they are given when the value is\n"
    "                                  missing (base and zetguard only with --write-default)\n"
    "  chooser active, alert get       store the state they report when none is there\n"
    "  chooser next                    moves the walk\n"
    "  fallback-db networks OWNER      creates the owner when it is not there\n"
    "  params                          writes the whole table when its stored mode is 0\n"
    "  ndis check                      rewrites the list when failover is not last\n"
    "Read only: network list/show, user/login/fallback-keys show, fallback-db owners/show,\n"
    "configurator get-*, chooser list, rasman get (the first use of a family makes its empty\n"
    "key); reg query and reg export write nothing. A command that can't use the store\n"
    "(no right to write it, ZET_REGISTRY_DIR empty or not a directory) says so and fails.\n"
    "\n"
    "Options:\n"
    "  --json     print for scripts: one JSON document on standard output (see zetsettings(1))\n"
    "  --help     this text; \"zetsettings COMMAND --help\" tells about one command\n"
    "  --version  the tool's version\n"
    "\n"
    "Exit status: 0 success, 1 failure (a thing asked for is not there, the store can't be\n"
    "used, a write was refused), 2 bad arguments (reg: 1 for both, as reg.exe).\n";

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
        if (!family.checksStoreItself)
            zettool::requireWritableStore();
        return family.run(args, console);
    } catch (const zettool::UsageError& error) {
        console.err << "zetsettings " << family.name << ": " << zettool::clipped(error.what()) << "\n"
                    << "Try \"zetsettings " << family.name << " --help\".\n";
        return zettool::kExitUsage;
    } catch (const zettool::CommandError& error) {
        console.err << "zetsettings " << family.name << ": " << zettool::clipped(error.what()) << "\n";
    } catch (const JetByteTools::CRegistryKey::Exception& error) {
        console.err << "zetsettings " << family.name << ": the registry refused: "
                    << zettool::errorMessage(static_cast<LONG>(error.GetError())) << "\n";
    } catch (const std::exception& error) {
        console.err << "zetsettings " << family.name << ": " << zettool::clipped(error.what()) << "\n";
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
    if (command == "--version") {
        std::cout << "zetsettings " << ZETSETTINGS_VERSION << "\n";
        return zettool::kExitSuccess;
    }
    if (command == "reg")
        return zettool::runReg(words, console);
    for (const zettool::CommandFamily& family : zettool::commandFamilies())
        if (command == family.name)
            return runFamily(family, std::move(words), console);
    std::cerr << "zetsettings: unknown command \"" << zettool::clipped(command) << "\"\nTry \"zetsettings --help\".\n";
    return zettool::kExitUsage;
}
