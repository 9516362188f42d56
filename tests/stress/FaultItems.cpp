#include "FaultItems.h"

#include <sys/stat.h>

#include <boost/make_shared.hpp>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>

#include "Processes.h"
#include "Records.h"

namespace zetstress {
namespace {

namespace fs = std::filesystem;

const wchar_t kDirectKey[] = L"Software\\Orvane\\QXL\\FaultDirect";
const wchar_t kEapKey[] = L"SYSTEM\\CurrentControlSet\\Services\\RasMan\\PPP\\EAP\\26";

std::wstring tagOf(const std::wstring& item, int generation)
{
    return makeTag(item, static_cast<unsigned long>(generation), 0);
}

// The generation of a tag of `item`, or kTorn.
int generationOf(const std::wstring& tag, const std::wstring& item)
{
    std::wstring name;
    TagOrder order;
    if (!parseTag(tag, name, order) || name != item || order.sequence != 0 || order.incarnation > 1)
        return kTorn;
    return static_cast<int>(order.incarnation);
}

// The generation for which `matches` holds, or kTorn.
int generationWhere(const std::function<bool(int generation)>& matches)
{
    for (int generation : {0, 1})
        if (matches(generation))
            return generation;
    return kTorn;
}

// Bytes of the directly written value: large in generation 1, so that its write grows the map.
std::string directBlob(int generation)
{
    return std::string(generation == 0 ? 16 * 1024 : 160 * 1024, static_cast<char>('A' + generation));
}

std::wstring passwordOf(int generation)
{
    return L"pw-" + std::to_wstring(generation) + L"-Corvid\u00e9-secret";
}

std::wstring fallbackKeyText(int generation)
{
    return L"fallback-key-" + std::to_wstring(generation) + L"-Heron\u00df";
}

Reported byCode(LONG code, Reported success = Reported::Success)
{
    return code == ERROR_SUCCESS ? success : Reported::Failure;
}

// Prints the code that a caller of the registry sees, for the fault test to check.
LONG writeDirect(int generation)
{
    HKEY key = nullptr;
    LONG code = RegCreateKeyExW(HKEY_LOCAL_MACHINE, kDirectKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    const std::string bytes = directBlob(generation);
    if (code == ERROR_SUCCESS) {
        code = RegSetValueExW(key, L"Blob", 0, REG_BINARY, reinterpret_cast<const BYTE*>(bytes.data()),
                              static_cast<DWORD>(bytes.size()));
        RegCloseKey(key);
    }
    std::cout << "code " << code << std::endl;
    return code;
}

int readDirect()
{
    std::string bytes;
    long status = 0;
    if (!readRegistryBinary(kDirectKey, L"Blob", bytes, status))
        return status == ERROR_FILE_NOT_FOUND ? kAbsent : kTorn;
    return generationWhere([&bytes](int g) { return bytes == directBlob(g); });
}

// A profile of a generation with an empty protected member and the rest as written: what a
// process gets that can't read the machine key.
int withoutSecret(const std::wstring& name)
{
    const boost::shared_ptr<ZETNetworkSettings> found = ZETSettings::getNetworkSettings(name);
    const boost::shared_ptr<ZETNetworkSettings> expected = profileForm(found->profileText);
    const bool lost = found->protectedBlob.isEmpty() && !expected->protectedBlob.isEmpty();
    return lost && generationOf(found->profileText, lowerCase(name)) >= 0 && found->plainBlob == expected->plainBlob &&
                   found->profileFlag1 == expected->profileFlag1
               ? kWithoutSecret
               : kTorn;
}

int readLogin()
{
    std::wstring user, password;
    bool enabled = false, keep = false, dependent = false;
    ZETSettings::getLoginData(user, password, enabled, keep, dependent);
    if (user.empty() && password.empty())
        return kAbsent;
    const int generation = generationOf(user, L"login");
    return generation >= 0 && password == passwordOf(generation) && enabled && keep && !dependent ? generation : kTorn;
}

int readKeys()
{
    const auto keys = ZETSettings::getFallbackKeySettings();
    if (!keys || keys->empty())
        return kAbsent;
    const auto found = keys->find(L"FaultKey");
    if (keys->size() != 1 || found == keys->end())
        return kTorn;
    return generationWhere([&found](int g) { return found->second.keyText1 == fallbackKeyText(g); });
}

boost::shared_ptr<ZETPreferredNetworks> chooserList(int generation)
{
    return listForm(L"list" + std::to_wstring(generation) + L"-", 4, 1);
}

int readChooser()
{
    const auto list = ZETSettings::getChooserPreferredNets();
    if (!list || list->entries.empty())
        return kAbsent;
    const std::wstring first = list->entries.front().netName;
    const int generation = generationWhere([&first](int g) { return first == chooserList(g)->entries[0].netName; });
    return listFault(*list).empty() && list->entries.size() == 4 ? generation : kTorn;
}

int readNumber()
{
    const int value = ZETSettings::intGetNetlibValue(L"FaultNumber", -1);
    return value == 1000 || value == 1001 ? value - 1000 : (value == -1 ? kAbsent : kTorn);
}

int readText()
{
    const std::wstring text = ZETSettings::strGetGuiHelperValue(L"FaultText", L"");
    return text.empty() ? kAbsent : generationOf(text, L"text");
}

int readEap()
{
    std::wstring text;
    if (ZETSettings::strGetRasmanEapSettings(L"FaultEap", text) != ERROR_SUCCESS)
        return kAbsent;
    return generationOf(text, L"eap");
}

// The tag of generation `generation` of the first record of a kind.
std::wstring recordTag(std::size_t which, int generation)
{
    return tagOf(lowerCase(kKinds[which].name(0, 0, 0)), generation);
}

// The bytes that only ever reach the store encrypted: plain texts as UTF-16 and narrow, and the
// profile's protected member, where long enough to be told apart.
std::vector<std::string> secretBytes()
{
    std::vector<std::string> forms;
    for (int g : {0, 1}) {
        for (const std::wstring& text : {recordTag(kUsers, g), tagOf(L"login", g), passwordOf(g), fallbackKeyText(g)})
            forms.insert(forms.end(), {utf16(text), narrow(text)});
        const std::string bytes = profileForm(recordTag(kProfiles, g))->protectedBlob.bytes();
        if (bytes.size() >= 12)
            forms.push_back(bytes);
    }
    return forms;
}

// An item that is the first record of a kind of the crash and contention tests (Records.h):
// a generation's tag or, for an alert, its state. `otherwise` tells what a record that is not
// whole holds instead, where it may hold less than was written.
Item recordItem(const char* item, std::size_t which, int (*otherwise)(const std::wstring& name) = nullptr)
{
    const Kind& kind = kKinds[which];
    const std::wstring name = kind.name(0, 0, 0);
    const auto write = [&kind, name, which](int g) {
        kind.write(name, kind.onOff ? std::to_wstring(g) : recordTag(which, g));
        return Reported::Silent;
    };
    const auto read = [&kind, name, otherwise] {
        std::wstring state;
        if (!kind.read(name, state))
            return kAbsent;
        if (state.empty() && otherwise)
            return otherwise(name);
        if (kind.onOff)
            return state == L"0" || state == L"1" ? std::stoi(state) : kTorn;
        return generationOf(state, lowerCase(name));
    };
    return {item, write, read};
}

// A write that reports nothing: whether it was made shows only in a read.
std::function<Reported(int)> silent(void (*write)(int generation))
{
    return [write](int g) {
        write(g);
        return Reported::Silent;
    };
}

}  // namespace

const std::vector<Item>& items()
{
    static const std::vector<Item> all = {
        {"direct", [](int g) { return byCode(writeDirect(g)); }, readDirect},
        recordItem("profile", kProfiles, withoutSecret),
        recordItem("user", kUsers),
        {"login",
         silent([](int g) { ZETSettings::setLoginData(tagOf(L"login", g), passwordOf(g), true, true, false); }),
         readLogin},
        // A refusal of the registry is said; a set that could not be encrypted is not.
        {"keys", [](int g) { return byCode(setFallbackKey(L"FaultKey", fallbackKeyText(g), 0), Reported::Silent); },
         readKeys},
        recordItem("fallback", kFallback),
        {"chooser", silent([](int g) { ZETSettings::updateChooserPreferredNets(chooserList(g)); }), readChooser},
        recordItem("alert", kAlerts),
        {"number", silent([](int g) { ZETSettings::intSetNetlibValue(L"FaultNumber", 1000 + g); }), readNumber},
        {"text", silent([](int g) { ZETSettings::strSetGuiHelperValue(L"FaultText", tagOf(L"text", g)); }), readText},
        {"eap", [](int g) { return byCode(ZETSettings::strSetRasmanEapSettings(L"FaultEap", tagOf(L"eap", g))); },
         readEap},
    };
    return all;
}

std::string nameOfState(int state)
{
    const char* const names[] = {"without-secret", "torn", "absent"};
    return state < 0 ? names[state - kWithoutSecret] : std::to_string(state);
}

unsigned long setFallbackKey(const std::wstring& name, const std::wstring& text, std::size_t bytes)
{
    ZETFallbackKeySettings entry;
    entry.keyText1 = text;
    entry.keyText2 = L"second";
    entry.keyBytes = std::string(bytes, 'k');
    auto keys = boost::make_shared<std::map<std::wstring, ZETFallbackKeySettings>>();
    keys->emplace(name, entry);
    try {
        ZETSettings::setFallbackKeySettings(keys);
        return ERROR_SUCCESS;
    } catch (const JetByteTools::CRegistryKey::Exception& refusal) {
        return refusal.GetError();
    }
}

bool createEapKey()
{
    HKEY eap = nullptr;
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, kEapKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &eap, nullptr) !=
        ERROR_SUCCESS)
        return false;
    RegCloseKey(eap);
    return true;
}

