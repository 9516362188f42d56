#include "zetsettings/components/ZETSecurityAttributes.h"

ZETSecurityAttributes::ZETSecurityAttributes() : m_descriptor(), m_attributes(), m_valid(false)
{
    // A null DACL grants everyone access, so every process of the product can open the object
    // whichever account it runs under.
    if (!InitializeSecurityDescriptor(&m_descriptor, SECURITY_DESCRIPTOR_REVISION))
        return;
    if (!SetSecurityDescriptorDacl(&m_descriptor, TRUE, 0, FALSE))
        return;
    m_attributes.nLength = sizeof(m_attributes);
    m_attributes.lpSecurityDescriptor = &m_descriptor;
    m_attributes.bInheritHandle = FALSE;
    m_valid = true;
}
