// zetsettings network: the profiles of wireless networks, one record per network name.
#include <boost/make_shared.hpp>

#include "Commands.h"
#include "RecordFields.h"
#include "Secrets.h"
#include "zetsettings/ZETSettings.h"

namespace zettool {
namespace {

Node profileNode(const std::wstring& name, const ZETNetworkSettings& profile, bool reveal)
{
    return Node::record()
        .add("name", Node::text(name))
        .add("profileText", Node::text(profile.profileText))
        .add("profileFlag1", Node::number(profile.profileFlag1))
        .add("profileFlag2", Node::number(profile.profileFlag2))
        .add("profileFlag3", Node::number(profile.profileFlag3))
        .add("profileFlag4", Node::number(profile.profileFlag4))
        .add("protectedBlob", secretField(Node::bytes(profile.protectedBlob.bytes()), reveal))
        .add("plainBlob", Node::bytes(profile.plainBlob.bytes()));
}

bool sameProfile(const ZETNetworkSettings& a, const ZETNetworkSettings& b, const ZETBuf& plainSecret)
{
    return a.profileText == b.profileText && a.profileFlag1 == b.profileFlag1 && a.profileFlag2 == b.profileFlag2 &&
           a.profileFlag3 == b.profileFlag3 && a.profileFlag4 == b.profileFlag4 && a.plainBlob == b.plainBlob &&
           b.protectedBlob == plainSecret;
}

int list(Args& args, Console& console)
{
    args.finish();
    Node names = Node::list();
    for (const std::wstring& name : ZETSettings::getNetworkSettingsKeys())
        names.push(Node::text(name));
    printNode(console.out, names, console.json);
    return kExitSuccess;
}

int show(Args& args, Console& console)
{
    const bool reveal = args.flag("--secret");
    const std::wstring name = nonEmptyName(args, "the network's name");
    args.finish();
    const boost::shared_ptr<ZETNetworkSettings> profile = ZETSettings::getNetworkSettings(name);
    if (!profile)
        throw CommandError("no profile for the network \"" + zetreg::wideToUtf8(name) + "\"");
    if (reveal)
        requireProfileSecretOpens(name, profile->protectedBlob.bytes());
    printNode(console.out, profileNode(name, *profile, reveal), console.json);
    return kExitSuccess;
}

int set(Args& args, Console&)
{
    // Fields not given keep what the stored profile holds.
    boost::shared_ptr<ZETNetworkSettings> profile;
    const std::optional<std::string> text = args.option("--text");
    std::optional<std::string> secret = bytesOption(args, "secret");
    std::optional<std::string> plain = bytesOption(args, "plain");
    TSerVar<unsigned char> flags[4];
    bool flagGiven[4];
    for (int i = 0; i < 4; ++i) {
        const std::string option = "--flag" + std::to_string(i + 1);
        const std::optional<std::string> value = args.option(option);
        flagGiven[i] = value.has_value();
        if (value)
            flags[i] = parseByte(*value, option);
    }
    const std::wstring name = nonEmptyName(args, "the network's name");
    args.finish();

    profile = ZETSettings::getNetworkSettings(name);
    if (!profile)
        profile = boost::make_shared<ZETNetworkSettings>();
    else if (!secret)
        requireProfileSecretOpens(name, profile->protectedBlob.bytes());
    if (text)
        profile->profileText = wide(*text);
    TSerVar<unsigned char>* members[4] = {&profile->profileFlag1, &profile->profileFlag2, &profile->profileFlag3,
                                          &profile->profileFlag4};
    for (int i = 0; i < 4; ++i)
        if (flagGiven[i])
            *members[i] = flags[i];
    if (secret)
        profile->protectedBlob.assign(secret->data(), secret->size());
    if (plain)
        profile->plainBlob.assign(plain->data(), plain->size());

    // The store leaves ciphertext in the record it was given; keep the plain secret to compare.
    const ZETBuf plainSecret = profile->protectedBlob;
    ZETSettings::setNetworkSettings(name, profile);
    const boost::shared_ptr<ZETNetworkSettings> stored = ZETSettings::getNetworkSettings(name);
    if (!stored || !sameProfile(*profile, *stored, plainSecret))
        throw CommandError("the profile was not stored: the registry refused the write");
    return kExitSuccess;
}

int remove(Args& args, Console& console)
{
    const bool reveal = args.flag("--secret");
    const std::wstring name = nonEmptyName(args, "the network's name");
    args.finish();
    if (reveal) {
        const boost::shared_ptr<ZETNetworkSettings> stored = ZETSettings::getNetworkSettings(name);
        if (stored)
            requireProfileSecretOpens(name, stored->protectedBlob.bytes());
    }
    const boost::shared_ptr<ZETNetworkSettings> removed = ZETSettings::deleteNetworkSettings(name);
    if (!removed)
        throw CommandError("no profile for the network \"" + zetreg::wideToUtf8(name) + "\"");
    printNode(console.out, profileNode(name, *removed, reveal), console.json);
    return kExitSuccess;
}

int run(Args& args, Console& console)
{
    const std::string action = args.next("an action: list, show, set or delete");
    if (action == "list")
        return list(args, console);
    if (action == "show")
        return show(args, console);
    if (action == "set")
        return set(args, console);
    if (action == "delete")
        return remove(args, console);
    throw UsageError("unknown action " + action);
}

std::string help()
{
    return "usage: zetsettings network list\n"
           "       zetsettings network show NAME [--secret]\n"
           "       zetsettings network set NAME [--text TEXT] [--flag1 N] .. [--flag4 N]\n"
           "                               [--secret-hex HEX | --secret-text TEXT]\n"
           "                               [--plain-hex HEX | --plain-text TEXT]\n"
           "       zetsettings network delete NAME [--secret]\n"
           "\n"
           "One profile per wireless network; names match with their case. protectedBlob, the\n"
           "secret member, is stored encrypted and shown only with --secret. set keeps the stored\n"
           "fields that are not given (a new profile starts empty), then reads the profile back\n"
           "and fails if it was not stored. delete shows what it removed. Flags are 0 to 255.\n"
           "A secret that does not open with this machine's key is never shown nor carried over:\n"
           "show --secret fails, and set fails unless it is given a new secret.\n";
}

}  // namespace

const CommandFamily kNetworkFamily = {"network", "wireless network profiles", help, run};

}  // namespace zettool
