// A mutex that the thread holding it may enter again.
//
// Without a name it orders the threads of one process. With a name it is shared by every
// process that gives the same name (on the portable registry: every process of the same
// store), and a holder that dies passes it on to the next waiter.
#ifndef ZETSETTINGS_COMPONENTS_ZETMUTEX_H
#define ZETSETTINGS_COMPONENTS_ZETMUTEX_H

#include <string>

#include "zetsettings/platform/Win32.h"

class ZETMutex {
public:
    ZETMutex();
    // initialOwner true makes the constructing thread the holder. The attributes matter only
    // while the mutex is created.
    ZETMutex(const std::wstring& name, bool initialOwner, LPSECURITY_ATTRIBUTES attributes);
    ~ZETMutex();

    ZETMutex(const ZETMutex&) = delete;
    ZETMutex& operator=(const ZETMutex&) = delete;

    // Blocks until this thread holds the mutex. Returns false, with the last error set, if the
    // mutex could not be waited on at all (the object failed to build, or a named mutex's
    // lock file is not open to this process); ZETMutexGrabber throws then.
    bool lock();
    void unlock();

private:
    HANDLE m_handle;
};

#endif
