// The named value families of the sibling programs, and RasMan's EAP settings.
#include "zetsettings/ZETSettings.h"

#include <cstdlib>

#include "zetsettings/components/ZETMutexGrabber.h"
#include "zetsettings/store/MallocedPtr.h"
#include "zetsettings/store/ValueFamily.h"

using JetByteTools::CRegistryKey;
using zet::ValueFamily;

namespace {

const wchar_t kConfiguratorKey[] = L"ConfiguratorSettings";
const wchar_t kNetlibKey[] = L"NetlibSettings";
const wchar_t kGuiHelperKey[] = L"GuiHelper";
const wchar_t kRasEapKey[] = L"RasEapSettings";
const wchar_t kZetGuardKey[] = L"Settings";

// EAP type 26 (MS-CHAP v2): the system's key, which this library never creates.
const wchar_t kRasmanEapKey[] = L"SYSTEM\\CurrentControlSet\\Services\\RasMan\\PPP\\EAP\\26";

// One registry call on RasMan's EAP key: 0, or the Windows error code of the failure.
template <class Call>
DWORD onRasmanEapKey(REGSAM access, const Call& call)
{
    try {
        CRegistryKey root(HKEY_LOCAL_MACHINE);
        CRegistryKey eap = root.OpenKey(kRasmanEapKey, access);
        call(eap);
    } catch (CRegistryKey::Exception& failure) {
        return failure.GetError();
    }
    return ERROR_SUCCESS;
}

}  // namespace

// ---- Configurator: -1 or the empty text for a failed read, nothing written ----------------

int ZETSettings::intGetConfiguratorValue(const std::wstring& name)
{
    return ValueFamily(sm_mutex, getLocalMachineBase, kConfiguratorKey).getInt(name);
}

void ZETSettings::intSetConfiguratorValue(const std::wstring& name, int value)
{
    ValueFamily(sm_mutex, getLocalMachineBase, kConfiguratorKey).setInt(name, value);
}

std::wstring ZETSettings::strGetConfiguratorValue(const std::wstring& name)
{
    return ValueFamily(sm_mutex, getLocalMachineBase, kConfiguratorKey).getText(name);
}

void ZETSettings::strSetConfiguratorValue(const std::wstring& name, const std::wstring& value)
{
    ValueFamily(sm_mutex, getLocalMachineBase, kConfiguratorKey).setText(name, value);
}

// ---- Netlib: a failed read always stores the default ----------------------------------------

int ZETSettings::intGetNetlibValue(const std::wstring& name, int defaultValue)
{
    return ValueFamily(sm_mutex, getLocalMachineBase, kNetlibKey).getInt(name, defaultValue, intSetNetlibValue);
}

void ZETSettings::intSetNetlibValue(const std::wstring& name, int value)
{
    ValueFamily(sm_mutex, getLocalMachineBase, kNetlibKey).setInt(name, value);
}

std::wstring ZETSettings::strGetNetlibValue(const std::wstring& name, const std::wstring& defaultValue)
{
    return ValueFamily(sm_mutex, getLocalMachineBase, kNetlibKey).getText(name, defaultValue, strSetNetlibValue);
}

void ZETSettings::strSetNetlibValue(const std::wstring& name, const std::wstring& value)
{
    ValueFamily(sm_mutex, getLocalMachineBase, kNetlibKey).setText(name, value);
}

// ---- GuiHelper: text only; a failed read always stores the default --------------------------

std::wstring ZETSettings::strGetGuiHelperValue(const std::wstring& name, const std::wstring& defaultValue)
{
    return ValueFamily(sm_mutex, getLocalMachineBase, kGuiHelperKey)
        .getText(name, defaultValue, strSetGuiHelperValue);
}

void ZETSettings::strSetGuiHelperValue(const std::wstring& name, const std::wstring& value)
{
    ValueFamily(sm_mutex, getLocalMachineBase, kGuiHelperKey).setText(name, value);
}

// ---- RasEap: the number getter stores its default; the text getter has none ----------------

int ZETSettings::intGetRasEapValue(const std::wstring& name, int defaultValue)
{
    return ValueFamily(sm_mutex, getLocalMachineBase, kRasEapKey).getInt(name, defaultValue, intSetRasEapValue);
}

void ZETSettings::intSetRasEapValue(const std::wstring& name, int value)
{
    ValueFamily(sm_mutex, getLocalMachineBase, kRasEapKey).setInt(name, value);
}

std::wstring ZETSettings::strGetRasEapValue(const std::wstring& name)
{
    return ValueFamily(sm_mutex, getLocalMachineBase, kRasEapKey).getText(name);
}

void ZETSettings::strSetRasEapValue(const std::wstring& name, const std::wstring& value)
{
    ValueFamily(sm_mutex, getLocalMachineBase, kRasEapKey).setText(name, value);
}

// ---- ZetGuard: the caller decides whether a failed read stores the default ------------------

int ZETSettings::intGetZetGuardValue(const std::wstring& name, int defaultValue, bool writeDefault)
{
    return ValueFamily(sm_mutex, getLocalMachineBase, kZetGuardKey)
        .getInt(name, defaultValue, writeDefault ? intSetZetGuardValue : nullptr);
}

void ZETSettings::intSetZetGuardValue(const std::wstring& name, int value)
{
    ValueFamily(sm_mutex, getLocalMachineBase, kZetGuardKey).setInt(name, value);
}

std::wstring ZETSettings::strGetZetGuardValue(const std::wstring& name, const std::wstring& defaultValue,
                                              bool writeDefault)
{
    return ValueFamily(sm_mutex, getLocalMachineBase, kZetGuardKey)
        .getText(name, defaultValue, writeDefault ? strSetZetGuardValue : nullptr);
}

void ZETSettings::strSetZetGuardValue(const std::wstring& name, const std::wstring& value)
{
    ValueFamily(sm_mutex, getLocalMachineBase, kZetGuardKey).setText(name, value);
}

// ---- RasMan EAP: the only operations that report failure ------------------------------------

// One registry call each, never in a batch: a write is its own commit, and its failure is the
// result.
DWORD ZETSettings::strGetRasmanEapSettings(const std::wstring& name, std::wstring& value)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    wchar_t* text = 0;
    const DWORD code = onRasmanEapKey(KEY_READ, [&](CRegistryKey& key) { key.QueryValue(name.c_str(), &text); });
    // On a failure value keeps what the caller passed: it is neither cleared nor half-written.
    if (code == ERROR_SUCCESS)
        zet::takeText(text, value);
    else
        std::free(text);
    return code;
}

DWORD ZETSettings::strSetRasmanEapSettings(const std::wstring& name, const std::wstring& value)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    return onRasmanEapKey(KEY_ALL_ACCESS, [&](CRegistryKey& key) { key.SetValue(name.c_str(), value.c_str(), REG_SZ); });
}