bool furtherWriteSucceeds()
{
    const bool direct = writeDirect(1) == ERROR_SUCCESS && readDirect() == 1;
    const Item& profile = items()[1];
    profile.write(1);
    return direct && profile.read() == 1;
}

std::string fileBytes(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void reportExposure(const fs::path& folder, Violations& fault)
{
    const std::vector<std::string> forms = secretBytes();
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        struct stat info;
        if (lstat(entry.path().c_str(), &info) != 0)
            continue;
        const bool isKey = entry.path().extension() == ".key";
        // The named mutex's files are open to every user by design, as the product's mutex is.
        const bool isMutexFile = entry.path().filename().string().rfind("mutex", 0) == 0;
        if ((info.st_mode & S_IWOTH) && !isMutexFile)
            fault("others may write " + entry.path().string());
        if (entry.path().filename().string().find(".key.new-") != std::string::npos)
            fault("a key candidate left behind: " + entry.path().filename().string());
        fault.expect(!isKey || (info.st_mode & 07777) == 0600, "key mode " + std::to_string(info.st_mode & 07777));
        if (!S_ISREG(info.st_mode) || isKey)
            continue;
        const std::string bytes = fileBytes(entry.path());
        for (const std::string& form : forms)
            if (bytes.find(form) != std::string::npos)
                fault("a secret in the clear in " + entry.path().filename().string());
    }
}

}  // namespace zetstress
