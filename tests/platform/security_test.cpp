// Folders and files that are open to every user of the machine.

#include "platform/security.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <vector>

#include "support/drive_files.h"
#include "support/other_user.h"

namespace {

namespace fs = std::filesystem;

// A descriptor in one block whose list has entries for these, with Administrators as owner.
std::vector<BYTE> Descriptor(const std::vector<WELL_KNOWN_SID_TYPE>& allowed) {
    constexpr DWORD kInherited = OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE;
    alignas(std::max_align_t) std::array<BYTE, 512> block;
    auto* const list = reinterpret_cast<ACL*>(block.data());
    EXPECT_TRUE(InitializeAcl(list, block.size(), ACL_REVISION));
    std::array<BYTE, SECURITY_MAX_SID_SIZE> sid;
    const auto makeSid = [&](WELL_KNOWN_SID_TYPE kind) {
        DWORD size = sid.size();
        EXPECT_TRUE(CreateWellKnownSid(kind, nullptr, sid.data(), &size));
    };
    for (const WELL_KNOWN_SID_TYPE kind : allowed) {
        makeSid(kind);
        EXPECT_TRUE(AddAccessAllowedAceEx(list, ACL_REVISION, kInherited, GENERIC_ALL, sid.data()));
    }
    SECURITY_DESCRIPTOR descriptor;
    makeSid(WinBuiltinAdministratorsSid);
    EXPECT_TRUE(InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
    EXPECT_TRUE(SetSecurityDescriptorDacl(&descriptor, TRUE, list, FALSE));
    EXPECT_TRUE(SetSecurityDescriptorOwner(&descriptor, sid.data(), FALSE));
    DWORD size = 0;
    EXPECT_EQ(ErrorOf(MakeSelfRelativeSD(&descriptor, nullptr, &size)), 122u);
    std::vector<BYTE> copy(size);
    EXPECT_TRUE(MakeSelfRelativeSD(&descriptor, copy.data(), &size));
    return copy;
}

std::vector<BYTE> OpenToEveryone() {
    return Descriptor({WinWorldSid, WinBuiltinAdministratorsSid, WinNetworkSid, WinLocalSystemSid});
}

mode_t ModeOf(const fs::path& path) {
    struct stat status;
    return lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

bool AppendTo(const fs::path& path) {
    const int file = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT, 0666);
    const bool written = file >= 0 && write(file, "x", 1) == 1;
    close(file);
    return written;
}

class Security : public testing::Test {
  protected:
    void SetUp() override {
        folder_ = NewFolder("Security");
        umask(0077);
        OpenTheWayTo(folder_);
    }

    fs::path folder_;
};

TEST_F(Security, AFolderIsMadeWithTheRightsOfItsDescriptor) {
    std::vector<BYTE> shut = Descriptor({WinLocalSystemSid});
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, shut.data(), FALSE};
    EXPECT_EQ(ErrorOf(CreateDirectoryW(u"C:\\Security\\New", &attributes)), 50u);
    std::vector<BYTE> open = OpenToEveryone();
    attributes.lpSecurityDescriptor = open.data();
    EXPECT_TRUE(CreateDirectoryW(u"C:\\Security\\New", &attributes));
    EXPECT_EQ(ModeOf(folder_ / "New"), 01777u);
    EXPECT_EQ(ErrorOf(CreateDirectoryW(u"C:\\security\\NEW", &attributes)), 183u);
    EXPECT_EQ(ErrorOf(CreateDirectoryW(u"C:\\Security\\None\\New", &attributes)), 3u);
    EXPECT_TRUE(CreateDirectoryW(u"C:\\Security\\Plain", nullptr));
    EXPECT_EQ(ModeOf(folder_ / "Plain"), 0700u);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 2);  // nothing else is left
}

TEST_F(Security, FilesInASharedFolderAreOpenToOtherUsers) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can be another user";
    }
    std::vector<BYTE> descriptor = OpenToEveryone();
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, descriptor.data(), FALSE};
    ASSERT_TRUE(CreateDirectoryW(u"C:\\Security\\Shared", &attributes));
    const fs::path shared = folder_ / "Shared";
    ASSERT_TRUE(AppendTo(shared / "ours"));
    EXPECT_TRUE(AsNobody([&] { return AppendTo(shared / "theirs"); }));
    if ((ModeOf(shared / "ours") & 0066) != 0066) {
        GTEST_SKIP() << "the file system keeps no access lists";
    }
    EXPECT_TRUE(AsNobody([&] { return AppendTo(shared / "ours"); }));
    EXPECT_EQ(ModeOf(shared / "theirs"), 0666u);
    fs::create_directory(shared / "below");
    EXPECT_TRUE(AsNobody([&] { return AppendTo(shared / "below/theirs"); }));
    // To write a file is not to put another in its place.
    EXPECT_FALSE(AsNobody([&] { return unlink((shared / "ours").c_str()) == 0; }));
}

TEST_F(Security, AFileGetsTheListOfADescriptor) {
    std::vector<BYTE> open = OpenToEveryone();
    std::vector<BYTE> shut = Descriptor({});
    const fs::path file = folder_ / "File";
    WriteHostFile(file);
    const auto set = [](std::vector<BYTE>& descriptor) {
        return ErrorOf(
            SetFileSecurityW(u"C:\\Security\\FILE", DACL_SECURITY_INFORMATION, descriptor.data()));
    };
    EXPECT_EQ(set(open), 0u);
    EXPECT_EQ(ModeOf(file), 0666u);
    EXPECT_EQ(set(shut), 50u);
    EXPECT_EQ(ModeOf(file), 0666u);
    // It stays read-only, or a program, as it was.
    chmod(file.c_str(), 0500);
    EXPECT_EQ(set(open), 0u);
    EXPECT_EQ(ModeOf(file), 0555u);
    EXPECT_EQ(
        ErrorOf(SetFileSecurityW(u"C:\\Security\\none", DACL_SECURITY_INFORMATION, open.data())),
        2u);
    if (geteuid() == 0) {
        EXPECT_TRUE(AsNobody([&] {
            return !SetFileSecurityW(u"C:\\Security\\File", DACL_SECURITY_INFORMATION,
                                     open.data()) &&
                   GetLastError() == 5;
        }));
    }
}

}  // namespace
