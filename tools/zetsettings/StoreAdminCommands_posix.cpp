// The portable store itself: make it for a deployment, look at it, back it up and restore it.
#include <sys/stat.h>

#include "Commands.h"
#include "Output.h"
#include "zetsettings/platform/posix/StoreAdmin.h"

namespace zettool {
namespace {

namespace admin = zet::portable;

std::string modeText(mode_t mode)
{
    char text[8];
    snprintf(text, sizeof(text), "%04o", static_cast<unsigned>(mode & 07777));
    return text;
}

Node fileNode(const admin::StoreFileReport& file)
{
    Node node = Node::record().add("role", Node::text(file.role)).add("path", Node::text(file.path));
    node.add("present", Node::boolean(file.present));
    if (!file.present)
        return node;
    return node.add("owner", Node::number(file.owner))
        .add("group", Node::number(file.group))
        .add("mode", Node::text(modeText(file.mode)))
        .add("size", Node::number(static_cast<long long>(file.size)))
        .add("problem", file.problem.empty() ? Node::null() : Node::text(file.problem));
}

Node reportNode(const admin::StoreReport& report, const std::string& chosenBy)
{
    Node files = Node::list();
    long long bytes = 0;
    for (const admin::StoreFileReport& file : report.files) {
        files.push(fileNode(file));
        if (file.role == "data" || file.role == "lock")
            bytes += static_cast<long long>(file.size);
    }
    Node node = Node::record()
                    .add("directory", Node::text(report.directory))
                    .add("chosenBy", Node::text(chosenBy))
                    .add("exists", Node::boolean(report.exists))
                    .add("groupStore", Node::boolean(report.groupStore))
                    .add("mayRead", Node::boolean(report.mayRead))
                    .add("mayWrite", Node::boolean(report.mayWrite))
                    .add("key", Node::text(report.keyState))
                    .add("keyProblem", report.keyReason.empty() ? Node::null() : Node::text(report.keyReason));
    if (report.opened)
        node.add("entries", Node::number(static_cast<long long>(report.entries)))
            .add("sizeOnDisk", Node::number(bytes))
            .add("mapSize", Node::number(static_cast<long long>(report.mapSize)))
            .add("liveReaders", Node::number(static_cast<long long>(report.liveReaders)));
    else if (!report.openError.empty())
        node.add("openError", Node::text(report.openError));
    return node.add("files", files);
}

int runInfo(Args& args, Console& console, const std::string& directory, const std::string& chosenBy)
{
    args.finish();
    const admin::StoreReport report = admin::inspectStore(directory);
    printNode(console.out, reportNode(report, chosenBy), console.json);
    const std::vector<std::string> problems = report.problems();
    for (const std::string& problem : problems)
        console.err << "zetsettings store: " << problem << "\n";
    return problems.empty() ? kExitSuccess : kExitFailure;
}

int runStore(Args& args, Console& console)
{
    const std::string action = args.next("an action: init, info, backup or restore");
    std::string chosenBy;
    const std::string directory = admin::currentStoreDirectory(chosenBy);
    try {
        if (action == "info")
            return runInfo(args, console, directory, chosenBy);
        if (action == "init") {
            const std::string group = args.option("--group").value_or("");
            args.finish();
            for (const std::string& line : admin::initStore(directory, group))
                console.out << line << "\n";
            return kExitSuccess;
        }
        if (action == "backup") {
            const std::string file = args.next("the backup file");
            args.finish();
            admin::backupStore(directory, file);
            console.out << "backed up " << directory << " and its key to " << file << "\n";
            return kExitSuccess;
        }
        if (action == "restore") {
            const bool replace = args.flag("--replace");
            const std::string group = args.option("--group").value_or("");
            const std::string file = args.next("the backup file");
            args.finish();
            admin::restoreStore(directory, file, group, replace);
            console.out << "restored " << file << " into " << directory << " with its key\n";
            return kExitSuccess;
        }
    } catch (const admin::StoreAdminError& error) {
        throw CommandError(error.what());
    }
    throw UsageError("unknown action " + action);
}

std::string storeHelp()
{
    return "usage: zetsettings store init [--group NAME]\n"
           "       zetsettings store info\n"
           "       zetsettings store backup FILE\n"
           "       zetsettings store restore [--replace] [--group NAME] FILE\n"
           "\n"
           "The portable store in $ZET_REGISTRY_DIR, or /var/lib/zetsettings, and its machine key\n"
           "beside it (the directory's name with \".key\"). See docs/deployment.md.\n"
           "\n"
           "init      makes what is missing: the directory (this user's alone, mode 0700; with\n"
           "          --group, mode 2770 and that group), LMDB's files, the named mutex's lock\n"
           "          file and the key (0600; 0640 in a group store). Says what is there; refuses a\n"
           "          store or key open to others or owned by a stranger.\n"
           "info      which store and why, owners and modes, this process's rights, the key's state,\n"
           "          entries, size, map size and live readers; exit 1, naming each file, when one is\n"
           "          unsafe or has another mode than the store gives (init fixes the latter).\n"
           "backup    one new owner-only file: LMDB's consistent copy, taken while others write,\n"
           "          and the key.\n"
           "restore   makes the store and its key from a backup; --replace replaces a store or key\n"
           "          that is there (stop its users first).\n";
}

}  // namespace

const CommandFamily kStoreFamily = {"store", "the portable store: init, info, backup, restore", storeHelp, runStore, true};

}  // namespace zettool
