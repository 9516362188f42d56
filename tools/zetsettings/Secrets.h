// The store's encrypted values: where they are, and whether they open with this machine's key.
// A value encrypted with another key reads back from the library as its ciphertext; the tool
// must never show that as the secret, nor store it again as if it were one.
#ifndef ZETSETTINGS_TOOLS_SECRETS_H
#define ZETSETTINGS_TOOLS_SECRETS_H

#include <string>

#include "RegistryAccess.h"

namespace zettool {

bool opensWithMachineKey(const std::string& ciphertext);

// Whether the registry value holds ciphertext: the login, user settings and fallback keys on the
// base key (encrypted whole), and each network profile (its secret member is). On a match,
// `ciphertext` is what must open.
bool encryptedPart(const KeyPath& path, const zetreg::RegFileValue& value, std::string& ciphertext);

// Encrypted values of a tree (`path` names its own key): how many there are, and how many of them
// do not open with this machine's key.
struct EncryptedCount {
    int total = 0;
    int unopenable = 0;
};
EncryptedCount countEncrypted(const KeyPath& path, const KeyTree& tree);

// Whether the value is on the base key at all.
bool storedValueExists(const wchar_t* valueName);
// Throws CommandError unless the value on the base key is absent or opens; `what` names it.
void requireStoredValueOpens(const wchar_t* valueName, const std::string& what);
// The same for the secret of the network's stored profile; `secretRead` is what the library gave.
void requireProfileSecretOpens(const std::wstring& network, const std::string& secretRead);

}  // namespace zettool

#endif
