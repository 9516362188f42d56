// Holds a ZETMutex for the life of a scope, also while an exception passes. A mutex that can't
// be taken throws ZETMutexException from the constructor: nothing runs unguarded.
#ifndef ZETSETTINGS_COMPONENTS_ZETMUTEXGRABBER_H
#define ZETSETTINGS_COMPONENTS_ZETMUTEXGRABBER_H

#include "zetsettings/components/ZETMutex.h"
#include "zetsettings/components/ZETMutexException.h"

class ZETMutexGrabber {
public:
    // With grab true the constructor returns holding the mutex; with false it holds nothing.
    ZETMutexGrabber(ZETMutex& mutex, bool grab) : m_mutex(mutex), m_held(grab && mutex.lock())
    {
        if (grab && !m_held)
            throw ZETMutexException(GetLastError());
    }
    ~ZETMutexGrabber()
    {
        if (m_held)
            m_mutex.unlock();
    }

    ZETMutexGrabber(const ZETMutexGrabber&) = delete;
    ZETMutexGrabber& operator=(const ZETMutexGrabber&) = delete;

private:
    ZETMutex& m_mutex;
    bool m_held;
};

#endif
