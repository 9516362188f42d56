#include "RegistryAccess.h"

#include <cstring>

#include "regfile/TextCodec.h"

namespace zettool {
namespace {

const HKEY kRootHandles[] = {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER, HKEY_CLASSES_ROOT, HKEY_USERS};

void check(LONG code, const std::string& what)
{
    if (code != ERROR_SUCCESS)
        throw RegistryError(code, what);
}

const wchar_t* valueNameOf(const zetreg::RegFileValue& value)
{
    return value.isDefault ? nullptr : value.name.c_str();
}

std::string describe(const zetreg::RegFileValue& value)
{
    return value.isDefault ? std::string("(Default)") : zetreg::wideToUtf8(value.name);
}

// Text data crosses the Win32 interface in WCHAR units, which are 32 bits on some platforms;
// Windows' own form, that of .reg files, is UTF-16.
std::string apiToWindowsForm(DWORD type, const std::vector<BYTE>& data)
{
    std::string raw(data.begin(), data.end());
    if (sizeof(wchar_t) == 2 || !zetreg::isTextType(type))
        return raw;
    std::wstring text(raw.size() / sizeof(wchar_t), L'\0');
    std::memcpy(&text[0], raw.data(), text.size() * sizeof(wchar_t));
    return zetreg::utf16ToBytes(zetreg::wideToUtf16(text));
}

std::string windowsFormToApi(DWORD type, const std::string& data)
{
    if (sizeof(wchar_t) == 2 || !zetreg::isTextType(type))
        return data;
    const std::wstring text = zetreg::utf16ToWide(zetreg::bytesToUtf16(data));
    return std::string(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
}

}  // namespace

RegistryError::RegistryError(LONG code, const std::string& what)
    : std::runtime_error(what + ": " + errorMessage(code)), m_code(code)
{
}

std::string errorMessage(LONG code)
{
    switch (code) {
    case ERROR_FILE_NOT_FOUND: return "The system cannot find the file specified.";
    case ERROR_PATH_NOT_FOUND: return "The system cannot find the path specified.";
    case ERROR_ACCESS_DENIED: return "Access is denied.";
    case ERROR_INVALID_HANDLE: return "The handle is invalid.";
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_OUTOFMEMORY: return "Not enough memory resources are available to process this command.";
    case ERROR_INVALID_DATA: return "The data is invalid.";
    case ERROR_INVALID_PARAMETER: return "The parameter is incorrect.";
    case ERROR_MORE_DATA: return "More data is available.";
    case ERROR_BADKEY: return "Configuration registry key is invalid.";
    case ERROR_CANTOPEN: return "The configuration registry key could not be opened.";
    case ERROR_CANTREAD: return "The configuration registry key could not be read.";
    case ERROR_CANTWRITE: return "The configuration registry key could not be written.";
    case ERROR_KEY_DELETED: return "Illegal operation attempted on a registry key that has been marked for deletion.";
    default: return "Windows error " + std::to_string(code) + ".";
    }
}

KeyPath KeyPath::child(const std::wstring& name) const
{
    KeyPath path = *this;
    path.subPath = subPath.empty() ? name : subPath + L"\\" + name;
    return path;
}

bool parseKeyPath(const std::wstring& text, KeyPath& path)
{
    std::size_t root;
    std::wstring rest;
    if (!zetreg::splitRootPath(text, root, rest))
        return false;
    if (!rest.empty() && rest.back() == L'\\')
        rest.pop_back();
    if (rest.find(L"\\\\") != std::wstring::npos || (!rest.empty() && rest.front() == L'\\'))
        return false;
    path.root = kRootHandles[root];
    path.rootName = zetreg::knownRoots()[root].longName;
    path.subPath = rest;
    return true;
}

OpenKey& OpenKey::operator=(OpenKey&& other) noexcept
{
    if (this != &other) {
        if (m_key)
            RegCloseKey(m_key);
        m_key = other.m_key;
        other.m_key = nullptr;
    }
    return *this;
}

OpenKey::~OpenKey()
{
    if (m_key)
        RegCloseKey(m_key);
}

LONG openKey(const KeyPath& path, REGSAM access, OpenKey& key)
{
    HKEY handle = nullptr;
    const LONG code = RegOpenKeyExW(path.root, path.subPath.c_str(), 0, access, &handle);
    if (code == ERROR_SUCCESS)
        key = OpenKey(handle);
    return code;
}

bool keyExists(const KeyPath& path)
{
    OpenKey key;
    return openKey(path, KEY_READ, key) == ERROR_SUCCESS;
}

OpenKey createKey(const KeyPath& path)
{
    HKEY handle = nullptr;
    check(RegCreateKeyExW(path.root, path.subPath.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &handle, nullptr),
          "cannot create " + zetreg::wideToUtf8(path.full()));
    return OpenKey(handle);
}

std::vector<zetreg::RegFileValue> readValues(HKEY key)
{
    DWORD count = 0, maxName = 0, maxData = 0;
    check(RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count, &maxName, &maxData,
                           nullptr, nullptr),
          "cannot read the key's values");
    std::vector<zetreg::RegFileValue> values;
    std::vector<wchar_t> name(maxName + 1);
    std::vector<BYTE> data(maxData + 1);
    for (DWORD index = 0;; ++index) {
        DWORD nameLength = static_cast<DWORD>(name.size());
        DWORD dataLength = static_cast<DWORD>(data.size());
        DWORD type = 0;
        const LONG code = RegEnumValueW(key, index, name.data(), &nameLength, nullptr, &type, data.data(), &dataLength);
        if (code == ERROR_NO_MORE_ITEMS)
            break;
        if (code == ERROR_MORE_DATA) {
            // The key changed under us: grow and read this index again.
            name.resize(name.size() * 2 + 256);
            data.resize(data.size() * 2 + 256);
            --index;
            continue;
        }
        check(code, "cannot read a value");
        zetreg::RegFileValue value;
        value.name.assign(name.data(), nameLength);
        value.isDefault = value.name.empty();
        value.type = type;
        value.data = apiToWindowsForm(type, std::vector<BYTE>(data.begin(), data.begin() + dataLength));
        values.push_back(std::move(value));
    }
    return values;
}

std::vector<std::wstring> readSubkeyNames(HKEY key)
{
    std::vector<std::wstring> names;
    std::vector<wchar_t> name(256);
    for (DWORD index = 0;; ++index) {
        DWORD length = static_cast<DWORD>(name.size());
        const LONG code = RegEnumKeyExW(key, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
        if (code == ERROR_NO_MORE_ITEMS)
            break;
        if (code == ERROR_MORE_DATA) {
            name.resize(name.size() * 4);
            --index;
            continue;
        }
        check(code, "cannot read a subkey's name");
        names.emplace_back(name.data(), length);
    }
    return names;
}

bool readValue(HKEY key, const zetreg::RegFileValue& name, zetreg::RegFileValue& value)
{
    DWORD type = 0, size = 0;
    LONG code = RegQueryValueExW(key, valueNameOf(name), nullptr, &type, nullptr, &size);
    if (code == ERROR_FILE_NOT_FOUND)
        return false;
    check(code, "cannot read the value " + describe(name));
    std::vector<BYTE> data(size + 1);
    code = RegQueryValueExW(key, valueNameOf(name), nullptr, &type, data.data(), &size);
    check(code, "cannot read the value " + describe(name));
    data.resize(size);
    value = name;
    value.remove = false;
    value.type = type;
    value.data = apiToWindowsForm(type, data);
    return true;
}

void writeValue(HKEY key, const zetreg::RegFileValue& value)
{
    const std::string data = windowsFormToApi(value.type, value.data);
    check(RegSetValueExW(key, valueNameOf(value), 0, value.type, reinterpret_cast<const BYTE*>(data.data()),
                         static_cast<DWORD>(data.size())),
          "cannot write the value " + describe(value));
}

void deleteValue(HKEY key, const zetreg::RegFileValue& name)
{
    check(RegDeleteValueW(key, valueNameOf(name)), "cannot delete the value " + describe(name));
}

KeyTree readTree(HKEY key, const std::wstring& name)
{
    KeyTree tree;
    tree.name = name;
    tree.values = readValues(key);
    for (const std::wstring& subkeyName : readSubkeyNames(key)) {
        HKEY handle = nullptr;
        check(RegOpenKeyExW(key, subkeyName.c_str(), 0, KEY_READ, &handle),
              "cannot open the subkey " + zetreg::wideToUtf8(subkeyName));
        OpenKey subkey(handle);
        tree.subkeys.push_back(readTree(subkey.get(), subkeyName));
    }
    return tree;
}

void writeTree(const KeyPath& path, const KeyTree& tree)
{
    OpenKey key = createKey(path);
    for (const zetreg::RegFileValue& value : tree.values)
        writeValue(key.get(), value);
    for (const KeyTree& subkey : tree.subkeys)
        writeTree(path.child(subkey.name), subkey);
}

void appendRegFileKeys(const std::wstring& path, const KeyTree& tree, std::vector<zetreg::RegFileKey>& keys)
{
    zetreg::RegFileKey key;
    key.path = path;
    key.values = tree.values;
    keys.push_back(std::move(key));
    for (const KeyTree& subkey : tree.subkeys)
        appendRegFileKeys(path + L"\\" + subkey.name, subkey, keys);
}

void deleteTree(const KeyPath& path)
{
    check(RegDeleteTreeW(path.root, path.subPath.c_str()), "cannot delete " + zetreg::wideToUtf8(path.full()));
    // RegDeleteTreeW empties the key; the key itself goes with RegDeleteKeyW.
    const LONG code = RegDeleteKeyW(path.root, path.subPath.c_str());
    if (code != ERROR_FILE_NOT_FOUND)
        check(code, "cannot delete " + zetreg::wideToUtf8(path.full()));
}

void ChangeSet::ensureKey(const KeyPath& path)
{
    // Undo removes the highest key that this step brought into being.
    KeyPath created = path;
    std::wstring prefix;
    bool found = false;
    std::size_t start = 0;
    while (!found && start <= path.subPath.size()) {
        const std::size_t slash = path.subPath.find(L'\\', start);
        prefix = path.subPath.substr(0, slash);
        KeyPath candidate = path;
        candidate.subPath = prefix;
        if (!prefix.empty() && !keyExists(candidate)) {
            created = candidate;
            found = true;
        }
        if (slash == std::wstring::npos)
            break;
        start = slash + 1;
    }
    createKey(path);
    if (found)
        m_undo.push_back([created] { deleteTree(created); });
}

void ChangeSet::removeKey(const KeyPath& path)
{
    OpenKey key;
    if (openKey(path, KEY_READ, key) != ERROR_SUCCESS)
        return;  // nothing to remove, as Windows' editor has it
    const KeyTree before = readTree(key.get(), L"");
    key = OpenKey();
    deleteTree(path);
    m_undo.push_back([path, before] { writeTree(path, before); });
}

void ChangeSet::setValue(const KeyPath& path, const zetreg::RegFileValue& value)
{
    OpenKey key = createKey(path);
    zetreg::RegFileValue before;
    const bool existed = readValue(key.get(), value, before);
    writeValue(key.get(), value);
    m_undo.push_back([path, value, before, existed] {
        OpenKey undoKey = createKey(path);
        if (existed)
            writeValue(undoKey.get(), before);
        else
            deleteValue(undoKey.get(), value);
    });
}

void ChangeSet::removeValue(const KeyPath& path, const zetreg::RegFileValue& value)
{
    OpenKey key;
    if (openKey(path, KEY_ALL_ACCESS, key) != ERROR_SUCCESS)
        return;
    zetreg::RegFileValue before;
    if (!readValue(key.get(), value, before))
        return;
    deleteValue(key.get(), value);
    m_undo.push_back([path, before] { writeValue(createKey(path).get(), before); });
}

bool ChangeSet::rollback() noexcept
{
    bool complete = true;
    while (!m_undo.empty()) {
        try {
            m_undo.back()();
        } catch (...) {
            complete = false;
        }
        m_undo.pop_back();
    }
    return complete;
}

}  // namespace zettool
