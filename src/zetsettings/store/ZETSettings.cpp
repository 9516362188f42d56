// The frame of the store: its two mutexes, the base keys and the base family.
#include "zetsettings/ZETSettings.h"

#include <cstdlib>

#include "zetsettings/components/ZETMutexGrabber.h"
#include "zetsettings/components/ZETSecurityAttributes.h"
#include "zetsettings/platform/RegistryBatch.h"
#include "zetsettings/store/RegistryPaths.h"

using JetByteTools::CRegistryKey;

// The two mutexes are the library's only static initialisers, sm_mutex first: they are
// defined in this order in this one file.
ZETMutex ZETSettings::sm_mutex;
ZETMutex ZETSettings::sm_mutexPreferredNet(std::wstring(L"zetPreferredNetMutex"), false,
                                           ZETSecurityAttributes());

CRegistryKey ZETSettings::getCurrentUserBase()
{
    return CRegistryKey(HKEY_CURRENT_USER).CreateOrOpenKey(zet::paths::kBaseKey, 0, L"", 0, KEY_ALL_ACCESS, 0);
}

CRegistryKey ZETSettings::getLocalMachineBase()
{
    return CRegistryKey(HKEY_LOCAL_MACHINE).CreateOrOpenKeyEx(zet::paths::kBaseKey, 0, L"", 0, KEY_ALL_ACCESS);
}

CRegistryKey ZETSettings::getNetworkSettingsKey()
{
    return getLocalMachineBase().CreateOrOpenKeyEx(zet::paths::kNetworkSettingsKey, 0, L"", 0, KEY_ALL_ACCESS);
}

int ZETSettings::intGetBaseValue(const std::wstring& name, int defaultValue, bool writeDefault)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    int result = -1;
    try {
        CRegistryKey base = getLocalMachineBase();
        DWORD value = static_cast<DWORD>(result);
        base.QueryValue(name.c_str(), value);
        result = static_cast<int>(value);
    } catch (CRegistryKey::Exception&) {
        if (writeDefault)
            intSetBaseValue(name, defaultValue);
        result = defaultValue;
    }
    return result;
}

void ZETSettings::intSetBaseValue(const std::wstring& name, int value)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    try {
        getLocalMachineBase().SetValue(name.c_str(), static_cast<DWORD>(value), REG_DWORD);
    } catch (CRegistryKey::Exception&) {
    }
}

std::wstring ZETSettings::strGetBaseValue(const std::wstring& name, const std::wstring& defaultValue,
                                          bool writeDefault)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    std::wstring result;
    try {
        wchar_t* text = 0;
        getLocalMachineBase().QueryValue(name.c_str(), &text);
        if (text) {
            result = text;
            std::free(text);
        }
    } catch (CRegistryKey::Exception&) {
        if (writeDefault)
            strSetBaseValue(name, defaultValue);
        result = defaultValue;
    }
    return result;
}

void ZETSettings::strSetBaseValue(const std::wstring& name, const std::wstring& value)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    try {
        getLocalMachineBase().SetValue(name.c_str(), value.c_str(), REG_SZ);
    } catch (CRegistryKey::Exception&) {
    }
}
