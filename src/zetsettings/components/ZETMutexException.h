// A mutex that could not be taken: the operation that needed it does not run unguarded. It is
// no registry failure, so the settings operations let it pass to their callers.
#ifndef ZETSETTINGS_COMPONENTS_ZETMUTEXEXCEPTION_H
#define ZETSETTINGS_COMPONENTS_ZETMUTEXEXCEPTION_H

#include <stdexcept>
#include <string>

#include "zetsettings/platform/Win32.h"

class ZETMutexException : public std::runtime_error {
public:
    explicit ZETMutexException(DWORD error)
        : std::runtime_error("a mutex of the settings could not be taken (Windows error " + std::to_string(error) +
                             "): the store's lock files are not open to this process"),
          m_error(error)
    {
    }

    DWORD GetError() const { return m_error; }

private:
    DWORD m_error;
};

#endif
