#include "catalogue/records/SharedFolder.h"

#include <array>
#include <cstddef>
#include <vector>

#include "platform/files.h"
#include "platform/security.h"
#include "platform/text.h"
#include "text/StringConversions.h"
#include "trace/UTrace.h"

namespace {

// Who may do everything, in the order of the list's entries.
constexpr WELL_KNOWN_SID_TYPE kAllowed[] = {WinWorldSid, WinBuiltinAdministratorsSid, WinNetworkSid,
                                            WinLocalSystemSid};
constexpr DWORD kInherited = OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE;

// Enough for four entries with identifiers of any length.
constexpr DWORD kListSize = 512;

class Identifier {
  public:
    explicit Identifier(WELL_KNOWN_SID_TYPE kind) {
        DWORD size = sizeof bytes_;
        CreateWellKnownSid(kind, nullptr, bytes_, &size);
    }
    PSID Get() { return bytes_; }

  private:
    alignas(std::max_align_t) std::byte bytes_[SECURITY_MAX_SID_SIZE] = {};
};

// A descriptor that lets every user of the machine do everything, also to what is made in a folder
// that has it.
class OpenDescriptor {
  public:
    explicit OpenDescriptor(bool ownedByAdministrators) {
        ACL* const list = reinterpret_cast<ACL*>(list_);
        InitializeAcl(list, sizeof list_, ACL_REVISION);
        for (const WELL_KNOWN_SID_TYPE kind : kAllowed) {
            Identifier allowed(kind);
            AddAccessAllowedAceEx(list, ACL_REVISION, kInherited, GENERIC_ALL, allowed.Get());
        }
        InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION);
        SetSecurityDescriptorDacl(&descriptor_, TRUE, list, FALSE);
        if (ownedByAdministrators) {
            SetSecurityDescriptorOwner(&descriptor_, owner_.Get(), FALSE);
        }
    }
    OpenDescriptor(const OpenDescriptor&) = delete;
    OpenDescriptor& operator=(const OpenDescriptor&) = delete;

    PSECURITY_DESCRIPTOR Get() { return &descriptor_; }

    // The whole in one block; empty when that fails.
    std::vector<std::byte> SelfRelative() {
        DWORD size = 0;
        MakeSelfRelativeSD(&descriptor_, nullptr, &size);
        std::vector<std::byte> copy(size);
        if (size == 0 || !MakeSelfRelativeSD(&descriptor_, copy.data(), &size)) {
            copy.clear();
        }
        return copy;
    }

  private:
    Identifier owner_{WinBuiltinAdministratorsSid};
    alignas(std::max_align_t) std::byte list_[kListSize] = {};
    SECURITY_DESCRIPTOR descriptor_ = {};
};

// Version 6 without a service pack, and with its second one, refuses folders with that owner.
bool TakesOwner() {
    OSVERSIONINFOEXW version = {};
    version.dwOSVersionInfoSize = sizeof version;
    GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&version));
    return version.dwMajorVersion != 6 ||
           (version.wServicePackMajor != 0 && version.wServicePackMajor != 2);
}

}  // namespace

void CreateSharedFolder(const WideString& path) {
    std::vector<std::byte> descriptor = OpenDescriptor(TakesOwner()).SelfRelative();
    SECURITY_ATTRIBUTES attributes = {};
    attributes.nLength = sizeof attributes;
    attributes.lpSecurityDescriptor = descriptor.empty() ? nullptr : descriptor.data();
    attributes.bInheritHandle = FALSE;
    const BOOL made = CreateDirectoryW(path.c_str(), &attributes);
    const DWORD error = GetLastError();
    UTrace::Info("CreateDirectoryW path = %s, result = %s", WideToNarrow(path).c_str(),
                 made ? "TRUE" : "FALSE");
    if (!made) {
        UTrace::Info("GetLastError: %d", static_cast<int>(error));
    }
}

void ShareCertificateFile(const WideString& path) {
    OpenDescriptor descriptor(true);
    UTrace::Info("SetFileSecurity result = %s)", WideToNarrow(path).c_str());
    SetFileSecurityW(path.c_str(), DACL_SECURITY_INFORMATION, descriptor.Get());
}
