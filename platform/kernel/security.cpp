// Security descriptors. The calls check only their form; no access is refused because of one.
#include <windows.h>

BOOL WINAPI InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR pSecurityDescriptor, DWORD dwRevision) {
    if (dwRevision != SECURITY_DESCRIPTOR_REVISION) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    *static_cast<SECURITY_DESCRIPTOR*>(pSecurityDescriptor) = {};
    static_cast<SECURITY_DESCRIPTOR*>(pSecurityDescriptor)->Revision = SECURITY_DESCRIPTOR_REVISION;
    return TRUE;
}

BOOL WINAPI SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR pSecurityDescriptor, BOOL bDaclPresent, PACL pDacl,
                                      BOOL bDaclDefaulted) {
    auto* descriptor = static_cast<SECURITY_DESCRIPTOR*>(pSecurityDescriptor);
    if (descriptor->Revision != SECURITY_DESCRIPTOR_REVISION) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    constexpr WORD DaclBits = SE_DACL_PRESENT | SE_DACL_DEFAULTED;
    descriptor->Control = static_cast<WORD>(descriptor->Control & ~DaclBits);
    if (bDaclPresent) {
        const WORD set = bDaclDefaulted ? DaclBits : SE_DACL_PRESENT;
        descriptor->Control = static_cast<WORD>(descriptor->Control | set);
        descriptor->Dacl = pDacl;
    }
    return TRUE;
}
