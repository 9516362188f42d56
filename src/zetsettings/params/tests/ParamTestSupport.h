// Shared by the tests of ZETConfigParam: a look inside the object, the Windows version the
// emulated machine reports, and the configurator's values as stored.
#ifndef ZETSETTINGS_PARAMS_TESTS_PARAMTESTSUPPORT_H
#define ZETSETTINGS_PARAMS_TESTS_PARAMTESTSUPPORT_H

#include <map>
#include <string>

#include "zetsettings/ZETConfigParam.h"
#include "zetsettings/components/CRegistryKey.h"
#include "zetsettings/store/tests/RawRegistry.h"

struct ZETConfigParamTestAccess {
    static std::map<std::wstring, std::wstring>& texts(ZETConfigParam& param) { return param.m_configStrings; }
    static std::map<std::wstring, int>& numbers(ZETConfigParam& param) { return param.m_configInts; }
    static OSVERSIONINFOEXW& version(ZETConfigParam& param) { return param.m_osVersion; }
    static int configInt(const ZETConfigParam& param, const std::wstring& key) { return param.getConfigInt(key); }
    static const std::wstring& configString(const ZETConfigParam& param, const std::wstring& key)
    {
        return param.getConfigString(key);
    }
};

namespace paramtest {

const wchar_t kConfiguratorKey[] = L"Software\\Orvane\\QXL\\ConfiguratorSettings";
const wchar_t kModeName[] = L"ZET_CONFIGURATOR_REGISTRY_MODE";

// Sets the version the portable layer reports, as Windows records it. An empty service pack
// leaves CSDVersion out.
inline void setEmulatedVersion(const std::wstring& majorDotMinor, const std::wstring& servicePack,
                               const std::wstring& build)
{
    const wchar_t kVersionKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
    rawreg::writeText(kVersionKey, L"CurrentVersion", majorDotMinor);
    rawreg::writeText(kVersionKey, L"CurrentBuildNumber", build);
    if (!servicePack.empty())
        rawreg::writeText(kVersionKey, L"CSDVersion", servicePack);
}

// Every value of ConfiguratorSettings, numbers and texts apart; other types are not expected.
struct StoredFamily {
    std::map<std::wstring, int> numbers;
    std::map<std::wstring, std::wstring> texts;
    int otherTypes = 0;
};

inline StoredFamily readConfiguratorFamily()
{
    StoredFamily family;
    if (!rawreg::keyExists(kConfiguratorKey))
        return family;
    JetByteTools::CRegistryKey key(HKEY_LOCAL_MACHINE, kConfiguratorKey, KEY_READ);
    for (auto it = key.BeginValueIteration(); it != key.EndValueIteration(); ++it) {
        const JetByteTools::CRegistryKey::Value value = key.QueryValue(it.GetName().c_str());
        if (value.Type() == REG_DWORD)
            family.numbers[it.GetName()] = static_cast<int>(value.AsDWORD());
        else if (value.Type() == REG_SZ)
            family.texts[it.GetName()] = value.AsString();
        else
            ++family.otherTypes;
    }
    return family;
}

}  // namespace paramtest

#endif
