#include "StoreAccess.h"

#include <cstdlib>
#include <filesystem>

#include "Cli.h"
#include "RegistryAccess.h"
#include "zetsettings/store/RegistryPaths.h"

namespace zettool {
namespace {

const char kVariable[] = "ZET_REGISTRY_DIR";
const char kDefaultStore[] = "/var/lib/zetsettings";

std::string reasonFor(LONG code, const char* use)
{
    if (code == ERROR_ACCESS_DENIED)
        return "this process may not " + std::string(use) + " it (" + errorMessage(code) + ")";
    return errorMessage(code);
}

[[noreturn]] void refuse(const std::string& why)
{
    throw CommandError("can't use " + storeName() + ": " + why);
}

void requireSetting()
{
    const std::string problem = storeSettingProblem();
    if (!problem.empty())
        refuse(problem);
}

}  // namespace

std::string storeName()
{
    const char* named = std::getenv(kVariable);
    if (named)
        return "the store \"" + std::string(named) + "\" (" + kVariable + ")";
    return "the store " + std::string(kDefaultStore) + " (the default; " + kVariable + " is not set)";
}

std::string storeSettingProblem()
{
    const char* named = std::getenv(kVariable);
    if (!named)
        return std::string();
    if (!*named)
        return std::string(kVariable) + " is set but empty; unset it to use " + kDefaultStore;
    std::error_code error;
    if (std::filesystem::exists(named, error) && !std::filesystem::is_directory(named, error))
        return "it is not a directory";
    return std::string();
}

void requireReadableStore()
{
    requireSetting();
    HKEY key = nullptr;
    const LONG code = RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"", 0, KEY_READ, &key);
    if (code != ERROR_SUCCESS && code != ERROR_FILE_NOT_FOUND)
        refuse(reasonFor(code, "read"));
    if (key)
        RegCloseKey(key);
}

void requireWritableStore()
{
    requireSetting();
    // The library's getters open the base key for writing (they store defaults): a process
    // that can't gets empty answers from them, so it is turned away here.
    HKEY key = nullptr;
    const LONG code = RegCreateKeyExW(HKEY_LOCAL_MACHINE, zet::paths::kBaseKey, 0, nullptr, 0, KEY_ALL_ACCESS,
                                      nullptr, &key, nullptr);
    if (code != ERROR_SUCCESS)
        refuse(reasonFor(code, "write"));
    RegCloseKey(key);
}

}  // namespace zettool
