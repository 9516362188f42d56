#include "support/TestRegistry.h"

#include <windows.h>

#include <atomic>
#include <stdexcept>

namespace zettest {
namespace {

const wchar_t kEnvironmentName[] = L"ZET_TEST_REGISTRY_KEY";

// Wine's data protection looks up its crypto providers under HKLM; the redirected machine root
// needs its own copy of them, or every encryption fails with NTE_KEYSET_NOT_DEF.
void copyCryptoProviders(HKEY machine)
{
    const wchar_t kCryptography[] = L"SOFTWARE\\Microsoft\\Cryptography";
    HKEY source = nullptr, target = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kCryptography, 0, KEY_READ, &source) != ERROR_SUCCESS)
        return;
    if (RegCreateKeyExW(machine, kCryptography, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &target, nullptr) ==
        ERROR_SUCCESS) {
        RegCopyTreeW(source, nullptr, target);
        RegCloseKey(target);
    }
    RegCloseKey(source);
}

void redirect(const std::wstring& root, bool fresh)
{
    HKEY machine = nullptr, user = nullptr;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, (root + L"\\machine").c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                        nullptr, &machine, nullptr) != ERROR_SUCCESS ||
        RegCreateKeyExW(HKEY_CURRENT_USER, (root + L"\\user").c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                        nullptr, &user, nullptr) != ERROR_SUCCESS)
        throw std::runtime_error("cannot create the test registry");
    if (fresh)
        copyCryptoProviders(machine);
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, machine);
    RegOverridePredefKey(HKEY_CURRENT_USER, user);
    RegCloseKey(machine);
    RegCloseKey(user);
}

}  // namespace

TestRegistry::TestRegistry()
{
    static std::atomic<unsigned> counter(0);
    m_root = "Software\\zetsettings-tests\\" + std::to_string(GetCurrentProcessId()) + "-" +
             std::to_string(counter++);
    const std::wstring root(m_root.begin(), m_root.end());
    redirect(root, true);
    SetEnvironmentVariableW(kEnvironmentName, root.c_str());
}

TestRegistry::~TestRegistry()
{
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    SetEnvironmentVariableW(kEnvironmentName, nullptr);
    RegDeleteTreeW(HKEY_CURRENT_USER, std::wstring(m_root.begin(), m_root.end()).c_str());
}

bool TestRegistry::isPortable()
{
    return false;
}

void TestRegistry::adoptInChild()
{
    wchar_t root[512];
    if (GetEnvironmentVariableW(kEnvironmentName, root, 512) > 0)
        redirect(root, false);
}

}  // namespace zettest
