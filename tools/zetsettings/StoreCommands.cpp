// The encrypted whole-value stores (fallback keys, user settings, login data) and the clear
// fallback database, each with the operations its store allows.
#include <boost/make_shared.hpp>

#include "Commands.h"
#include "RecordFields.h"
#include "Secrets.h"
#include "zetsettings/records/RecordNames.h"
#include "zetsettings/ZETSettings.h"

namespace zettool {
namespace {

std::string narrow(const std::wstring& text) { return zetreg::wideToUtf8(text); }

// ---- fallback keys: one encrypted map, read and replaced whole ------------------------------

typedef std::map<std::wstring, ZETFallbackKeySettings> FallbackKeyMap;

Node fallbackKeyNode(const std::wstring& key, const ZETFallbackKeySettings& entry)
{
    return Node::record()
        .add("key", Node::text(key))
        .add("keyText1", Node::text(entry.keyText1))
        .add("keyText2", Node::text(entry.keyText2))
        .add("keyBytes", Node::bytes(entry.keyBytes));
}

int runFallbackKeys(Args& args, Console& console)
{
    const std::string action = args.next("an action: show, set or remove");
    // A map that does not open reads as empty: showing it, or storing one entry over it, would lose it.
    requireStoredValueOpens(zet::records::kFallbackKeysValue, "fallback keys");
    if (action == "show") {
        args.finish();
        Node entries = Node::list();
        const boost::shared_ptr<FallbackKeyMap> keys = ZETSettings::getFallbackKeySettings();
        for (const auto& entry : *keys)
            entries.push(fallbackKeyNode(entry.first, entry.second));
        printNode(console.out, entries, console.json);
        return kExitSuccess;
    }
    if (action != "set" && action != "remove")
        throw UsageError("unknown action " + action);
    const std::optional<std::string> text1 = action == "set" ? args.option("--text1") : std::nullopt;
    const std::optional<std::string> text2 = action == "set" ? args.option("--text2") : std::nullopt;
    const std::optional<std::string> bytes = action == "set" ? bytesOption(args, "bytes") : std::nullopt;
    const std::wstring key = wide(args.next("the key's name"));
    args.finish();

    boost::shared_ptr<FallbackKeyMap> keys = ZETSettings::getFallbackKeySettings();
    const FallbackKeyMap::iterator found = keys->find(key);
    if (action == "remove") {
        if (found == keys->end())
            throw CommandError("no fallback key \"" + narrow(key) + "\"");
        keys->erase(found);
    } else {
        // The record can be copied but not assigned: build the new entry and put it in place.
        ZETFallbackKeySettings entry = found == keys->end() ? ZETFallbackKeySettings() : found->second;
        if (text1)
            entry.keyText1 = wide(*text1);
        if (text2)
            entry.keyText2 = wide(*text2);
        if (bytes)
            entry.keyBytes = ser_string(*bytes);
        if (found != keys->end())
            keys->erase(found);
        keys->emplace(key, entry);
    }
    // The one store whose writes report failure: a refusal reaches main as the registry's error.
    ZETSettings::setFallbackKeySettings(keys);
    return kExitSuccess;
}

std::string fallbackKeysHelp()
{
    return "usage: zetsettings fallback-keys show\n"
           "       zetsettings fallback-keys set KEY [--text1 TEXT] [--text2 TEXT]\n"
           "                                     [--bytes-hex HEX | --bytes-text TEXT]\n"
           "       zetsettings fallback-keys remove KEY\n"
           "\n"
           "The machine's fallback keys: one encrypted map that the library reads and replaces\n"
           "whole. set and remove read the map, change one entry and store the map again; set\n"
           "keeps the fields not given. Keys keep their case.\n";
}

// ---- user settings: one encrypted map, users matched in any case -----------------------------

Node userNode(const std::wstring& user, const ZETUserSettings& settings)
{
    return Node::record()
        .add("user", Node::text(user))
        .add("userText", Node::text(settings.userText))
        .add("userBytes", Node::bytes(settings.userBytes));
}

int runUser(Args& args, Console& console)
{
    const std::string action = args.next("an action: show, set or remove");
    if (action != "show" && action != "set" && action != "remove")
        throw UsageError("unknown action " + action);
    const std::optional<std::string> text = action == "set" ? args.option("--text") : std::nullopt;
    const std::optional<std::string> bytes = action == "set" ? bytesOption(args, "bytes") : std::nullopt;
    const std::wstring user = wide(args.next("the user's name"));
    args.finish();
    requireStoredValueOpens(zet::records::kUserSettingsValue, "user settings");

    boost::shared_ptr<ZETUserSettings> settings = ZETSettings::getUserSettings(user);
    if (action == "show" || action == "remove") {
        if (!settings)
            throw CommandError("no settings for the user \"" + narrow(user) + "\"");
        if (action == "show") {
            printNode(console.out, userNode(user, *settings), console.json);
            return kExitSuccess;
        }
        ZETSettings::removeUserSettings(user);
        if (ZETSettings::getUserSettings(user))
            throw CommandError("the settings were not removed: the registry refused the write");
        return kExitSuccess;
    }
    if (!settings)
        settings = boost::make_shared<ZETUserSettings>();
    if (text)
        settings->userText = wide(*text);
    if (bytes)
        settings->userBytes = ser_string(*bytes);
    ZETSettings::setUserSettings(user, settings);
    const boost::shared_ptr<ZETUserSettings> stored = ZETSettings::getUserSettings(user);
    if (!stored || stored->userText != settings->userText || stored->userBytes != settings->userBytes)
        throw CommandError("the settings were not stored: the registry refused the write");
    return kExitSuccess;
}

std::string userHelp()
{
    return "usage: zetsettings user show USER\n"
           "       zetsettings user set USER [--text TEXT] [--bytes-hex HEX | --bytes-text TEXT]\n"
           "       zetsettings user remove USER\n"
           "\n"
           "Per-user settings, kept together in one encrypted map. User names match in any case.\n"
           "set keeps the fields not given. The library has no list of users.\n";
}

// ---- login data: one encrypted record; the switches decide what is kept ---------------------

int runLogin(Args& args, Console& console)
{
    const std::string action = args.next("an action: show, set or remove");
    if (action == "show") {
        const bool reveal = args.flag("--secret");
        args.finish();
        requireStoredValueOpens(zet::records::kLoginSettingsValue, "login");
        std::wstring user, password;
        bool enabled, keep, dependent;
        ZETSettings::getLoginData(user, password, enabled, keep, dependent);
        printNode(console.out,
                  Node::record()
                      .add("userName", Node::text(user))
                      .add("password", secretField(Node::text(password), reveal))
                      .add("loginEnabled", Node::boolean(enabled))
                      .add("keepPassword", Node::boolean(keep))
                      .add("dependentFlag", Node::boolean(dependent)),
                  console.json);
        return kExitSuccess;
    }
    if (action == "set") {
        const std::optional<std::string> user = args.option("--user");
        const std::optional<std::string> password = args.option("--password");
        const bool enabled = args.flag("--enabled");
        const bool keep = args.flag("--keep-password");
        const bool dependent = args.flag("--dependent");
        args.finish();
        if (!user)
            throw UsageError("set needs --user");
        ZETSettings::setLoginData(wide(*user), wide(password.value_or("")), enabled, keep, dependent);
        std::wstring storedUser, storedPassword;
        bool storedEnabled = false, storedKeep, storedDependent;
        ZETSettings::getLoginData(storedUser, storedPassword, storedEnabled, storedKeep, storedDependent);
        if (!storedValueExists(zet::records::kLoginSettingsValue) || storedUser != wide(*user) ||
            storedEnabled != enabled)
            throw CommandError("the login was not stored: the registry refused the write");
        return kExitSuccess;
    }
    if (action == "remove") {
        args.finish();
        if (!storedValueExists(zet::records::kLoginSettingsValue))
            throw CommandError("no login is stored");
        ZETSettings::removeLoginData();
        if (storedValueExists(zet::records::kLoginSettingsValue))
            throw CommandError("the login was not removed: the registry refused the write");
        return kExitSuccess;
    }
    throw UsageError("unknown action " + action);
}

std::string loginHelp()
{
    return "usage: zetsettings login show [--secret]\n"
           "       zetsettings login set --user NAME [--password TEXT] [--enabled]\n"
           "                             [--keep-password] [--dependent]\n"
           "       zetsettings login remove\n"
           "\n"
           "The machine's one login, encrypted. The switches form a chain: --keep-password counts\n"
           "only with --enabled, --dependent only with both, and the password is kept only when\n"
           "--keep-password counts. The password is shown only with --secret.\n";
}

// ---- fallback database: one clear record per owner and network ------------------------------

Node fallbackNode(const ZETFallbackSettings& record)
{
    return Node::record()
        .add("owner", Node::text(record.owner))
        .add("network", Node::text(record.network))
        .add("fallbackBytes1", Node::bytes(record.fallbackBytes1))
        .add("fallbackBytes2", Node::bytes(record.fallbackBytes2));
}

Node textList(const std::vector<std::wstring>& names)
{
    Node list = Node::list();
    for (const std::wstring& name : names)
        list.push(Node::text(name));
    return list;
}

int runFallbackDb(Args& args, Console& console)
{
    const std::string action = args.next("an action: owners, networks, show, set or remove");
    if (action == "owners") {
        args.finish();
        printNode(console.out, textList(*ZETSettings::getListOfOwners()), console.json);
        return kExitSuccess;
    }
    if (action == "networks") {
        const std::wstring owner = wide(args.next("the owner"));
        args.finish();
        printNode(console.out, textList(*ZETSettings::getListOfNetworks(owner)), console.json);
        return kExitSuccess;
    }
    if (action != "show" && action != "set" && action != "remove")
        throw UsageError("unknown action " + action);
    const std::optional<std::string> bytes1 = action == "set" ? bytesOption(args, "bytes1") : std::nullopt;
    const std::optional<std::string> bytes2 = action == "set" ? bytesOption(args, "bytes2") : std::nullopt;
    const std::wstring owner = wide(args.next("the owner"));
    const std::wstring network = wide(args.next("the network"));
    args.finish();

    boost::shared_ptr<ZETFallbackSettings> record = ZETSettings::getFallbackSettings(owner, network);
    const std::string which = "owner \"" + narrow(owner) + "\" and network \"" + narrow(network) + "\"";
    if (action == "show" || action == "remove") {
        if (!record)
            throw CommandError("no record for the " + which);
        if (action == "show") {
            printNode(console.out, fallbackNode(*record), console.json);
            return kExitSuccess;
        }
        ZETSettings::removeFallbackSettings(owner, network);
        if (ZETSettings::getFallbackSettings(owner, network))
            throw CommandError("the record was not removed: the registry refused the write");
        return kExitSuccess;
    }
    if (!record)
        record = boost::make_shared<ZETFallbackSettings>();
    record->owner = owner;
    record->network = network;
    if (bytes1)
        record->fallbackBytes1 = ser_string(*bytes1);
    if (bytes2)
        record->fallbackBytes2 = ser_string(*bytes2);
    ZETSettings::setFallbackSettings(record);
    const boost::shared_ptr<ZETFallbackSettings> stored = ZETSettings::getFallbackSettings(owner, network);
    if (!stored || stored->fallbackBytes1 != record->fallbackBytes1 || stored->fallbackBytes2 != record->fallbackBytes2)
        throw CommandError("the record was not stored: the registry refused the write");
    return kExitSuccess;
}

std::string fallbackDbHelp()
{
    return "usage: zetsettings fallback-db owners\n"
           "       zetsettings fallback-db networks OWNER\n"
           "       zetsettings fallback-db show OWNER NETWORK\n"
           "       zetsettings fallback-db set OWNER NETWORK [--bytes1-hex HEX | --bytes1-text TEXT]\n"
           "                                                 [--bytes2-hex HEX | --bytes2-text TEXT]\n"
           "       zetsettings fallback-db remove OWNER NETWORK\n"
           "\n"
           "The fallback database: one clear record per owner and network. Owners match in any\n"
           "case and are stored in lower case; networks keep their case. As in the library,\n"
           "listing the networks of an owner that is not there creates the owner, and an owner\n"
           "stays listed after its last network is removed.\n";
}

}  // namespace

const CommandFamily kFallbackKeysFamily = {"fallback-keys", "the machine's fallback keys (encrypted)",
                                           fallbackKeysHelp, runFallbackKeys};
const CommandFamily kUserFamily = {"user", "per-user settings (encrypted)", userHelp, runUser};
const CommandFamily kLoginFamily = {"login", "the machine's login (encrypted)", loginHelp, runLogin};
const CommandFamily kFallbackDbFamily = {"fallback-db", "the fallback database by owner and network",
                                         fallbackDbHelp, runFallbackDb};

}  // namespace zettool
