#include "platform/security.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <string>

#include "platform/posix/access_rights.h"
#include "platform/posix/paths.h"

namespace brevik::platform {
namespace {

constexpr DWORD kAllotmentExceeded = 1344;
constexpr DWORD kUnknownRevision = 1305;

constexpr BYTE kAccessAllowed = 0;
constexpr WORD kDaclPresent = 0x0004;
constexpr WORD kSelfRelative = 0x8000;

// An identifier has this head, and so many numbers of 4 bytes behind it.
struct SidHead {
    BYTE revision;
    BYTE count;
    BYTE authority[6];
};

// An entry has this head, and an identifier behind it.
struct EntryHead {
    BYTE kind;
    BYTE flags;
    WORD size;
    DWORD rights;
};

// A descriptor in one block, with the places of its parts in the block, or 0.
struct RelativeDescriptor {
    BYTE revision;
    BYTE unused;
    WORD control;
    DWORD owner;
    DWORD group;
    DWORD systemList;
    DWORD list;
};

struct WellKnownSid {
    WELL_KNOWN_SID_TYPE kind;
    BYTE authority;
    BYTE count;
    DWORD numbers[2];
};

constexpr WellKnownSid kWellKnownSids[] = {
    {WinWorldSid, 1, 1, {0}},
    {WinNetworkSid, 5, 1, {2}},
    {WinLocalSystemSid, 5, 1, {18}},
    {WinBuiltinAdministratorsSid, 5, 2, {32, 544}},
};

BOOL Answer(DWORD error) {
    if (error != NO_ERROR) {
        SetLastError(error);
    }
    return error == NO_ERROR;
}

template <typename Block>
Block ReadBlock(const void* place) {
    Block block;
    std::memcpy(&block, place, sizeof block);
    return block;
}

const BYTE* BytesOf(const void* block) {
    return static_cast<const BYTE*>(block);
}

bool IsRelative(const void* descriptor) {
    // The two forms begin alike.
    return (ReadBlock<RelativeDescriptor>(descriptor).control & kSelfRelative) != 0;
}

// The access list of a descriptor of either form. Null for one that has none, and for one whose
// list lets everybody do everything by being missing; `present` tells them apart.
const BYTE* ListOf(const void* descriptor, bool* present) {
    if (IsRelative(descriptor)) {
        const auto relative = ReadBlock<RelativeDescriptor>(descriptor);
        *present = (relative.control & kDaclPresent) != 0;
        return *present && relative.list != 0 ? BytesOf(descriptor) + relative.list : nullptr;
    }
    const auto absolute = ReadBlock<SECURITY_DESCRIPTOR>(descriptor);
    *present = (absolute.Control & kDaclPresent) != 0;
    return *present ? BytesOf(absolute.Dacl) : nullptr;
}

struct GenericRight {
    DWORD right;
    unsigned permissions;
};

constexpr GenericRight kGenericRights[] = {
    {GENERIC_ALL, kMayRead | kMayWrite | kMayRun},
    {GENERIC_READ, kMayRead},
    {GENERIC_WRITE, kMayWrite},
    {GENERIC_EXECUTE, kMayRun},
};

unsigned PermissionsOf(DWORD rights) {
    unsigned permissions = 0;
    for (const GenericRight& row : kGenericRights) {
        permissions |= (rights & row.right) != 0 ? row.permissions : 0;
    }
    return permissions;
}

bool IsEveryone(const void* sid) {
    std::array<BYTE, SECURITY_MAX_SID_SIZE> everyone;
    auto size = static_cast<DWORD>(everyone.size());
    CreateWellKnownSid(WinWorldSid, nullptr, everyone.data(), &size);
    return std::memcmp(sid, everyone.data(), size) == 0;
}

}  // namespace

OtherUsersRights RightsIn(const void* descriptor) {
    bool present = false;
    const BYTE* list = ListOf(descriptor, &present);
    constexpr unsigned kAll = kMayRead | kMayWrite | kMayRun;
    if (list == nullptr) {
        return {present, kAll, std::nullopt};
    }
    OtherUsersRights rights = {true, 0, std::nullopt};
    const auto head = ReadBlock<ACL>(list);
    list += sizeof head;
    for (WORD index = 0; index < head.AceCount; ++index) {
        const auto entry = ReadBlock<EntryHead>(list);
        if (entry.kind == kAccessAllowed && IsEveryone(list + sizeof entry)) {
            const unsigned permissions = PermissionsOf(entry.rights);
            rights.here |= permissions;
            if ((entry.flags & (OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE)) != 0) {
                rights.below = rights.below.value_or(0) | permissions;
            }
        }
        list += entry.size;
    }
    return rights;
}

BOOL CreateWellKnownSid(WELL_KNOWN_SID_TYPE kind, PSID domain, PSID sid, DWORD* size) {
    const auto known =
        std::find_if(std::begin(kWellKnownSids), std::end(kWellKnownSids),
                     [=](const WellKnownSid& candidate) { return candidate.kind == kind; });
    if (known == std::end(kWellKnownSids) || domain != nullptr || size == nullptr) {
        return Answer(ERROR_INVALID_PARAMETER);
    }
    const std::size_t numbers = known->count * sizeof(DWORD);
    const DWORD room = *size;
    *size = static_cast<DWORD>(sizeof(SidHead) + numbers);
    if (sid == nullptr || room < *size) {
        return Answer(ERROR_INSUFFICIENT_BUFFER);
    }
    const SidHead head = {1, known->count, {0, 0, 0, 0, 0, known->authority}};
    std::memcpy(sid, &head, sizeof head);
    std::memcpy(static_cast<BYTE*>(sid) + sizeof head, known->numbers, numbers);
    return TRUE;
}

DWORD GetLengthSid(PSID sid) {
    return static_cast<DWORD>(sizeof(SidHead) + ReadBlock<SidHead>(sid).count * sizeof(DWORD));
}

BOOL InitializeAcl(ACL* list, DWORD size, DWORD revision) {
    if (list == nullptr || size > UINT16_MAX || revision != ACL_REVISION) {
        return Answer(ERROR_INVALID_PARAMETER);
    }
    if (size < sizeof(ACL)) {
        return Answer(ERROR_INSUFFICIENT_BUFFER);
    }
    *list = {static_cast<BYTE>(revision), 0, static_cast<WORD>(size), 0, 0};
    return TRUE;
}

BOOL AddAccessAllowedAceEx(ACL* list, DWORD revision, DWORD flags, DWORD rights, PSID sid) {
    if (list == nullptr || sid == nullptr || revision != ACL_REVISION) {
        return Answer(ERROR_INVALID_PARAMETER);
    }
    auto* const bytes = reinterpret_cast<BYTE*>(list);
    std::size_t end = sizeof(ACL);
    for (WORD index = 0; index < list->AceCount; ++index) {
        end += ReadBlock<EntryHead>(bytes + end).size;
    }
    const DWORD sidSize = GetLengthSid(sid);
    const std::size_t size = sizeof(EntryHead) + sidSize;
    if (end + size > list->AclSize) {
        return Answer(kAllotmentExceeded);
    }
    const EntryHead entry = {kAccessAllowed, static_cast<BYTE>(flags), static_cast<WORD>(size),
                             rights};
    std::memcpy(bytes + end, &entry, sizeof entry);
    std::memcpy(bytes + end + sizeof entry, sid, sidSize);
    ++list->AceCount;
    return TRUE;
}

BOOL InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor, DWORD revision) {
    if (revision != SECURITY_DESCRIPTOR_REVISION) {
        return Answer(kUnknownRevision);
    }
    *static_cast<SECURITY_DESCRIPTOR*>(descriptor) = {
        SECURITY_DESCRIPTOR_REVISION, 0, 0, nullptr, nullptr, nullptr, nullptr};
    return TRUE;
}

