// An error reported by a Win32 call: where it happened and the Windows error code.
// Deliberately not a std::exception: callers that catch std::exception do not catch registry
// failures by accident, and the other way round.
#ifndef ZETSETTINGS_COMPONENTS_CWIN32EXCEPTION_H
#define ZETSETTINGS_COMPONENTS_CWIN32EXCEPTION_H

#include <string>

#include "zetsettings/platform/Win32.h"

namespace JetByteTools {

class CWin32Exception {
public:
    CWin32Exception(const std::wstring& where, DWORD error) : m_where(where), m_error(error) {}
    virtual ~CWin32Exception() = default;

    DWORD GetError() const { return m_error; }
    const std::wstring& GetWhere() const { return m_where; }

private:
    std::wstring m_where;
    DWORD m_error;
};

}  // namespace JetByteTools

#endif
