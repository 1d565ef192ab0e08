#include "platform/security.h"

#include <cstring>

#include "platform/posix/base/last_error.h"
#include "platform/posix/files/access_rights.h"
#include "platform/posix/paths/paths.h"

namespace brevik::platform {

BOOL CreateWellKnownSid(WELL_KNOWN_SID_TYPE kind, PSID, PSID sid, DWORD* size) {
    *size = sizeof kind;
    std::memcpy(sid, &kind, sizeof kind);
    return TRUE;
}

BOOL InitializeAcl(ACL* list, DWORD, DWORD) {
    list->isOpenToAll = false;
    return TRUE;
}

BOOL AddAccessAllowedAceEx(ACL* list, DWORD, DWORD, DWORD rights, PSID sid) {
    WELL_KNOWN_SID_TYPE kind;
    std::memcpy(&kind, sid, sizeof kind);
    list->isOpenToAll |= kind == WinWorldSid && rights == GENERIC_ALL;
    return TRUE;
}

BOOL InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor, DWORD) {
    static_cast<SECURITY_DESCRIPTOR*>(descriptor)->list = {};
    return TRUE;
}

BOOL SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL, ACL* list, BOOL) {
    static_cast<SECURITY_DESCRIPTOR*>(descriptor)->list = *list;
    return TRUE;
}

BOOL SetSecurityDescriptorOwner(PSECURITY_DESCRIPTOR, PSID, BOOL) {
    return TRUE;
}

BOOL MakeSelfRelativeSD(PSECURITY_DESCRIPTOR descriptor, PSECURITY_DESCRIPTOR copy, DWORD* size) {
    const DWORD room = *size;
    *size = sizeof(SECURITY_DESCRIPTOR);
    if (room < *size) {
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    std::memcpy(copy, descriptor, *size);
    return TRUE;
}

BOOL SetFileSecurityW(const WCHAR* path, SECURITY_INFORMATION, PSECURITY_DESCRIPTOR descriptor) {
    if (!static_cast<const SECURITY_DESCRIPTOR*>(descriptor)->list.isOpenToAll) {
        return Fail(ERROR_NOT_SUPPORTED);
    }
    const HostFile file = FindFile(path);
    return file.error == NO_ERROR && Answer(OpenToOthers(file.path));
}

}  // namespace brevik::platform
