// Security descriptors: the portable layer has no ACLs (who may use a named object or the store
// is decided by file modes), so a descriptor only records what it was told, as Windows would.
#include <cstring>

#include "zetsettings/platform/posix/Win32Portable.h"

extern "C" {

BOOL InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR pSecurityDescriptor, DWORD dwRevision)
{
    if (!pSecurityDescriptor) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (dwRevision != SECURITY_DESCRIPTOR_REVISION) {
        SetLastError(ERROR_UNKNOWN_REVISION);
        return FALSE;
    }
    SECURITY_DESCRIPTOR* descriptor = static_cast<SECURITY_DESCRIPTOR*>(pSecurityDescriptor);
    std::memset(descriptor, 0, sizeof(*descriptor));
    descriptor->Revision = SECURITY_DESCRIPTOR_REVISION;
    return TRUE;
}

BOOL SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR pSecurityDescriptor, BOOL bDaclPresent, PACL pDacl,
                               BOOL bDaclDefaulted)
{
    SECURITY_DESCRIPTOR* descriptor = static_cast<SECURITY_DESCRIPTOR*>(pSecurityDescriptor);
    if (!descriptor) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (descriptor->Revision != SECURITY_DESCRIPTOR_REVISION) {
        SetLastError(ERROR_UNKNOWN_REVISION);
        return FALSE;
    }
    descriptor->Control &= static_cast<WORD>(~(SE_DACL_PRESENT | SE_DACL_DEFAULTED));
    descriptor->Dacl = nullptr;
    if (bDaclPresent) {
        descriptor->Control |= SE_DACL_PRESENT;
        descriptor->Dacl = pDacl;
        if (bDaclDefaulted)
            descriptor->Control |= SE_DACL_DEFAULTED;
    }
    return TRUE;
}

}  // extern "C"
