// zetsettings reg: reg.exe's query, add, delete, export and import on the machine's registry,
// with its arguments, its output and its exit codes (0 success, 1 failure).
#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>

#include "Commands.h"
#include "Output.h"
#include "RegistryAccess.h"
#include "Secrets.h"
#include "StoreAccess.h"
#include "regfile/RegFileReader.h"
#include "regfile/RegFileWriter.h"
#include "regfile/TextCodec.h"
#include "zetsettings/platform/RegistryBatch.h"

namespace zettool {

const char kRegSummary[] = "the registry itself, as reg.exe: query, add, delete, export, import";

namespace {

using zetreg::RegFileValue;

const int kRegFailure = 1;
const char kSuccess[] = "The operation completed successfully.\n";
const char kNotFound[] = "ERROR: The system was unable to find the specified registry key or value.\n";
const char kCancelled[] = "The operation was canceled by the user.\n";

const char kRegUsage[] =
    "REG Operation [Parameter List]\n"
    "\n"
    "  Operation  [ QUERY | ADD | DELETE | EXPORT | IMPORT ]\n"
    "\n"
    "Return Code: (Except for REG COMPARE)\n"
    "\n"
    "  0 - Successful\n"
    "  1 - Failed\n"
    "\n"
    "For help on a specific operation type:\n"
    "\n"
    "  REG Operation /?\n"
    "\n"
    "Roots: HKLM, HKCU, HKCR, HKU (or their long names). On Linux the registry is the portable\n"
    "store in $ZET_REGISTRY_DIR, or /var/lib/zetsettings. Quote key paths: 'HKLM\\Software'.\n";

const std::map<std::string, const char*> kOperationUsage = {
    {"QUERY",
     "REG QUERY KeyName [/v [ValueName] | /ve] [/s]\n"
     "\n"
     "  KeyName  ROOTKEY\\SubKey, ROOTKEY one of HKLM, HKCU, HKCR, HKU\n"
     "  /v       the value ValueName; with /s, searched for in every subkey\n"
     "  /ve      the default value (empty name)\n"
     "  /s       every subkey and value below the key\n"
     "\n"
     "Examples:\n"
     "  REG QUERY HKLM\\Software\\Orvane\\QXL /s\n"
     "  REG QUERY HKLM\\Software\\Orvane\\QXL\\Settings /v ZET_NC_ACTIVE\n"},
    {"ADD",
     "REG ADD KeyName [/v ValueName | /ve] [/t Type] [/s Separator] [/d Data] [/f]\n"
     "\n"
     "  /v       the value to add\n"
     "  /ve      the default value (empty name)\n"
     "  /t       REG_SZ (the default), REG_MULTI_SZ, REG_EXPAND_SZ, REG_DWORD, REG_QWORD,\n"
     "           REG_BINARY, REG_NONE\n"
     "  /s       the separator of REG_MULTI_SZ strings in Data; \\0 when not given\n"
     "  /d       the data: text, a number (decimal or 0x hex), or hex digits for REG_BINARY\n"
     "  /f       overwrite an existing value without asking\n"
     "\n"
     "Examples:\n"
     "  REG ADD HKLM\\Software\\Orvane\\QXL\\Settings /v ZET_NC_ACTIVE /t REG_DWORD /d 1 /f\n"},
    {"DELETE",
     "REG DELETE KeyName [/v ValueName | /ve | /va] [/f]\n"
     "\n"
     "  /v       the value to delete\n"
     "  /ve      the default value\n"
     "  /va      every value of the key (its subkeys stay)\n"
     "  /f       without asking\n"
     "  Without /v, /ve or /va the key is deleted with everything below it.\n"},
    {"EXPORT",
     "REG EXPORT KeyName FileName [/y]\n"
     "\n"
     "  Writes the key and everything below it to FileName as a .reg file (UTF-16, version 5).\n"
     "  /y       overwrite an existing file without asking\n"
     "  FileName /dev/stdout writes the file alone to standard output (messages go to stderr).\n"
     "  Encrypted values open only with this machine's key: a warning says so; a backup that\n"
     "  keeps them is \"zetsettings store backup\". A key name with a line break in it is\n"
     "  written quoted, as value names are: [\"HKEY_LOCAL_MACHINE\\\\a\\nb\"].\n"},
    {"IMPORT",
     "REG IMPORT FileName [--dry-run]\n"
     "\n"
     "  Applies a .reg file (version 5, or REGEDIT4 in UTF-8 or Windows-1252). The file is\n"
     "  checked whole first, and a failure while applying undoes what was applied: an import\n"
     "  applies whole or not at all. It says how many keys and values it set and deleted, and\n"
     "  how many encrypted values do not open with this machine's key.\n"
     "  --dry-run  checks the file and says what it would do, writing nothing\n"},
};

std::string upper(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

std::string lower(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

// The words of one operation: switches by their lower-case name, and the rest in order.
struct RegWords {
    std::map<std::string, std::optional<std::string> > switches;
    std::vector<std::string> positional;
    bool help = false;

    bool has(const std::string& name) const { return switches.count(name) != 0; }
    std::string value(const std::string& name) const
    {
        const auto it = switches.find(name);
        return it == switches.end() || !it->second ? std::string() : *it->second;
    }
};

class RegSyntaxError : public std::runtime_error {
public:
    explicit RegSyntaxError(const std::string& detail = "") : std::runtime_error(detail) {}
};

class RegKeyNameError : public std::runtime_error {
public:
    RegKeyNameError() : std::runtime_error("") {}
};

// The switches of each operation; true for those that take a value.
const std::map<std::string, std::map<std::string, bool> > kSwitches = {
    {"QUERY", {{"v", true}, {"ve", false}, {"s", false}, {"reg:32", false}, {"reg:64", false}}},
    {"ADD", {{"v", true}, {"ve", false}, {"t", true}, {"s", true}, {"d", true}, {"f", false}, {"reg:32", false},
             {"reg:64", false}}},
    {"DELETE", {{"v", true}, {"ve", false}, {"va", false}, {"f", false}, {"reg:32", false}, {"reg:64", false}}},
    {"EXPORT", {{"y", false}, {"reg:32", false}, {"reg:64", false}}},
    {"IMPORT", {{"reg:32", false}, {"reg:64", false}, {"dry-run", false}, {"-dry-run", false}}},
};

RegWords parseWords(const std::string& operation, const std::vector<std::string>& words)
{
    const std::map<std::string, bool>& known = kSwitches.at(operation);
    RegWords parsed;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        const bool looksLikeSwitch = word.size() >= 2 && (word[0] == '/' || word[0] == '-');
        const std::string name = looksLikeSwitch ? lower(word.substr(1)) : std::string();
        if (looksLikeSwitch && (name == "?" || name == "h")) {
            parsed.help = true;
            continue;
        }
        const auto it = looksLikeSwitch ? known.find(name) : known.end();
        if (it == known.end()) {
            parsed.positional.push_back(word);
            continue;
        }
        if (parsed.has(name) || (name.compare(0, 4, "reg:") == 0 && (parsed.has("reg:32") || parsed.has("reg:64"))))
            throw RegSyntaxError("/" + name + " is given twice");
        std::optional<std::string> value;
        if (it->second) {
            if (i + 1 == words.size())
                throw RegSyntaxError("/" + name + " needs a value");
            value = words[++i];
        }
        parsed.switches[name] = value;
    }
    return parsed;
}

KeyPath keyPathOf(const std::string& text)
{
    KeyPath path;
    if (text.compare(0, 2, "\\\\") == 0 || !parseKeyPath(zetreg::utf8ToWide(text), path))
        throw RegKeyNameError();
    return path;
}

bool confirm(Console& console, const std::string& question)
{
    console.out << question << " (Yes/No)? " << std::flush;
    std::string answer;
    if (!std::getline(console.in, answer))
        return false;
    return !answer.empty() && (answer[0] == 'y' || answer[0] == 'Y');
}

std::string valueLabel(const RegFileValue& value)
{
    return value.isDefault ? "(Default)" : zetreg::wideToUtf8(value.name);
}

RegFileValue valueNamed(const RegWords& words)
{
    RegFileValue value;
    value.isDefault = words.has("ve");
    if (!value.isDefault)
        value.name = zetreg::utf8ToWide(words.value("v"));
    return value;
}

// reg.exe's word of success; with --json the exit status alone says it.
void succeeded(Console& console)
{
    if (!console.json)
        console.out << kSuccess;
}

// Opens a key that must exist; says why not (missing, or a store that can't be used) and gives false.
bool openExisting(const KeyPath& path, REGSAM access, OpenKey& key, Console& console)
{
    const LONG code = openKey(path, access, key);
    if (code == ERROR_SUCCESS)
        return true;
    if (code == ERROR_FILE_NOT_FOUND)
        console.err << kNotFound;
    else
        console.err << "ERROR: " << zetreg::wideToUtf8(path.full()) << ": " << errorMessage(code) << " (in "
                    << storeName() << ")\n";
    return false;
}

// ---- query ---------------------------------------------------------------------------------

const std::map<uint32_t, const char*> kTypeNames = {
    {0, "REG_NONE"}, {1, "REG_SZ"}, {2, "REG_EXPAND_SZ"}, {3, "REG_BINARY"}, {4, "REG_DWORD"},
    {5, "REG_DWORD_BIG_ENDIAN"}, {6, "REG_LINK"}, {7, "REG_MULTI_SZ"}, {8, "REG_RESOURCE_LIST"},
    {9, "REG_FULL_RESOURCE_DESCRIPTOR"}, {10, "REG_RESOURCE_REQUIREMENTS_LIST"}, {11, "REG_QWORD"},
};

std::string typeName(uint32_t type)
{
    const auto it = kTypeNames.find(type);
    if (it != kTypeNames.end())
        return it->second;
    char name[16];
    std::snprintf(name, sizeof name, "0x%x", static_cast<unsigned>(type));
    return name;
}

uint64_t littleEndian(const std::string& data)
{
    uint64_t number = 0;
    for (std::size_t i = data.size(); i-- > 0;)
        number = (number << 8) | static_cast<unsigned char>(data[i]);
    return number;
}

std::vector<std::string> multiStrings(const std::string& data)
{
    std::vector<std::string> strings;
    std::u16string text = zetreg::bytesToUtf16(data);
    while (!text.empty() && text.back() == u'\0')
        text.pop_back();
    std::size_t start = 0;
    while (start <= text.size() && !text.empty()) {
        const std::size_t end = text.find(u'\0', start);
        strings.push_back(zetreg::utf16ToUtf8(text.substr(start, end == std::u16string::npos ? end : end - start)));
        if (end == std::u16string::npos)
            break;
        start = end + 1;
    }
    return strings;
}

std::string textUpToNul(const std::string& data)
{
    std::u16string text = zetreg::bytesToUtf16(data);
    text.resize(std::min(text.size(), text.find(u'\0')));
    return zetreg::utf16ToUtf8(text);
}

std::string upperHex(const std::string& data)
{
    return upper(hexCompact(data));
}

// The data as reg query shows it.
std::string shownData(const RegFileValue& value)
{
    char number[24];
    switch (value.type) {
    case zetreg::kRegSz:
    case zetreg::kRegExpandSz:
        return textUpToNul(value.data);
    case zetreg::kRegMultiSz: {
        std::string joined;
        for (const std::string& part : multiStrings(value.data))
            joined += (joined.empty() ? "" : "\\0") + part;
        return joined;
    }
    case zetreg::kRegDword:
    case zetreg::kRegQword:
        if (value.data.size() != (value.type == zetreg::kRegDword ? 4u : 8u))
            return upperHex(value.data);
        std::snprintf(number, sizeof number, "0x%llx", static_cast<unsigned long long>(littleEndian(value.data)));
        return number;
    default:
        return upperHex(value.data);
    }
}

// The data read by its type: text, a list of texts, an unsigned number, or null for the types
// that are bytes only (and numbers of the wrong length).
Node typedValue(const RegFileValue& value)
{
    switch (value.type) {
    case zetreg::kRegSz:
    case zetreg::kRegExpandSz:
        return Node::text(textUpToNul(value.data));
    case zetreg::kRegMultiSz: {
        Node list = Node::list();
        for (const std::string& part : multiStrings(value.data))
            list.push(Node::text(part));
        return list;
    }
    case zetreg::kRegDword:
    case zetreg::kRegQword:
        if (value.data.size() == (value.type == zetreg::kRegDword ? 4u : 8u))
            return Node::unsignedNumber(littleEndian(value.data));
        return Node::null();
    default:
        return Node::null();
    }
}

std::string valueLine(const RegFileValue& value)
{
    return "    " + valueLabel(value) + "    " + typeName(value.type) + "    " + shownData(value) + "\n";
}

Node jsonKey(const std::wstring& path, const std::vector<RegFileValue>& values)
{
    Node key = Node::record();
    key.add("key", Node::text(path));
    Node list = Node::list();
    for (const RegFileValue& value : values)
        list.push(Node::record()
                      .add("name", Node::text(value.isDefault ? std::string() : zetreg::wideToUtf8(value.name)))
                      .add("type", Node::text(typeName(value.type)))
                      .add("data", Node::bytes(value.data))
                      .add("value", typedValue(value)));
    key.add("values", list);
    return key;
}

// Every key below (and with) `key`, as reg query /s shows them.
void queryAll(HKEY key, const std::wstring& path, bool recurse, bool recursing, std::string& text, Node& json)
{
    const std::vector<RegFileValue> values = readValues(key);
    if (!values.empty() || recursing) {
        text += zetreg::wideToUtf8(path) + "\n";
        for (const RegFileValue& value : values)
            text += valueLine(value);
        text += "\n";
    }
    json.push(jsonKey(path, values));
    for (const std::wstring& name : readSubkeyNames(key)) {
        const std::wstring subkeyPath = path + L"\\" + name;
        if (!recurse) {
            text += zetreg::wideToUtf8(subkeyPath) + "\n";
            json.push(jsonKey(subkeyPath, {}));
            continue;
        }
        HKEY handle = nullptr;
        if (RegOpenKeyExW(key, name.c_str(), 0, KEY_READ, &handle) != ERROR_SUCCESS)
            continue;
        OpenKey subkey(handle);
        queryAll(subkey.get(), subkeyPath, true, true, text, json);
    }
}

// The keys that hold the value, searched below (and in) `key`.
int searchValue(HKEY key, const std::wstring& path, const RegFileValue& wanted, std::string& text, Node& json)
{
    int matches = 0;
    RegFileValue value;
    if (readValue(key, wanted, value)) {
        text += zetreg::wideToUtf8(path) + "\n" + valueLine(value) + "\n";
        json.push(jsonKey(path, {value}));
        ++matches;
    }
    for (const std::wstring& name : readSubkeyNames(key)) {
        HKEY handle = nullptr;
        if (RegOpenKeyExW(key, name.c_str(), 0, KEY_READ, &handle) != ERROR_SUCCESS)
            continue;
        OpenKey subkey(handle);
        matches += searchValue(subkey.get(), path + L"\\" + name, wanted, text, json);
    }
    return matches;
}

int regQuery(const RegWords& words, Console& console)
{
    if (words.positional.size() != 1 || (words.has("v") && words.has("ve")))
        throw RegSyntaxError();
    const KeyPath path = keyPathOf(words.positional[0]);
    OpenKey key;
    if (!openExisting(path, KEY_READ, key, console))
        return kRegFailure;
    std::string text = "\n";
    Node json = Node::list();
    int status = 0;
    if (!words.has("v") && !words.has("ve")) {
        queryAll(key.get(), path.full(), words.has("s"), false, text, json);
    } else if (words.has("s")) {
        const int matches = searchValue(key.get(), path.full(), valueNamed(words), text, json);
        text += "End of search: " + std::to_string(matches) + " match(es) found.\n";
        status = matches > 0 ? 0 : kRegFailure;
    } else {
        const RegFileValue wanted = valueNamed(words);
        RegFileValue value;
        if (!readValue(key.get(), wanted, value)) {
            if (!wanted.isDefault) {
                console.err << kNotFound;
                return kRegFailure;
            }
            text += zetreg::wideToUtf8(path.full()) + "\n    (Default)    REG_SZ    (value not set)\n\n";
            json.push(jsonKey(path.full(), {}));
        } else {
            text += zetreg::wideToUtf8(path.full()) + "\n" + valueLine(value) + "\n";
            json.push(jsonKey(path.full(), {value}));
        }
    }
    if (console.json)
        printNode(console.out, json, true);
    else
        console.out << text;
    return status;
}

// ---- add -----------------------------------------------------------------------------------

const std::map<std::string, uint32_t> kAddTypes = {
    {"REG_SZ", zetreg::kRegSz}, {"REG_MULTI_SZ", zetreg::kRegMultiSz}, {"REG_EXPAND_SZ", zetreg::kRegExpandSz},
    {"REG_DWORD", zetreg::kRegDword}, {"REG_DWORD_LITTLE_ENDIAN", zetreg::kRegDword},
    {"REG_QWORD", zetreg::kRegQword}, {"REG_QWORD_LITTLE_ENDIAN", zetreg::kRegQword},
    {"REG_BINARY", zetreg::kRegBinary}, {"REG_NONE", zetreg::kRegNone},
};

std::string numberData(const std::string& text, int width)
{
    errno = 0;
    char* end = nullptr;
    const bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    const unsigned long long number = std::strtoull(text.c_str(), &end, hex ? 16 : 10);
    const unsigned long long limit = width == 4 ? 0xFFFFFFFFull : ~0ull;
    if (text.empty() || text[0] == '-' || *end != '\0' || errno == ERANGE || number > limit)
        throw RegSyntaxError("Specify a valid numeric value for /d: \"" + text + "\" is not a number of " +
                             std::to_string(width * 8) + " bits.");
    std::string data;
    for (int i = 0; i < width; ++i)
        data += static_cast<char>((number >> (8 * i)) & 0xFF);
    return data;
}

std::string multiStringData(const std::string& text, const std::string& separator)
{
    std::u16string data;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find(separator, start);
        if (end == std::string::npos)
            end = text.size();
        data += zetreg::utf8ToUtf16Lenient(text.substr(start, end - start)) + u'\0';
        start = end + separator.size();
    }
    data += u'\0';
    return zetreg::utf16ToBytes(data);
}

RegFileValue valueToAdd(const RegWords& words)
{
    RegFileValue value = valueNamed(words);
    const std::string typeText = words.has("t") ? upper(words.value("t")) : "REG_SZ";
    const auto type = kAddTypes.find(typeText);
    if (type == kAddTypes.end())
        throw RegSyntaxError("Unknown data type " + words.value("t") + ".");
    value.type = type->second;
    const std::string data = words.value("d");
    if (words.has("s") && (value.type != zetreg::kRegMultiSz || words.value("s").size() != 1))
        throw RegSyntaxError("/s takes one character and only with REG_MULTI_SZ.");
    switch (value.type) {
    case zetreg::kRegSz:
    case zetreg::kRegExpandSz:
        value.data = zetreg::utf16ToBytes(zetreg::utf8ToUtf16Lenient(data) + u'\0');
        break;
    case zetreg::kRegMultiSz:
        value.data = multiStringData(data, words.has("s") ? words.value("s") : "\\0");
        break;
    case zetreg::kRegDword:
        value.data = numberData(data, 4);
        break;
    case zetreg::kRegQword:
        value.data = numberData(data, 8);
        break;
    default:
        try {
            value.data = parseHexBytes(data, "/d");
        } catch (const UsageError& error) {
            throw RegSyntaxError(std::string(error.what()) + ".");
        }
    }
    return value;
}

int regAdd(const RegWords& words, Console& console)
{
    if (words.positional.size() != 1 || (words.has("v") && words.has("ve")))
        throw RegSyntaxError();
    const KeyPath path = keyPathOf(words.positional[0]);
    if (!words.has("v") && !words.has("ve")) {
        if (words.has("t") || words.has("d") || words.has("s"))
            throw RegSyntaxError();
        createKey(path);
        succeeded(console);
        return 0;
    }
    const RegFileValue value = valueToAdd(words);
    OpenKey key = createKey(path);
    RegFileValue existing;
    if (!words.has("f") && readValue(key.get(), value, existing) &&
        !confirm(console, "Value " + valueLabel(value) + " exists, overwrite")) {
        console.out << kCancelled;
        return 0;
    }
    writeValue(key.get(), value);
    succeeded(console);
    return 0;
}

// ---- delete --------------------------------------------------------------------------------

int regDelete(const RegWords& words, Console& console)
{
    const int targets = words.has("v") + words.has("ve") + words.has("va");
    if (words.positional.size() != 1 || targets > 1)
        throw RegSyntaxError();
    const KeyPath path = keyPathOf(words.positional[0]);
    OpenKey key;
    if (openKey(path, KEY_ALL_ACCESS, key) != ERROR_SUCCESS) {
        if (!keyExists(path)) {
            console.err << kNotFound;
            return kRegFailure;
        }
        console.err << "ERROR: Access is denied.\n";
        return kRegFailure;
    }
    const bool force = words.has("f");
    if (words.has("va")) {
        if (!force && !confirm(console, "Delete all values under the registry key " + zetreg::wideToUtf8(path.full()))) {
            console.out << kCancelled;
            return 0;
        }
        for (const RegFileValue& value : readValues(key.get()))
            deleteValue(key.get(), value);
    } else if (targets == 1) {
        const RegFileValue wanted = valueNamed(words);
        RegFileValue existing;
        if (!readValue(key.get(), wanted, existing)) {
            console.err << kNotFound;
            return kRegFailure;
        }
        if (!force && !confirm(console, "Delete the registry value " + valueLabel(wanted))) {
            console.out << kCancelled;
            return 0;
        }
        deleteValue(key.get(), wanted);
    } else {
        if (path.subPath.empty())
            throw RegKeyNameError();
        key = OpenKey();
        if (!force && !confirm(console, "Permanently delete the registry key " + zetreg::wideToUtf8(path.full()))) {
            console.out << kCancelled;
            return 0;
        }
        deleteTree(path);
    }
    succeeded(console);
    return 0;
}

// ---- export and import ---------------------------------------------------------------------

bool fileExists(const std::string& name)
{
    std::ifstream file(name, std::ios::binary);
    return file.good();
}

// "/dev/stdout" and the like: the data goes to standard output and nothing else may.
bool isStandardOutput(const std::string& fileName)
{
    for (const char* name : {"-", "/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"})
        if (fileName == name)
            return true;
    std::error_code error;
    return std::filesystem::equivalent(fileName, "/dev/stdout", error);
}

void warnOfEncryptedValues(const KeyPath& path, const KeyTree& tree, Console& console)
{
    const EncryptedCount count = countEncrypted(path, tree);
    if (count.total == 0)
        return;
    console.err << "WARNING: " << count.total
                << " encrypted value(s) in this file open only with this machine's key; a backup that"
                   " restores them elsewhere is \"zetsettings store backup\".\n";
}

int regExport(const RegWords& words, Console& console)
{
    if (words.positional.size() != 2)
        throw RegSyntaxError();
    const KeyPath path = keyPathOf(words.positional[0]);
    const std::string fileName = words.positional[1];
    const bool toStandardOutput = isStandardOutput(fileName);
    OpenKey key;
    if (!openExisting(path, KEY_READ, key, console))
        return kRegFailure;
    if (!toStandardOutput && !words.has("y") && fileExists(fileName) &&
        !confirm(console, "File " + fileName + " already exists. Overwrite")) {
        console.out << kCancelled;
        return 0;
    }
    std::vector<zetreg::RegFileKey> keys;
    const KeyTree tree = readTree(key.get(), L"");
    appendRegFileKeys(path.full(), tree, keys);
    const std::string bytes = zetreg::writeRegFile(keys);
    warnOfEncryptedValues(path, tree, console);
    if (toStandardOutput) {
        console.out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        console.out.flush();
        if (!console.out) {
            console.err << "ERROR: Unable to write to standard output.\n";
            return kRegFailure;
        }
        console.err << kSuccess;
        return 0;
    }
    std::ofstream file(fileName, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        console.err << "ERROR: Unable to write to the file " << fileName
                    << ". There may be a disk or file system error.\n";
        return kRegFailure;
    }
    succeeded(console);
    return 0;
}

// This registry keeps text in whole UTF-16 units where wchar_t is wider: half a unit would be lost.
void checkStorable(const zetreg::RegFileKey& key, const RegFileValue& value)
{
    if (sizeof(wchar_t) == 2 || value.remove || !zetreg::isTextType(value.type) || value.data.size() % 2 == 0)
        return;
    throw zetreg::RegFileError(key.line, "the value " + valueLabel(value) + " of [" + zetreg::wideToUtf8(key.path) +
                                             "] is text (type " + std::to_string(value.type) + ") of " +
                                             std::to_string(value.data.size()) +
                                             " bytes; this registry keeps text in whole UTF-16 units and would "
                                             "lose the last byte");
}

// Every key path of the file, checked before anything is applied.
std::vector<KeyPath> keyPathsOf(const zetreg::RegFile& file)
{
    std::vector<KeyPath> paths;
    for (const zetreg::RegFileKey& key : file.keys) {
        KeyPath path;
        if (!parseKeyPath(key.path, path))
            throw zetreg::RegFileError(key.line, "the key name " + zetreg::wideToUtf8(key.path) + " is not valid");
        if (key.remove && path.subPath.empty())
            throw zetreg::RegFileError(key.line, "a root key can't be removed");
        for (const RegFileValue& value : key.values)
            checkStorable(key, value);
        paths.push_back(path);
    }
    return paths;
}

// What a file sets and deletes; the keys it makes are counted as they are applied.
struct ImportCount {
    int keys = 0;
    int valuesSet = 0;
    int valuesDeleted = 0;
    int keysDeleted = 0;
    EncryptedCount encrypted;
};

ImportCount countOf(const zetreg::RegFile& file, const std::vector<KeyPath>& paths)
{
    ImportCount count;
    for (std::size_t i = 0; i < file.keys.size(); ++i) {
        const zetreg::RegFileKey& key = file.keys[i];
        if (key.remove) {
            ++count.keysDeleted;
            continue;
        }
        ++count.keys;
        for (const RegFileValue& value : key.values) {
            if (value.remove) {
                ++count.valuesDeleted;
                continue;
            }
            ++count.valuesSet;
            std::string ciphertext;
            if (encryptedPart(paths[i], value, ciphertext)) {
                ++count.encrypted.total;
                if (!opensWithMachineKey(ciphertext))
                    ++count.encrypted.unopenable;
            }
        }
    }
    return count;
}

std::string summaryOf(const ImportCount& count)
{
    return std::to_string(count.keys) + " key(s) with " + std::to_string(count.valuesSet) + " value(s) set, " +
           std::to_string(count.valuesDeleted) + " value(s) deleted, " + std::to_string(count.keysDeleted) +
           " key(s) deleted";
}

Node countNode(const ImportCount& count, bool dryRun)
{
    return Node::record()
        .add("dryRun", Node::boolean(dryRun))
        .add("keys", Node::number(count.keys))
        .add("valuesSet", Node::number(count.valuesSet))
        .add("valuesDeleted", Node::number(count.valuesDeleted))
        .add("keysDeleted", Node::number(count.keysDeleted))
        .add("encryptedValues", Node::number(count.encrypted.total))
        .add("encryptedValuesNotOpening", Node::number(count.encrypted.unopenable));
}

void reportEncrypted(const EncryptedCount& count, Console& console)
{
    if (count.unopenable == 0)
        return;
    console.err << "WARNING: " << count.unopenable << " of " << count.total
                << " encrypted value(s) do not open with this machine's key: their secrets read as lost"
                   " until the key they were made with is restored (zetsettings store restore).\n";
}

void reportCount(const ImportCount& count, bool dryRun, const std::string& fileName, Console& console)
{
    if (console.json)
        printNode(console.out, countNode(count, dryRun), true);
    else if (dryRun)
        console.out << fileName << " is valid; importing it would write " << summaryOf(count)
                    << ". Nothing was written (--dry-run).\n";
    else
        console.out << "Imported " << summaryOf(count) << ".\n" << kSuccess;
    reportEncrypted(count.encrypted, console);
}

void apply(const zetreg::RegFile& file, const std::vector<KeyPath>& paths, ChangeSet& changes)
{
    for (std::size_t i = 0; i < file.keys.size(); ++i) {
        const zetreg::RegFileKey& key = file.keys[i];
        if (key.remove) {
            changes.removeKey(paths[i]);
            continue;
        }
        changes.ensureKey(paths[i]);
        for (const RegFileValue& value : key.values) {
            if (value.remove)
                changes.removeValue(paths[i], value);
            else
                changes.setValue(paths[i], value);
        }
    }
}

bool readImportFile(const std::string& fileName, std::string& content, Console& console)
{
    std::error_code error;
    if (std::filesystem::is_directory(fileName, error)) {
        console.err << "ERROR: Error opening the file " << fileName << ". It is a directory, not a .reg file.\n";
        return false;
    }
    std::ifstream stream(fileName, std::ios::binary);
    if (!stream) {
        console.err << "ERROR: Error opening the file " << fileName << ". There may be a disk or file system error.\n";
        return false;
    }
    std::ostringstream bytes;
    bytes << stream.rdbuf();
    content = bytes.str();
    return true;
}

int regImport(const RegWords& words, Console& console)
{
    if (words.positional.size() != 1)
        throw RegSyntaxError();
    const bool dryRun = words.has("dry-run") || words.has("-dry-run");
    const std::string fileName = words.positional[0];
    std::string content;
    if (!readImportFile(fileName, content, console))
        return kRegFailure;
    zetreg::RegFile file;
    std::vector<KeyPath> paths;
    try {
        file = zetreg::readRegFile(content);
        paths = keyPathsOf(file);
    } catch (const zetreg::RegFileError& error) {
        console.err << "ERROR: " << fileName << ": " << clipped(error.what()) << ". Nothing was imported.\n";
        return kRegFailure;
    }
    const ImportCount count = countOf(file, paths);
    if (dryRun) {
        reportCount(count, true, fileName, console);
        return 0;
    }
    // One commit for the whole file, so that even a killed import leaves all of it or nothing.
    // Where the writes can't be dropped (Windows), the change set undoes them.
    zet::RegistryBatch batch;
    ChangeSet changes;
    try {
        apply(file, paths, changes);
    } catch (const std::exception& error) {
        const bool undone = batch.discard() || changes.rollback();
        console.err << "ERROR: Error accessing the registry: " << clipped(error.what())
                    << (undone ? " Nothing was imported.\n" : " The changes made so far could not all be undone.\n");
        return kRegFailure;
    }
    const LONG committed = batch.commit();
    if (committed != ERROR_SUCCESS) {
        console.err << "ERROR: Error accessing the registry: " << errorMessage(committed) << " Nothing was imported.\n";
        return kRegFailure;
    }
    reportCount(count, false, fileName, console);
    return 0;
}

typedef int (*RegOperation)(const RegWords&, Console&);

const std::map<std::string, RegOperation> kOperations = {
    {"QUERY", regQuery}, {"ADD", regAdd}, {"DELETE", regDelete}, {"EXPORT", regExport}, {"IMPORT", regImport},
};

}  // namespace

int runReg(const std::vector<std::string>& words, Console& console)
{
    if (words.empty()) {
        console.err << "ERROR: Invalid syntax.\nType \"REG /?\" for usage.\n";
        return kRegFailure;
    }
    const std::string first = lower(words[0]);
    if (first == "/?" || first == "-?" || first == "/h" || first == "-h" || first == "--help") {
        console.out << kRegUsage;
        return 0;
    }
    const std::string operation = upper(words[0]);
    const auto it = kOperations.find(operation);
    if (it == kOperations.end()) {
        console.err << "ERROR: Invalid syntax.\nType \"REG /?\" for usage.\n";
        return kRegFailure;
    }
    const std::string usageHint = "Type \"REG " + operation + " /?\" for usage.\n";
    try {
        std::vector<std::string> rest(words.begin() + 1, words.end());
        const bool longHelp = std::find(rest.begin(), rest.end(), "--help") != rest.end();
        const RegWords parsed = parseWords(operation, rest);
        if (parsed.help || longHelp) {
            console.out << kOperationUsage.at(operation);
            return 0;
        }
        requireReadableStore();
        return it->second(parsed, console);
    } catch (const RegSyntaxError& error) {
        console.err << "ERROR: Invalid syntax." << (*error.what() ? " " + clipped(error.what()) : "") << "\n"
                    << usageHint;
    } catch (const RegKeyNameError&) {
        console.err << "ERROR: Invalid key name.\n" << usageHint;
    } catch (const RegistryError& error) {
        console.err << "ERROR: "
                    << (error.code() == ERROR_ACCESS_DENIED ? errorMessage(error.code()) : clipped(error.what()))
                    << " (in " << storeName() << ")\n";
    } catch (const CommandError& error) {
        console.err << "ERROR: " << clipped(error.what()) << "\n";
    }
    return kRegFailure;
}

}  // namespace zettool
