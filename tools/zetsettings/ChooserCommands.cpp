// The network chooser (its flag, its preferred list and the walk through it) and the alerts.
#include <cstdint>

#include "Commands.h"
#include "RecordFields.h"
#include "zetsettings/ZETSettings.h"

namespace zettool {
namespace {

Node entryNode(const ZETPreferredNetEntry& entry)
{
    return Node::record()
        .add("netName", Node::text(entry.netName))
        .add("macAddress", Node::bytes(entry.macAddress.bytes()))
        .add("entryFlag", Node::number(entry.entryFlag))
        .add("matchKind", Node::number(entry.matchKind))
        .add("matchByte1", Node::number(entry.matchByte1))
        .add("matchByte2", Node::number(entry.matchByte2));
}

Node listNode(const ZETPreferredNetworks& networks)
{
    const std::size_t position = networks.position;
    Node entries = Node::list();
    for (std::size_t i = 0; i < networks.entries.size(); ++i) {
        // The walk's place: the entry it handed out last.
        Node row = Node::record()
                       .add("place", Node::number(static_cast<long long>(i + 1)))
                       .add("walk", Node::text(i + 1 == position ? "<-" : ""));
        const Node entry = entryNode(networks.entries[i]);
        for (const auto& field : entry.fields())
            row.add(field.first, field.second);
        entries.push(row);
    }
    return Node::record()
        .add("position", Node::number(static_cast<long long>(position)))
        .add("walk", Node::text(position == 0 ? "idle" : "at entry " + std::to_string(position) + " of " +
                                                              std::to_string(networks.entries.size())))
        .add("entries", entries);
}

int next(Args& args, Console& console)
{
    const bool first = args.flag("--first");
    args.finish();
    bool wrapped = false;
    const boost::shared_ptr<ZETPreferredNetEntry> entry = ZETSettings::nextChooserPreferredNet(first, wrapped);
    if (!console.json && !entry) {
        console.out << "no entry: the list is empty, or the walk is idle (start it with --first)\n";
        return kExitSuccess;
    }
    printNode(console.out,
              Node::record().add("entry", entry ? entryNode(*entry) : Node::null()).add("wrapped", Node::boolean(wrapped)),
              console.json);
    return kExitSuccess;
}

const std::size_t kMacLength = 6;

bool hasEntry(const std::wstring& name)
{
    const boost::shared_ptr<ZETPreferredNetworks> list = ZETSettings::getChooserPreferredNets();
    for (const ZETPreferredNetEntry& entry : list->entries)
        if (entry.netName == name)
            return true;
    return false;
}

int front(Args& args)
{
    ZETPreferredNetEntry entry;
    if (const std::optional<std::string> mac = args.option("--mac")) {
        const std::string bytes = parseHexBytes(*mac, "--mac");
        if (bytes.size() != kMacLength)
            throw UsageError("--mac must be a MAC address of 6 bytes, not " + std::to_string(bytes.size()));
        entry.macAddress.assign(bytes.data(), bytes.size());
    }
    const std::pair<const char*, TSerVar<unsigned char>*> bytes[] = {{"--flag", &entry.entryFlag},
                                                                     {"--match-kind", &entry.matchKind},
                                                                     {"--match1", &entry.matchByte1},
                                                                     {"--match2", &entry.matchByte2}};
    for (const auto& byte : bytes)
        if (const std::optional<std::string> value = args.option(byte.first))
            *byte.second = parseByte(*value, byte.first);
    entry.netName = nonEmptyName(args, "the network's name");
    args.finish();
    ZETSettings::moveChooserPreferredNetToFront(entry);
    const boost::shared_ptr<ZETPreferredNetworks> stored = ZETSettings::getChooserPreferredNets();
    if (stored->entries.empty() || stored->entries.front().netName != entry.netName)
        throw CommandError("the entry was not stored: the registry refused the write");
    return kExitSuccess;
}

int runChooser(Args& args, Console& console)
{
    const std::string action = args.next("an action: active, list, next, stop, front or delete");
    if (action == "active") {
        const std::optional<std::string> state = args.nextIfAny();
        args.finish();
        if (state) {
            const bool wanted = parseSwitch(*state, "the state");
            ZETSettings::setChooserActive(wanted);
            if (ZETSettings::isChooserActive() != wanted)
                throw CommandError("the flag was not stored: the registry refused the write");
            return kExitSuccess;
        }
        const bool active = ZETSettings::isChooserActive();
        printNode(console.out, console.json ? Node::record().add("active", Node::boolean(active)) : Node::boolean(active),
                  console.json);
        return kExitSuccess;
    }
    if (action == "list") {
        args.finish();
        printNode(console.out, listNode(*ZETSettings::getChooserPreferredNets()), console.json);
        return kExitSuccess;
    }
    if (action == "next")
        return next(args, console);
    if (action == "stop") {
        args.finish();
        ZETSettings::stopChooserAutoAssociate();
        if (ZETSettings::getChooserPreferredNets()->position != 0)
            throw CommandError("the walk was not stopped: the registry refused the write");
        return kExitSuccess;
    }
    if (action == "front")
        return front(args);
    if (action == "delete") {
        const std::wstring name = nonEmptyName(args, "the network's name");
        args.finish();
        if (!hasEntry(name))
            throw CommandError("no entry for the network \"" + zetreg::wideToUtf8(name) + "\" in the list");
        ZETSettings::deleteChooserPreferredNet(name);
        if (hasEntry(name))
            throw CommandError("the entry was not removed: the registry refused the write");
        return kExitSuccess;
    }
    throw UsageError("unknown action " + action);
}

std::string chooserHelp()
{
    return "usage: zetsettings chooser active [on|off]\n"
           "       zetsettings chooser list\n"
           "       zetsettings chooser next [--first]\n"
           "       zetsettings chooser stop\n"
           "       zetsettings chooser front NAME [--mac HEX6] [--flag N] [--match-kind N]\n"
           "                                      [--match1 N] [--match2 N]\n"
           "       zetsettings chooser delete NAME\n"
           "\n"
           "The network chooser's flag and its preferred list, shared by every process.\n"
           "  active   shows the flag (asking stores 0 when none is there), or sets it\n"
           "  list     the list; the walk's place (the entry handed out last) is marked <-\n"
           "  next     the walk's next entry; --first starts at the top; an idle walk hands\n"
           "           out nothing until started. \"wrapped\" tells that it went round\n"
           "  stop     ends the walk\n"
           "  front    puts the entry first, dropping the entries that are the same network\n"
           "           (same name and match kind; with match kind 3 the same MAC address, else\n"
           "           the same match bytes); an entry not in the list is added\n"
           "  delete   removes every entry of that name (exact case); none there is a failure\n"
           "--mac takes the 6 bytes of a MAC address. Every change is read back, and a change\n"
           "the registry refused fails.\n";
}

int runAlert(Args& args, Console& console)
{
    const std::string action = args.next("an action: get or set");
    const int alert = static_cast<int>(parseInteger(args.next("the alert's number"), INT32_MIN, INT32_MAX, "the alert"));
    if (action == "get") {
        args.finish();
        const bool enabled = ZETSettings::isAlertNotificationEnabled(alert);
        printNode(console.out,
                  console.json ? Node::record().add("alert", Node::number(alert)).add("enabled", Node::boolean(enabled))
                               : Node::text(enabled ? "enabled" : "disabled"),
                  console.json);
        return kExitSuccess;
    }
    if (action == "set") {
        const bool enabled = parseSwitch(args.next("on or off"), "the state");
        args.finish();
        ZETSettings::updateAlertNotificationState(alert, enabled);
        if (ZETSettings::isAlertNotificationEnabled(alert) != enabled)
            throw CommandError("the state was not stored: the registry refused the write");
        return kExitSuccess;
    }
    throw UsageError("unknown action " + action);
}

std::string alertHelp()
{
    return "usage: zetsettings alert get N\n"
           "       zetsettings alert set N on|off\n"
           "\n"
           "The notification state of each numbered alert. An alert never seen counts as enabled,\n"
           "and asking for it records it so.\n";
}

}  // namespace

const CommandFamily kChooserFamily = {"chooser", "the network chooser: flag, list and walk", chooserHelp, runChooser};
const CommandFamily kAlertFamily = {"alert", "alert notification states", alertHelp, runAlert};

}  // namespace zettool
