// Security attributes that let every process of the product open a named object: a security
// descriptor with a null DACL.
#ifndef ZETSETTINGS_COMPONENTS_ZETSECURITYATTRIBUTES_H
#define ZETSETTINGS_COMPONENTS_ZETSECURITYATTRIBUTES_H

#include "zetsettings/platform/Win32.h"

class ZETSecurityAttributes {
public:
    ZETSecurityAttributes();

    ZETSecurityAttributes(const ZETSecurityAttributes&) = delete;
    ZETSecurityAttributes& operator=(const ZETSecurityAttributes&) = delete;

    // Null if the descriptor could not be built; the object is then created with defaults.
    operator LPSECURITY_ATTRIBUTES() { return m_valid ? &m_attributes : 0; }

private:
    SECURITY_DESCRIPTOR m_descriptor;
    SECURITY_ATTRIBUTES m_attributes;
    bool m_valid;
};

#endif
