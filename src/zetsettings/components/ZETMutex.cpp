#include "zetsettings/components/ZETMutex.h"

ZETMutex::ZETMutex() : m_handle(CreateMutexW(0, FALSE, 0)) {}

ZETMutex::ZETMutex(const std::wstring& name, bool initialOwner, LPSECURITY_ATTRIBUTES attributes)
    : m_handle(CreateMutexW(attributes, initialOwner ? TRUE : FALSE, name.c_str()))
{
}

ZETMutex::~ZETMutex()
{
    if (m_handle)
        CloseHandle(m_handle);
}

bool ZETMutex::lock()
{
    if (!m_handle)
        return false;
    // An abandoned mutex is ours all the same: its holder died, and what it guarded is kept
    // consistent by the store's own transactions, not by the lock.
    const DWORD result = WaitForSingleObject(m_handle, INFINITE);
    return result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
}

void ZETMutex::unlock()
{
    if (m_handle)
        ReleaseMutex(m_handle);
}