BOOL SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL present, ACL* list, BOOL) {
    auto& absolute = *static_cast<SECURITY_DESCRIPTOR*>(descriptor);
    absolute.Control = static_cast<WORD>(absolute.Control & ~kDaclPresent);
    absolute.Control |= present != FALSE ? kDaclPresent : WORD{0};
    absolute.Dacl = present != FALSE ? list : nullptr;
    return TRUE;
}

BOOL SetSecurityDescriptorOwner(PSECURITY_DESCRIPTOR descriptor, PSID owner, BOOL) {
    static_cast<SECURITY_DESCRIPTOR*>(descriptor)->Owner = owner;
    return TRUE;
}

BOOL MakeSelfRelativeSD(PSECURITY_DESCRIPTOR descriptor, PSECURITY_DESCRIPTOR copy, DWORD* size) {
    if (descriptor == nullptr || size == nullptr || IsRelative(descriptor)) {
        return Answer(ERROR_INVALID_PARAMETER);
    }
    const auto absolute = ReadBlock<SECURITY_DESCRIPTOR>(descriptor);
    const DWORD listSize = absolute.Dacl != nullptr ? absolute.Dacl->AclSize : 0;
    const DWORD ownerSize = absolute.Owner != nullptr ? GetLengthSid(absolute.Owner) : 0;
    constexpr DWORD kHeadSize = sizeof(RelativeDescriptor);
    const DWORD room = *size;
    *size = kHeadSize + listSize + ownerSize;
    if (copy == nullptr || room < *size) {
        return Answer(ERROR_INSUFFICIENT_BUFFER);
    }
    RelativeDescriptor head = {absolute.Revision, 0, absolute.Control, 0, 0, 0, 0};
    head.control |= kSelfRelative;
    head.list = listSize != 0 ? kHeadSize : 0;
    head.owner = ownerSize != 0 ? kHeadSize + listSize : 0;
    auto* const bytes = static_cast<BYTE*>(copy);
    std::memcpy(bytes, &head, sizeof head);
    if (listSize != 0) {
        std::memcpy(bytes + head.list, absolute.Dacl, listSize);
    }
    if (ownerSize != 0) {
        std::memcpy(bytes + head.owner, absolute.Owner, ownerSize);
    }
    return TRUE;
}

BOOL SetFileSecurityW(const WCHAR* path, SECURITY_INFORMATION what,
                      PSECURITY_DESCRIPTOR descriptor) {
    if (path == nullptr || descriptor == nullptr) {
        return Answer(ERROR_INVALID_PARAMETER);
    }
    const HostFile file = FindFile(std::u16string_view(path));
    if (file.error != NO_ERROR) {
        return FALSE;
    }
    if ((what & DACL_SECURITY_INFORMATION) == 0) {
        return TRUE;
    }
    return Answer(GrantToOthers(file.path, RightsIn(descriptor)));
}

}  // namespace brevik::platform
