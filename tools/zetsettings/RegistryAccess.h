// The machine's registry through the Win32 functions, in the shapes the reg subcommand and the
// .reg files need: key paths with their root, values in Windows' own data form, whole trees, and
// a change set that can be undone so that an import applies whole or not at all.
#ifndef ZETSETTINGS_TOOLS_REGISTRYACCESS_H
#define ZETSETTINGS_TOOLS_REGISTRYACCESS_H

#include <functional>
#include <string>
#include <vector>

#include "regfile/RegFile.h"
#include "zetsettings/platform/Win32.h"

namespace zettool {

// A registry call that failed, with the Windows error code.
class RegistryError : public std::runtime_error {
public:
    RegistryError(LONG code, const std::string& what);
    LONG code() const { return m_code; }

private:
    LONG m_code;
};

// The message Windows gives for an error code, for the codes the registry reports.
std::string errorMessage(LONG code);

struct KeyPath {
    HKEY root = nullptr;
    std::wstring rootName;  // the long name: HKEY_LOCAL_MACHINE
    std::wstring subPath;   // empty for the root itself

    std::wstring full() const { return subPath.empty() ? rootName : rootName + L"\\" + subPath; }
    KeyPath child(const std::wstring& name) const;
};

// "HKLM\Software\x" or "HKEY_LOCAL_MACHINE\Software\x\"; false for an unknown root, a remote
// machine or an empty name in the path.
bool parseKeyPath(const std::wstring& text, KeyPath& path);

// An open key, closed when the object goes.
class OpenKey {
public:
    OpenKey() = default;
    explicit OpenKey(HKEY key) : m_key(key) {}
    OpenKey(OpenKey&& other) noexcept : m_key(other.m_key) { other.m_key = nullptr; }
    OpenKey& operator=(OpenKey&& other) noexcept;
    OpenKey(const OpenKey&) = delete;
    OpenKey& operator=(const OpenKey&) = delete;
    ~OpenKey();

    HKEY get() const { return m_key; }

private:
    HKEY m_key = nullptr;
};

// ERROR_SUCCESS or the error; `key` is open on success.
LONG openKey(const KeyPath& path, REGSAM access, OpenKey& key);
bool keyExists(const KeyPath& path);
// Throws RegistryError.
OpenKey createKey(const KeyPath& path);

// The values of a key in enumeration order, data in Windows' form. Throws RegistryError.
std::vector<zetreg::RegFileValue> readValues(HKEY key);
std::vector<std::wstring> readSubkeyNames(HKEY key);
// False when the value does not exist; throws RegistryError on other failures.
bool readValue(HKEY key, const zetreg::RegFileValue& name, zetreg::RegFileValue& value);
void writeValue(HKEY key, const zetreg::RegFileValue& value);
void deleteValue(HKEY key, const zetreg::RegFileValue& name);

// A key with everything below it.
struct KeyTree {
    std::wstring name;
    std::vector<zetreg::RegFileValue> values;
    std::vector<KeyTree> subkeys;
};
KeyTree readTree(HKEY key, const std::wstring& name);
// Re-creates a tree below `path` (which names the tree's own key).
void writeTree(const KeyPath& path, const KeyTree& tree);
// The tree as .reg blocks, each key before its subkeys; `path` names the tree's own key.
void appendRegFileKeys(const std::wstring& path, const KeyTree& tree, std::vector<zetreg::RegFileKey>& keys);
void deleteTree(const KeyPath& path);

// Registry changes that remember how to undo themselves; rollback undoes them newest first.
class ChangeSet {
public:
    void ensureKey(const KeyPath& path);
    void removeKey(const KeyPath& path);
    void setValue(const KeyPath& path, const zetreg::RegFileValue& value);
    void removeValue(const KeyPath& path, const zetreg::RegFileValue& value);
    // False if some undo step failed too.
    bool rollback() noexcept;

private:
    std::vector<std::function<void()> > m_undo;
};

}  // namespace zettool

#endif
