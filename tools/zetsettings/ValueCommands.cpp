// The plain value families: base, configurator, netlib, guihelper, raseap, zetguard, each with
// its own default rule, and RasMan's EAP settings, which alone report failures.
#include <climits>

#include "Commands.h"
#include "Output.h"
#include "RegistryAccess.h"
#include "regfile/TextCodec.h"
#include "zetsettings/ZETSettings.h"

namespace zettool {
namespace {

// What a family's getter does with a default.
enum class DefaultRule {
    None,      // the getter takes none: a failed read gives -1 or the empty text
    Stored,    // a failed read stores the default and returns it
    WhenAsked  // a failed read returns the default, stored only with --write-default
};

struct ValueFamily {
    const char* name;
    const char* subkey;
    DefaultRule intRule;
    DefaultRule textRule;
    int (*getInt)(const std::wstring& name, int defaultValue, bool writeDefault);
    void (*setInt)(const std::wstring& name, int value);
    std::wstring (*getText)(const std::wstring& name, const std::wstring& defaultValue, bool writeDefault);
    void (*setText)(const std::wstring& name, const std::wstring& value);
};

const ValueFamily kBase = {
    "base", "", DefaultRule::WhenAsked, DefaultRule::WhenAsked,
    [](const std::wstring& n, int d, bool w) { return ZETSettings::intGetBaseValue(n, d, w); },
    [](const std::wstring& n, int v) { ZETSettings::intSetBaseValue(n, v); },
    [](const std::wstring& n, const std::wstring& d, bool w) { return ZETSettings::strGetBaseValue(n, d, w); },
    [](const std::wstring& n, const std::wstring& v) { ZETSettings::strSetBaseValue(n, v); },
};

const ValueFamily kConfigurator = {
    "configurator", "\\ConfiguratorSettings", DefaultRule::None, DefaultRule::None,
    [](const std::wstring& n, int, bool) { return ZETSettings::intGetConfiguratorValue(n); },
    [](const std::wstring& n, int v) { ZETSettings::intSetConfiguratorValue(n, v); },
    [](const std::wstring& n, const std::wstring&, bool) { return ZETSettings::strGetConfiguratorValue(n); },
    [](const std::wstring& n, const std::wstring& v) { ZETSettings::strSetConfiguratorValue(n, v); },
};

const ValueFamily kNetlib = {
    "netlib", "\\NetlibSettings", DefaultRule::Stored, DefaultRule::Stored,
    [](const std::wstring& n, int d, bool) { return ZETSettings::intGetNetlibValue(n, d); },
    [](const std::wstring& n, int v) { ZETSettings::intSetNetlibValue(n, v); },
    [](const std::wstring& n, const std::wstring& d, bool) { return ZETSettings::strGetNetlibValue(n, d); },
    [](const std::wstring& n, const std::wstring& v) { ZETSettings::strSetNetlibValue(n, v); },
};

const ValueFamily kGuiHelper = {
    "guihelper", "\\GuiHelper", DefaultRule::None, DefaultRule::Stored, nullptr, nullptr,
    [](const std::wstring& n, const std::wstring& d, bool) { return ZETSettings::strGetGuiHelperValue(n, d); },
    [](const std::wstring& n, const std::wstring& v) { ZETSettings::strSetGuiHelperValue(n, v); },
};

const ValueFamily kRasEap = {
    "raseap", "\\RasEapSettings", DefaultRule::Stored, DefaultRule::None,
    [](const std::wstring& n, int d, bool) { return ZETSettings::intGetRasEapValue(n, d); },
    [](const std::wstring& n, int v) { ZETSettings::intSetRasEapValue(n, v); },
    [](const std::wstring& n, const std::wstring&, bool) { return ZETSettings::strGetRasEapValue(n); },
    [](const std::wstring& n, const std::wstring& v) { ZETSettings::strSetRasEapValue(n, v); },
};

const ValueFamily kZetGuard = {
    "zetguard", "\\Settings", DefaultRule::WhenAsked, DefaultRule::WhenAsked,
    [](const std::wstring& n, int d, bool w) { return ZETSettings::intGetZetGuardValue(n, d, w); },
    [](const std::wstring& n, int v) { ZETSettings::intSetZetGuardValue(n, v); },
    [](const std::wstring& n, const std::wstring& d, bool w) { return ZETSettings::strGetZetGuardValue(n, d, w); },
    [](const std::wstring& n, const std::wstring& v) { ZETSettings::strSetZetGuardValue(n, v); },
};

// Numbers pass as the 32 bits of an int: 0xFFFFFFFF is -1.
int parseInt32(const std::string& text, const std::string& what)
{
    return static_cast<int>(static_cast<unsigned int>(parseInteger(text, INT_MIN, UINT_MAX, what)));
}

// The default of a get, by the family's rule; false for writeDefault where there is no choice.
template <typename T, typename Parse>
T takeDefault(Args& args, DefaultRule rule, bool& writeDefault, T none, Parse parse)
{
    writeDefault = rule == DefaultRule::WhenAsked && args.flag("--write-default");
    if (rule == DefaultRule::None)
        return none;
    const std::optional<std::string> given = args.option("--default");
    if (!given)
        throw UsageError(rule == DefaultRule::Stored ? "this getter needs --default: a failed read stores it"
                                                     : "this getter needs --default: a failed read returns it");
    return parse(*given);
}

// What the registry holds under the family's key, in Windows' form; false when nothing.
bool storedData(const ValueFamily& family, const std::wstring& name, zetreg::RegFileValue& value)
{
    KeyPath path;
    parseKeyPath(L"HKEY_LOCAL_MACHINE\\Software\\Orvane\\QXL" + zetreg::utf8ToWide(family.subkey), path);
    OpenKey key;
    if (openKey(path, KEY_READ, key) != ERROR_SUCCESS)
        return false;
    zetreg::RegFileValue wanted;
    wanted.name = name;
    return readValue(key.get(), wanted, value);
}

// The library's setters report nothing: a set counts when the registry holds what was set.
void requireStored(const ValueFamily& family, const std::wstring& name, uint32_t type, const std::string& data)
{
    zetreg::RegFileValue stored;
    if (!storedData(family, name, stored) || stored.type != type || stored.data != data)
        throw CommandError("the value was not stored: the registry refused the write");
}

std::string dwordBytes(int value)
{
    const uint32_t bits = static_cast<uint32_t>(value);
    std::string data;
    for (int i = 0; i < 4; ++i)
        data += static_cast<char>((bits >> (8 * i)) & 0xFF);
    return data;
}

void show(Console& console, const ValueFamily& family, const std::wstring& name, Node value)
{
    if (!console.json) {
        printNode(console.out, value, false);
        return;
    }
    printNode(console.out,
              Node::record().add("family", Node::text(family.name)).add("name", Node::text(name)).add("value", value),
              true);
}

int runValueFamily(const ValueFamily& family, Args& args, Console& console)
{
    const std::string action = args.next("an action: get-int, get-str, set-int or set-str");
    const bool isInt = action == "get-int" || action == "set-int";
    if (action != "get-int" && action != "get-str" && action != "set-int" && action != "set-str")
        throw UsageError("unknown action " + action);
    if (isInt && !family.getInt)
        throw UsageError(std::string(family.name) + " keeps text values only");
    const DefaultRule rule = isInt ? family.intRule : family.textRule;
    bool writeDefault = false;
    if (action == "get-int") {
        const int defaultValue = takeDefault<int>(args, rule, writeDefault, -1, [](const std::string& t) {
            return parseInt32(t, "--default");
        });
        const std::wstring name = zetreg::utf8ToWide(args.next("the value's name"));
        args.finish();
        show(console, family, name, Node::number(family.getInt(name, defaultValue, writeDefault)));
    } else if (action == "get-str") {
        const std::wstring defaultValue = takeDefault<std::wstring>(
            args, rule, writeDefault, std::wstring(), [](const std::string& t) { return zetreg::utf8ToWide(t); });
        const std::wstring name = zetreg::utf8ToWide(args.next("the value's name"));
        args.finish();
        show(console, family, name, Node::text(family.getText(name, defaultValue, writeDefault)));
    } else {
        const std::wstring name = zetreg::utf8ToWide(args.next("the value's name"));
        const std::string value = args.next("the value to store");
        args.finish();
        if (isInt) {
            const int number = parseInt32(value, "the value");
            family.setInt(name, number);
            requireStored(family, name, zetreg::kRegDword, dwordBytes(number));
        } else {
            const std::wstring text = zetreg::utf8ToWide(value);
            family.setText(name, text);
            requireStored(family, name, zetreg::kRegSz,
                          zetreg::utf16ToBytes(zetreg::wideToUtf16(text) + u'\0'));
        }
    }
    return kExitSuccess;
}

std::string ruleText(DefaultRule rule, bool isInt)
{
    switch (rule) {
    case DefaultRule::None:
        return isInt ? "no default: a failed read gives -1 and stores nothing"
                     : "no default: a failed read gives the empty text and stores nothing";
    case DefaultRule::Stored:
        return "--default VALUE needed: a failed read stores it and gives it";
    default:
        return "--default VALUE needed: a failed read gives it, and stores it with --write-default";
    }
}

// The options a getter takes, as the help shows them: only those it accepts.
std::string defaultOptions(DefaultRule rule, const std::string& placeholder)
{
    if (rule == DefaultRule::None)
        return std::string();
    if (rule == DefaultRule::Stored)
        return " --default " + placeholder;
    return " --default " + placeholder + " [--write-default]";
}

std::string familyHelp(const ValueFamily& family)
{
    const std::string name = family.name;
    std::string text = "usage: zetsettings " + name + " ACTION ...\n\nValues in HKLM\\Software\\Orvane\\QXL" +
                       family.subkey + ", read and written through the library.\n\n";
    if (family.getInt)
        text += "  get-int NAME" + defaultOptions(family.intRule, "N") + "\n      " + ruleText(family.intRule, true) + "\n";
    text += "  get-str NAME" + defaultOptions(family.textRule, "TEXT") + "\n      " + ruleText(family.textRule, false) +
            "\n";
    if (family.getInt)
        text += "  set-int NAME N      N is decimal or 0x hex; 32 bits, so 0xFFFFFFFF is -1\n";
    text += "  set-str NAME TEXT\n\nA set reads the value back and fails when the registry did not store it.\n";
    return text;
}

// ---- RasMan's EAP settings ------------------------------------------------------------------

const wchar_t kRasmanKey[] = L"HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\RasMan\\PPP\\EAP\\26";

int runRasman(Args& args, Console& console)
{
    const std::string action = args.next("an action: get or set");
    const std::wstring name = zetreg::utf8ToWide(args.next("the value's name"));
    DWORD code;
    if (action == "get") {
        args.finish();
        std::wstring value;
        code = ZETSettings::strGetRasmanEapSettings(name, value);
        if (code == 0) {
            show(console, ValueFamily{"rasman", "", DefaultRule::None, DefaultRule::None, nullptr, nullptr, nullptr,
                                      nullptr},
                 name, Node::text(value));
            return kExitSuccess;
        }
    } else if (action == "set") {
        const std::wstring value = zetreg::utf8ToWide(args.next("the value to store"));
        args.finish();
        code = ZETSettings::strSetRasmanEapSettings(name, value);
        if (code == 0)
            return kExitSuccess;
    } else {
        throw UsageError("unknown action " + action);
    }
    if (code == ERROR_FILE_NOT_FOUND) {
        KeyPath eapKey;
        parseKeyPath(kRasmanKey, eapKey);
        throw CommandError(keyExists(eapKey) ? "no value \"" + zetreg::wideToUtf8(name) + "\" in " +
                                                   zetreg::wideToUtf8(kRasmanKey)
                                             : "the key " + zetreg::wideToUtf8(kRasmanKey) +
                                                   " does not exist (the library never creates it)");
    }
    throw CommandError("error " + std::to_string(code) + ": " + errorMessage(static_cast<LONG>(code)));
}

std::string rasmanHelp()
{
    return "usage: zetsettings rasman get NAME\n"
           "       zetsettings rasman set NAME TEXT\n\n"
           "Text values of HKLM\\SYSTEM\\CurrentControlSet\\Services\\RasMan\\PPP\\EAP\\26, which the\n"
           "library never creates. Unlike every other family these report failure: the Windows\n"
           "error code, and exit status 1.\n";
}

}  // namespace

const CommandFamily kBaseFamily = {"base", "numbers and texts on the base key itself",
                                   [] { return familyHelp(kBase); },
                                   [](Args& a, Console& c) { return runValueFamily(kBase, a, c); }};
const CommandFamily kConfiguratorFamily = {"configurator", "the configurator's values (no defaults)",
                                           [] { return familyHelp(kConfigurator); },
                                           [](Args& a, Console& c) { return runValueFamily(kConfigurator, a, c); }};
const CommandFamily kNetlibFamily = {"netlib", "the network library's values (defaults stored)",
                                     [] { return familyHelp(kNetlib); },
                                     [](Args& a, Console& c) { return runValueFamily(kNetlib, a, c); }};
const CommandFamily kGuiHelperFamily = {"guihelper", "the GUI helper's texts (defaults stored)",
                                        [] { return familyHelp(kGuiHelper); },
                                        [](Args& a, Console& c) { return runValueFamily(kGuiHelper, a, c); }};
const CommandFamily kRasEapFamily = {"raseap", "the RAS EAP module's values",
                                     [] { return familyHelp(kRasEap); },
                                     [](Args& a, Console& c) { return runValueFamily(kRasEap, a, c); }};
const CommandFamily kZetGuardFamily = {"zetguard", "the guard's values in Settings",
                                       [] { return familyHelp(kZetGuard); },
                                       [](Args& a, Console& c) { return runValueFamily(kZetGuard, a, c); }};
const CommandFamily kRasmanFamily = {"rasman", "RasMan's EAP type 26 settings (reports errors)", rasmanHelp,
                                     runRasman};

}  // namespace zettool
