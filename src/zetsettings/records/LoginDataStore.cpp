// The machine's one login: user name, password and three switches in one protected value.
// The switches form a chain (keepPassword counts only with loginEnabled, dependentFlag only
// with keepPassword), and a password is stored only when the chain allows it.
#include "zetsettings/ZETSettings.h"

#include "zetsettings/components/ZETMutexGrabber.h"
#include "zetsettings/platform/RegistryBatch.h"
#include "zetsettings/records/ProtectedValue.h"
#include "zetsettings/records/RecordNames.h"

using JetByteTools::CRegistryKey;
using namespace zet::records;

namespace {

void fillLoginRecord(ZETLoginData& record, const std::wstring& userName, const std::wstring& password,
                     bool loginEnabled, bool keepPassword, bool dependentFlag)
{
    // Text enters up to its first null character, as a C string would.
    record.userName = ser_wstring(userName.c_str());
    if (!loginEnabled)
        return;
    record.loginEnabled.value = 1;
    if (!keepPassword)
        return;
    record.keepPassword.value = 1;
    record.password = ser_wstring(password.c_str());
    record.dependentFlag.value = dependentFlag ? 1 : 0;
}

}  // namespace

// The stored record is replaced whole, so a login that keeps no password wipes an earlier one.
void ZETSettings::setLoginData(std::wstring userName, std::wstring password, bool loginEnabled,
                               bool keepPassword, bool dependentFlag)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    ZETLoginData record;
    fillLoginRecord(record, userName, password, loginEnabled, keepPassword, dependentFlag);
    try {
        saveProtectedValue(kLoginSettingsValue, record, &getLocalMachineBase);
    } catch (CRegistryKey::Exception&) {
    }
}

// The out-parameters are emptied before the registry is touched, so nothing of the caller's
// old contents survives a failed read. A flag is true only for a stored byte of exactly 1.
void ZETSettings::getLoginData(std::wstring& userName, std::wstring& password, bool& loginEnabled,
                               bool& keepPassword, bool& dependentFlag)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    ZETLoginData record;
    userName.clear();
    password.clear();
    loginEnabled = keepPassword = dependentFlag = false;
    // The load drops registry failures itself: they read as nothing stored.
    if (loadProtectedValue(kLoginSettingsValue, record, &getLocalMachineBase) != ProtectedLoad::Loaded)
        return;
    userName = record.userName.c_str();
    password = record.password.c_str();
    loginEnabled = record.loginEnabled.value == 1;
    keepPassword = record.keepPassword.value == 1;
    dependentFlag = record.dependentFlag.value == 1;
}

void ZETSettings::removeLoginData()
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    try {
        getLocalMachineBase().DeleteValue(kLoginSettingsValue);
    } catch (CRegistryKey::Exception&) {
    }
}
