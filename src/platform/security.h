// Who may use a file or folder: security identifiers, access lists, and descriptors.
//
// Identifiers and lists are made in blocks of the caller. Results are TRUE, or FALSE with
// GetLastError. Any thread.
//
// Off Windows a list gives every user all rights, or it is not supported. The owner of a file keeps
// its rights; entries for others than Everyone have no effect.
#pragma once

#include "platform/errors.h"
#include "platform/files.h"
#include "platform/types.h"

#ifdef _WIN32

#include <aclapi.h>
#include <winnt.h>

#else

namespace brevik::platform {

inline constexpr DWORD GENERIC_ALL = 0x10000000;
inline constexpr DWORD OBJECT_INHERIT_ACE = 0x1;
inline constexpr DWORD CONTAINER_INHERIT_ACE = 0x2;
inline constexpr DWORD ACL_REVISION = 2;
inline constexpr DWORD SECURITY_DESCRIPTOR_REVISION = 1;
inline constexpr DWORD SECURITY_MAX_SID_SIZE = 68;

using PSID = void*;
using PSECURITY_DESCRIPTOR = void*;
using SECURITY_INFORMATION = DWORD;

inline constexpr SECURITY_INFORMATION DACL_SECURITY_INFORMATION = 0x4;

enum WELL_KNOWN_SID_TYPE {
    WinWorldSid = 1,                   // Everyone
    WinNetworkSid = 9,                 // users who come over the network
    WinLocalSystemSid = 22,            // the system itself
    WinBuiltinAdministratorsSid = 26,  // the group of administrators
};

// What the host needs to know of a list.
struct ACL {
    bool isOpenToAll;  // whether every user may do everything
};

struct SECURITY_DESCRIPTOR {
    ACL list;
};

struct SECURITY_ATTRIBUTES {
    DWORD nLength;
    void* lpSecurityDescriptor;
    BOOL bInheritHandle;
};

// An identifier into a block of `*size` bytes. REQUIRES: a block of SECURITY_MAX_SID_SIZE.
PLATFORM_API BOOL CreateWellKnownSid(WELL_KNOWN_SID_TYPE kind, PSID domain, PSID sid, DWORD* size);

// An empty list in a block of this size. REQUIRES: room for an entry.
PLATFORM_API BOOL InitializeAcl(ACL* list, DWORD size, DWORD revision);

// Adds an entry. Off Windows one that gives Everyone all rights opens the file, or the folder with
// all that is made in it.
PLATFORM_API BOOL AddAccessAllowedAceEx(ACL* list, DWORD revision, DWORD flags, DWORD rights,
                                        PSID sid);

// A descriptor that only points at its parts, and the parts that it is given. The parts have to
// stay, and not to change. Off Windows the owner is not changed.
PLATFORM_API BOOL InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor, DWORD revision);
PLATFORM_API BOOL SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL present,
                                            ACL* list, BOOL defaulted);
PLATFORM_API BOOL SetSecurityDescriptorOwner(PSECURITY_DESCRIPTOR descriptor, PSID owner,
                                             BOOL defaulted);

// One block that holds the descriptor with all its parts; ERROR_INSUFFICIENT_BUFFER with the size
// needed in `*size` when it does not fit.
PLATFORM_API BOOL MakeSelfRelativeSD(PSECURITY_DESCRIPTOR descriptor, PSECURITY_DESCRIPTOR copy,
                                     DWORD* size);

// Gives a file or folder the access list of the descriptor in place of its own. Off Windows the
// owner's permissions and the read-only attribute stay as they are, and who may run a file too.
PLATFORM_API BOOL SetFileSecurityW(const WCHAR* path, SECURITY_INFORMATION what,
                                   PSECURITY_DESCRIPTOR descriptor);

}  // namespace brevik::platform

#endif
