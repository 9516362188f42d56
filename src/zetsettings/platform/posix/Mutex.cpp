// CreateMutexW and friends over MutexTable and MutexObject.
//
// ERROR_ALREADY_EXISTS is reported when this process already has an object of that name; a
// mutex of the same name in another process can't be seen before it is waited on, except with
// bInitialOwner, where a holder in another process makes the object count as existing (and so
// not owned), as on Windows.
#include <cwchar>
#include <exception>
#include <mutex>

#include "zetsettings/platform/posix/MutexTable.h"
#include "zetsettings/platform/posix/Win32Portable.h"

using zet::portable::MutexObject;
using zet::portable::MutexTable;

namespace {

// Windows' limit for the name of a kernel object.
const std::size_t kLongestName = 260;

// Takes a mutex just created for its creator without waiting: if another process holds it,
// the creator is not its first owner. False with the last error set if it can't be taken.
bool claimInitially(HANDLE handle, bool& existed)
{
    const DWORD result = WaitForSingleObject(handle, 0);
    if (result == WAIT_TIMEOUT)
        existed = true;
    return result != WAIT_FAILED;
}

}  // namespace

extern "C" {

HANDLE CreateMutexW(LPSECURITY_ATTRIBUTES, BOOL bInitialOwner, LPCWSTR lpName)
{
    const std::wstring name = lpName ? lpName : L"";
    if (name.size() > kLongestName) {
        SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return nullptr;
    }
    try {
        bool existed = false;
        HANDLE handle = MutexTable::instance().open(name, existed);
        if (bInitialOwner && !existed && !claimInitially(handle, existed)) {
            const DWORD error = GetLastError();
            MutexTable::instance().close(handle);
            SetLastError(error);
            return nullptr;
        }
        SetLastError(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
        return handle;
    } catch (const std::exception&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
}

DWORD WaitForSingleObject(HANDLE hHandle, DWORD dwMilliseconds)
{
    try {
        MutexTable& table = MutexTable::instance();
        const std::shared_ptr<MutexObject> object = table.find(hHandle);
        if (!object) {
            SetLastError(ERROR_INVALID_HANDLE);
            return WAIT_FAILED;
        }
        std::unique_lock<std::mutex> guard(table.guard());
        return object->wait(guard, dwMilliseconds);
    } catch (const std::exception&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return WAIT_FAILED;
    }
}

BOOL ReleaseMutex(HANDLE hMutex)
{
    try {
        MutexTable& table = MutexTable::instance();
        const std::shared_ptr<MutexObject> object = table.find(hMutex);
        if (!object) {
            SetLastError(ERROR_INVALID_HANDLE);
            return FALSE;
        }
        std::unique_lock<std::mutex> guard(table.guard());
        if (!object->release(guard)) {
            SetLastError(ERROR_NOT_OWNER);
            return FALSE;
        }
        return TRUE;
    } catch (const std::exception&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return FALSE;
    }
}

BOOL CloseHandle(HANDLE hObject)
{
    try {
        if (!MutexTable::instance().close(hObject)) {
            SetLastError(ERROR_INVALID_HANDLE);
            return FALSE;
        }
        return TRUE;
    } catch (const std::exception&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return FALSE;
    }
}

}  // extern "C"
