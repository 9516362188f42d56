// On Windows the settings live in the system's registry: there is no store to administer.
#include "Commands.h"

namespace zettool {
namespace {

int runStore(Args&, Console&)
{
    throw CommandError("the store commands manage the portable store; on Windows the system's registry is used");
}

std::string storeHelp()
{
    return "usage: zetsettings store init|info|backup|restore\n"
           "\n"
           "Manages the portable store of Linux; on Windows the system's registry is used.\n";
}

}  // namespace

const CommandFamily kStoreFamily = {"store", "the portable store (Linux only)", storeHelp, runStore, true};

}  // namespace zettool
