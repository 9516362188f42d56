#include "Secrets.h"

#include <cwctype>
#include <vector>

#include "Cli.h"
#include "regfile/TextCodec.h"
#include "zetsettings/ZETSettings.h"
#include "zetsettings/records/RecordNames.h"
#include "zetsettings/store/RegistryPaths.h"

namespace zettool {
namespace {

const wchar_t* const kWholeValues[] = {zet::records::kUserSettingsValue, zet::records::kLoginSettingsValue,
                                       zet::records::kFallbackKeysValue};

bool sameIgnoringCase(const std::wstring& a, const std::wstring& b)
{
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (std::towlower(static_cast<wint_t>(a[i])) != std::towlower(static_cast<wint_t>(b[i])))
            return false;
    return true;
}

std::wstring basePath() { return zet::paths::kBaseKey; }

std::wstring networksPath() { return basePath() + L"\\" + zet::paths::kNetworkSettingsKey; }

KeyPath localMachine(const std::wstring& subPath)
{
    KeyPath path;
    parseKeyPath(L"HKEY_LOCAL_MACHINE\\" + subPath, path);
    return path;
}

bool isMachineKey(const KeyPath& path, const std::wstring& subPath)
{
    return path.root == HKEY_LOCAL_MACHINE && sameIgnoringCase(path.subPath, subPath);
}

std::string profileSecret(const std::string& data)
{
    ZETNetworkSettings profile;
    profile.deserialize(reinterpret_cast<const unsigned char*>(data.data()), static_cast<int>(data.size()));
    return profile.protectedBlob.bytes();
}

const char kRemedy[] = "it was encrypted with another machine key. Restore the key it was made with "
                       "(zetsettings store restore), or remove it and store it anew";

void countIn(const KeyPath& path, const KeyTree& tree, EncryptedCount& count)
{
    for (const zetreg::RegFileValue& value : tree.values) {
        std::string ciphertext;
        if (!encryptedPart(path, value, ciphertext))
            continue;
        ++count.total;
        if (!opensWithMachineKey(ciphertext))
            ++count.unopenable;
    }
    for (const KeyTree& subkey : tree.subkeys)
        countIn(path.child(subkey.name), subkey, count);
}

// The data of a value on the base key; false when it is not there.
bool readBaseValue(const wchar_t* valueName, std::string& data)
{
    OpenKey key;
    if (openKey(localMachine(basePath()), KEY_READ, key) != ERROR_SUCCESS)
        return false;
    zetreg::RegFileValue name, value;
    name.name = valueName;
    if (!readValue(key.get(), name, value))
        return false;
    data = value.data;
    return true;
}

}  // namespace

bool opensWithMachineKey(const std::string& ciphertext)
{
    if (ciphertext.empty())
        return false;
    DATA_BLOB input = {static_cast<DWORD>(ciphertext.size()),
                       reinterpret_cast<BYTE*>(const_cast<char*>(ciphertext.data()))};
    DATA_BLOB output = {0, nullptr};
    if (!CryptUnprotectData(&input, nullptr, nullptr, nullptr, nullptr,
                            CRYPTPROTECT_LOCAL_MACHINE | CRYPTPROTECT_UI_FORBIDDEN, &output))
        return false;
    // Only whether it opens matters: the clear text goes at once.
    volatile BYTE* clear = output.pbData;
    for (DWORD i = 0; i < output.cbData; ++i)
        clear[i] = 0;
    LocalFree(output.pbData);
    return true;
}

bool encryptedPart(const KeyPath& path, const zetreg::RegFileValue& value, std::string& ciphertext)
{
    if (value.isDefault || value.type != zetreg::kRegBinary || value.data.empty())
        return false;
    if (isMachineKey(path, networksPath())) {
        ciphertext = profileSecret(value.data);
        return true;
    }
    if (!isMachineKey(path, basePath()))
        return false;
    for (const wchar_t* name : kWholeValues) {
        if (sameIgnoringCase(value.name, name)) {
            ciphertext = value.data;
            return true;
        }
    }
    return false;
}

EncryptedCount countEncrypted(const KeyPath& path, const KeyTree& tree)
{
    EncryptedCount count;
    countIn(path, tree, count);
    return count;
}

bool storedValueExists(const wchar_t* valueName)
{
    std::string data;
    return readBaseValue(valueName, data);
}

void requireStoredValueOpens(const wchar_t* valueName, const std::string& what)
{
    std::string data;
    if (readBaseValue(valueName, data) && !data.empty() && !opensWithMachineKey(data))
        throw CommandError("can't open the stored " + what + " with this machine's key: " + kRemedy);
}

void requireProfileSecretOpens(const std::wstring& network, const std::string& secretRead)
{
    const KeyPath networks = localMachine(networksPath());
    OpenKey key;
    if (openKey(networks, KEY_READ, key) != ERROR_SUCCESS)
        return;
    // A value's name is the network's name, "_" and its case digits, so names that differ only in
    // case share the front part. Of those, the profile read is the one whose ciphertext the
    // library handed back unopened, or the only one.
    std::vector<std::string> unopenable;
    int candidates = 0;
    for (const zetreg::RegFileValue& value : readValues(key.get())) {
        const std::size_t separator = value.name.rfind(L'_');
        if (separator == std::wstring::npos || !sameIgnoringCase(value.name.substr(0, separator), network))
            continue;
        std::string ciphertext;
        if (!encryptedPart(networks, value, ciphertext))
            continue;
        ++candidates;
        if (!opensWithMachineKey(ciphertext))
            unopenable.push_back(ciphertext);
    }
    for (const std::string& ciphertext : unopenable)
        if (candidates == 1 || ciphertext == secretRead)
            throw CommandError("can't open the stored secret of the network \"" + zetreg::wideToUtf8(network) +
                               "\" with this machine's key: " + kRemedy);
}

}  // namespace zettool
