// Who may use a file or folder: security identifiers, access lists, and descriptors.
//
// Identifiers, lists and descriptors are blocks of the caller's, laid out as the system lays them
// out, so that a list of entries is built in memory and handed over whole. Results are TRUE, or
// FALSE with GetLastError. Any thread.
//
// Off Windows a file has one owner, who keeps his rights, and the entry for Everyone tells those of
// all others; entries for others than Everyone and the owner that a descriptor names have no
// effect.
#pragma once

#include "platform/errors.h"
#include "platform/files.h"
#include "platform/types.h"

#ifdef _WIN32

#include <aclapi.h>
#include <winnt.h>

#else

namespace brevik::platform {

inline constexpr DWORD GENERIC_EXECUTE = 0x20000000;
inline constexpr DWORD GENERIC_ALL = 0x10000000;
inline constexpr DWORD OBJECT_INHERIT_ACE = 0x1;
inline constexpr DWORD CONTAINER_INHERIT_ACE = 0x2;
inline constexpr DWORD ACL_REVISION = 2;
inline constexpr DWORD SECURITY_DESCRIPTOR_REVISION = 1;
inline constexpr DWORD SECURITY_MAX_SID_SIZE = 68;

using PSID = void*;
using PSECURITY_DESCRIPTOR = void*;
using SECURITY_INFORMATION = DWORD;

inline constexpr SECURITY_INFORMATION OWNER_SECURITY_INFORMATION = 0x1;
inline constexpr SECURITY_INFORMATION DACL_SECURITY_INFORMATION = 0x4;

enum WELL_KNOWN_SID_TYPE {
    WinWorldSid = 1,                   // Everyone, S-1-1-0
    WinNetworkSid = 9,                 // S-1-5-2
    WinLocalSystemSid = 22,            // S-1-5-18
    WinBuiltinAdministratorsSid = 26,  // S-1-5-32-544
};

// The head of an access list, with its entries behind it.
struct ACL {
    BYTE AclRevision;
    BYTE Sbz1;
    WORD AclSize;
    WORD AceCount;
    WORD Sbz2;
};

struct SECURITY_DESCRIPTOR {
    BYTE Revision;
    BYTE Sbz1;
    WORD Control;
    PSID Owner;
    PSID Group;
    ACL* Sacl;
    ACL* Dacl;
};

struct SECURITY_ATTRIBUTES {
    DWORD nLength;
    void* lpSecurityDescriptor;
    BOOL bInheritHandle;
};

// An identifier into a block of `*size` bytes, which receives its size; error 122 with the size
// needed when it does not fit. 87 for a kind that is not listed above.
PLATFORM_API BOOL CreateWellKnownSid(WELL_KNOWN_SID_TYPE kind, PSID domain, PSID sid, DWORD* size);
PLATFORM_API DWORD GetLengthSid(PSID sid);

// An empty list in a block of this size.
PLATFORM_API BOOL InitializeAcl(ACL* list, DWORD size, DWORD revision);

// Adds an entry behind those that are there. Error 1344 when the block has no room left.
PLATFORM_API BOOL AddAccessAllowedAceEx(ACL* list, DWORD revision, DWORD flags, DWORD rights,
                                        PSID sid);

// A descriptor that only points at its parts, and the parts that it is given. The parts are not
// copied, and have to stay.
PLATFORM_API BOOL InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor, DWORD revision);
PLATFORM_API BOOL SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL present,
                                            ACL* list, BOOL defaulted);
PLATFORM_API BOOL SetSecurityDescriptorOwner(PSECURITY_DESCRIPTOR descriptor, PSID owner,
                                             BOOL defaulted);

// One block that holds the descriptor with all its parts; error 122 with the size needed in `*size`
// when it does not fit.
PLATFORM_API BOOL MakeSelfRelativeSD(PSECURITY_DESCRIPTOR descriptor, PSECURITY_DESCRIPTOR copy,
                                     DWORD* size);

// Gives a file or folder the access list of the descriptor in place of its own. Off Windows the
// owner's permissions and the read-only attribute stay as they are, and who may run a file too; the
// inherited entries of a folder count for what is made in it from then on, where the file system
// keeps access lists.
PLATFORM_API BOOL SetFileSecurityW(const WCHAR* path, SECURITY_INFORMATION what,
                                   PSECURITY_DESCRIPTOR descriptor);

}  // namespace brevik::platform

#endif
