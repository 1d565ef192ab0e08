#include "platform/security.h"

#include <cstring>
#include <new>
#include <string_view>

#include "platform/posix/base/last_error.h"
#include "platform/posix/files/access_rights.h"
#include "platform/posix/paths/paths.h"

namespace brevik::platform {

struct ACL {
    OtherUsersRights rights;
};

namespace {

// A self-relative descriptor points at no list: its list follows it.
struct SelfRelativeDescriptor {
    SECURITY_DESCRIPTOR head;
    ACL list;
};

}  // namespace

OtherUsersRights RightsIn(const void* descriptor) {
    const auto* const head = static_cast<const SECURITY_DESCRIPTOR*>(descriptor);
    return head->Dacl != nullptr
               ? head->Dacl->rights
               : static_cast<const SelfRelativeDescriptor*>(descriptor)->list.rights;
}

BOOL CreateWellKnownSid(WELL_KNOWN_SID_TYPE kind, PSID, PSID sid, DWORD* size) {
    *size = sizeof kind;
    std::memcpy(sid, &kind, sizeof kind);
    return TRUE;
}

BOOL InitializeAcl(ACL* list, DWORD, DWORD) {
    new (list) ACL{OtherUsersRights::kNone};
    return TRUE;
}

BOOL AddAccessAllowedAceEx(ACL* list, DWORD, DWORD, DWORD rights, PSID sid) {
    WELL_KNOWN_SID_TYPE kind;
    std::memcpy(&kind, sid, sizeof kind);
    if (kind == WinWorldSid && rights == GENERIC_ALL) {
        list->rights = OtherUsersRights::kAll;
    }
    return TRUE;
}

BOOL InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor, DWORD) {
    static_cast<SECURITY_DESCRIPTOR*>(descriptor)->Dacl = nullptr;
    return TRUE;
}

BOOL SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL, ACL* list, BOOL) {
    static_cast<SECURITY_DESCRIPTOR*>(descriptor)->Dacl = list;
    return TRUE;
}

BOOL SetSecurityDescriptorOwner(PSECURITY_DESCRIPTOR, PSID, BOOL) {
    return TRUE;
}

BOOL MakeSelfRelativeSD(PSECURITY_DESCRIPTOR descriptor, PSECURITY_DESCRIPTOR copy, DWORD* size) {
    const DWORD room = *size;
    *size = sizeof(SelfRelativeDescriptor);
    if (room < *size) {
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    new (copy) SelfRelativeDescriptor{{nullptr}, {RightsIn(descriptor)}};
    return TRUE;
}

BOOL SetFileSecurityW(const WCHAR* path, SECURITY_INFORMATION, PSECURITY_DESCRIPTOR descriptor) {
    const HostFile file = FindFile(std::u16string_view(path));
    return file.error == NO_ERROR && Answer(GrantToOthers(file.path, RightsIn(descriptor)));
}

}  // namespace brevik::platform
