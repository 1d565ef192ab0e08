// Volumes: what the host knows of them, what the machine's registry says in its place, and locking
// and dismounting a drive through its device.

#include "platform/volumes.h"

#include <gtest/gtest.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>

#include "platform/posix/text/host_text.h"
#include "support/drive_files.h"
#include "support/test_machine.h"

namespace {

namespace fs = std::filesystem;

fs::path MachineFolder() {
    return Machine::Current().Folder();
}

// The values of the volume's key, in the registry's text form; each replaces all before it.
void Tell(const std::string& key, const std::string& values) {
    const fs::path file = MachineFolder() / "registry.reg";
    std::ofstream(file.string() + ".new")
        << "Windows Registry Editor Version 5.00\n\n"
        << "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Brevik\\Volumes\\" << key << "]\n"
        << values << "\n";
    fs::rename(file.string() + ".new", file);
}

struct Answer {
    DWORD error = 0;
    std::string label;
    DWORD serial = 0;
    DWORD longestName = 0;
    DWORD flags = 0;
    std::string fileSystem;
};

Answer Ask(const WCHAR* root) {
    Answer answer;
    WCHAR label[256] = u"";
    WCHAR fileSystem[16] = u"";
    SetLastError(0);
    if (!GetVolumeInformationW(root, label, 256, &answer.serial, &answer.longestName, &answer.flags,
                               fileSystem, 16)) {
        answer.error = GetLastError();
    }
    answer.label = Utf8FromWide(label);
    answer.fileSystem = Utf8FromWide(fileSystem);
    return answer;
}

class Volumes : public testing::Test {
  protected:
    void SetUp() override {
        fs::create_directories(MachineFolder() / "shares/Srv/Music");
        fs::create_directories(MachineFolder() / "drives/m");
        fs::remove(MachineFolder() / "registry.reg");
    }
};

TEST_F(Volumes, AnswerForRoots) {
    const struct {
        const WCHAR* root;
        DWORD error;
        UINT kind;
    } cases[] = {
        {u"C:\\", 0, DRIVE_FIXED},
        {u"c:\\", 0, DRIVE_FIXED},
        {u"Z:\\", 0, DRIVE_FIXED},
        {u"\\\\srv\\music\\", 0, DRIVE_REMOTE},
        {u"\\\\SRV\\Music\\", 0, DRIVE_REMOTE},
        {u"F:\\", 3, DRIVE_NO_ROOT_DIR},
        {u"Q:\\", 3, DRIVE_NO_ROOT_DIR},
        {u"\\\\nosrv\\share\\", 53, DRIVE_NO_ROOT_DIR},
        {u"\\\\srv\\noshare\\", 53, DRIVE_NO_ROOT_DIR},
        {u"\\\\srv\\a*\\", 123, DRIVE_NO_ROOT_DIR},
    };
    std::ofstream(MachineFolder() / "drives/f") << "a file, and no folder";
    for (const auto& row : cases) {
        SCOPED_TRACE(Utf8FromWide(row.root));
        EXPECT_EQ(Ask(row.root).error, row.error);
        EXPECT_EQ(GetDriveTypeW(row.root), row.kind);
        SetLastError(0);
        EXPECT_EQ(GetDiskFreeSpaceExW(row.root, nullptr, nullptr, nullptr), row.error == 0);
        EXPECT_EQ(GetLastError(), row.error);
    }
}

TEST_F(Volumes, HaveTheHostsFacts) {
    const Answer answer = Ask(u"C:\\");
    struct statvfs host;
    ASSERT_EQ(statvfs(MachineFolder().c_str(), &host), 0);
    EXPECT_EQ(answer.label, "");
    EXPECT_EQ(answer.longestName, host.f_namemax);
    EXPECT_FALSE(answer.fileSystem.empty());
    EXPECT_EQ(answer.flags & 0x0008'0006, 6u);
    EXPECT_NE(answer.serial, 0u);

    // A drive that leads to another file system has that one's.
    fs::create_directory_symlink("/proc", MachineFolder() / "drives/p");
    EXPECT_NE(Ask(u"P:\\").fileSystem, answer.fileSystem);
    fs::create_directory_symlink(MachineFolder() / "drives/c", MachineFolder() / "drives/r");
    EXPECT_EQ(Ask(u"R:\\").serial, answer.serial);
}

TEST_F(Volumes, AreWhatTheRegistrySays) {
    const std::pair<const char*, UINT> kinds[] = {{"fixed", 3},  {"Removable", 2}, {"CDROM", 5},
                                                  {"remote", 4}, {"floppy", 3},    {"", 3}};
    for (const auto& [name, kind] : kinds) {
        Tell("m", std::string("\"Kind\"=\"") + name + "\"");
        EXPECT_EQ(GetDriveTypeW(u"M:\\"), kind) << name;
    }
    Tell("M", "\"Kind\"=dword:00000005");
    EXPECT_EQ(GetDriveTypeW(u"M:\\"), 3u);
    Tell("C", "\"Label\"=\"" + std::string(300, 'l') + "\"");
    EXPECT_EQ(Ask(u"C:\\").label, std::string(255, 'l'));
}

TEST_F(Volumes, HaveTheRoomOfTheHost) {
    struct statvfs host;
    ASSERT_EQ(statvfs(MachineFolder().c_str(), &host), 0);
    ULARGE_INTEGER caller = {};
    ULARGE_INTEGER total = {};
    ASSERT_TRUE(GetDiskFreeSpaceExW(u"C:\\", &caller, &total, nullptr));
    EXPECT_EQ(total.QuadPart, host.f_blocks * host.f_frsize);
    EXPECT_LE(caller.QuadPart, total.QuadPart);
    EXPECT_GT(caller.QuadPart, 0u);
}

TEST_F(Volumes, FollowTheRegistryWhileTheProcessRuns) {
    const DWORD hostSerial = Ask(u"M:\\").serial;
    Tell("M", "\"Label\"=\"First \xC3\xA9\"\n\"Serial\"=dword:12345678");
    EXPECT_EQ(Ask(u"m:\\").label, "First \xC3\xA9");
    EXPECT_EQ(Ask(u"M:\\").serial, 0x12345678u);
    EXPECT_EQ(Ask(u"C:\\").label, "");
    Tell("m", "\"label\"=\"Second\"\n\"kind\"=\"removable\"");
    EXPECT_EQ(Ask(u"M:\\").label, "Second");
    EXPECT_EQ(Ask(u"M:\\").serial, hostSerial);

    // A drive without its medium is still a drive.
    Tell("M", "\"Kind\"=\"cdrom\"\n\"Empty\"=dword:00000001");
    EXPECT_EQ(Ask(u"M:\\").error, 21u);
    EXPECT_EQ(GetDriveTypeW(u"M:\\"), 5u);
    EXPECT_FALSE(GetDiskFreeSpaceExW(u"M:\\", nullptr, nullptr, nullptr));
    EXPECT_EQ(GetLastError(), 21u);
    Tell("M", "\"Kind\"=\"cdrom\"\n\"Empty\"=dword:00000000");
    EXPECT_EQ(Ask(u"M:\\").error, 0u);

    Tell("SRV\\MUSIC", "\"Label\"=\"Music\"");
    EXPECT_EQ(Ask(u"\\\\srv\\music\\").label, "Music");
    fs::remove(MachineFolder() / "registry.reg");
    EXPECT_EQ(Ask(u"\\\\srv\\music\\").label, "");
}

TEST_F(Volumes, FollowTheFolderOfADriveThatTakesMedia) {
    const fs::path link = MachineFolder() / "drives/k";
    const auto leadTo = [&](const fs::path& folder) {
        fs::remove(link);
        fs::create_directory_symlink(folder, link);
    };
    leadTo(MachineFolder() / "unmounted");
    EXPECT_EQ(Ask(u"K:\\").error, 3u);
    EXPECT_EQ(GetDriveTypeW(u"K:\\"), 1u);
    // Such a drive is there while its mount point is not.
    Tell("K", "\"Kind\"=\"removable\"");
    EXPECT_EQ(Ask(u"K:\\").error, 21u);
    EXPECT_EQ(GetDriveTypeW(u"K:\\"), 2u);
    fs::create_directory(MachineFolder() / "unmounted");
    const std::string first = Ask(u"K:\\").fileSystem;
    EXPECT_EQ(Ask(u"k:\\").fileSystem, first);
    leadTo("/proc");
    EXPECT_NE(Ask(u"K:\\").fileSystem, first);
    leadTo(MachineFolder() / "gone");
    EXPECT_EQ(Ask(u"K:\\").error, 21u);
    EXPECT_EQ(Ask(u"K:\\").error, 21u);
    fs::remove(link);

    // The share that is spelled as asked for wins from the moment it is there.
    Tell("Srv\\Music", "\"Kind\"=\"removable\"");
    ASSERT_EQ(Ask(u"\\\\srv\\MUSIC\\").error, 0u);
    fs::create_directory(MachineFolder() / "shares/srv");
    EXPECT_EQ(Ask(u"\\\\srv\\MUSIC\\").error, 21u);
    fs::remove(MachineFolder() / "shares/srv");
    EXPECT_EQ(Ask(u"\\\\srv\\MUSIC\\").error, 0u);
}

// Without media to change it is looked at again after a moment.
TEST_F(Volumes, FollowTheFolderOfAFixedDrive) {
    const fs::path link = MachineFolder() / "drives/k";
    fs::create_directory_symlink(MachineFolder(), link);
    EXPECT_EQ(Ask(u"K:\\").error, 0u);
    fs::remove(link);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (Ask(u"K:\\").error == 0 && std::chrono::steady_clock::now() < deadline) {
    }
    EXPECT_EQ(Ask(u"K:\\").error, 3u);
}

std::string Kind(const std::string& kind) {
    return "\"Kind\"=\"" + kind + "\"";
}

DWORD Control(const OpenedFile& device, DWORD code) {
    DWORD returned = 77;
    const BOOL done =
        DeviceIoControl(device.Get(), code, nullptr, 0, nullptr, 0, &returned, nullptr);
    EXPECT_EQ(returned, 0u);
    return ErrorOf(done);
}

class DriveDevices : public testing::Test {
  protected:
    void SetUp() override {
        const fs::path drive = DriveC().parent_path() / "m";
        fs::create_directories(drive / "Folder");
        WriteHostFile(drive / "Folder/file");
        WriteHostFile(DriveC() / "elsewhere");
    }
};

TEST_F(DriveDevices, AreLockedAndDismountedWhenRemovable) {
    EXPECT_EQ(OpenedFile(u"\\\\.\\Q:", GENERIC_READ, 3).Error(), 2u);
    Tell("M", Kind("fixed"));
    {
        const OpenedFile fixed(u"\\\\.\\M:", GENERIC_READ, 3);
        ASSERT_TRUE(fixed.IsOpen());
        EXPECT_EQ(Control(fixed, FSCTL_LOCK_VOLUME), 5u);
        EXPECT_EQ(Control(fixed, FSCTL_DISMOUNT_VOLUME), 5u);
    }
    Tell("M", Kind("removable") + "\n\"Empty\"=dword:00000001");
    {
        const OpenedFile empty(u"\\\\.\\m:", GENERIC_READ, 3);
        ASSERT_TRUE(empty.IsOpen());
        EXPECT_EQ(Control(empty, FSCTL_LOCK_VOLUME), 21u);
    }
    for (const char* kind : {"removable", "cdrom"}) {
        Tell("M", Kind(kind));
        const OpenedFile device(u"\\\\.\\M:", GENERIC_READ, 3);
        EXPECT_EQ(Control(device, FSCTL_LOCK_VOLUME), 0u);
        EXPECT_EQ(Control(device, FSCTL_DISMOUNT_VOLUME), 0u);
        EXPECT_EQ(Control(device, 0x00090000), 50u);
    }
}

TEST_F(DriveDevices, AreNotLockedWhileInUse) {
    Tell("M", Kind("removable"));
    const OpenedFile device(u"\\\\.\\M:", GENERIC_READ | GENERIC_WRITE, 3);
    const OpenedFile elsewhere(u"C:\\elsewhere", GENERIC_READ);
    ASSERT_TRUE(device.IsOpen() && elsewhere.IsOpen());
    {
        const OpenedFile file(u"M:\\Folder\\file", GENERIC_READ, 7);
        EXPECT_EQ(Control(device, FSCTL_LOCK_VOLUME), 5u);
    }
    EXPECT_EQ(Control(device, FSCTL_LOCK_VOLUME), 0u);
    OpenedFile other(u"\\\\.\\M:", GENERIC_READ, 3);
    EXPECT_EQ(Control(other, FSCTL_LOCK_VOLUME), 5u);
    EXPECT_EQ(Control(elsewhere, FSCTL_LOCK_VOLUME), 6u);
}

TEST_F(DriveDevices, AreUnlockedByClosing) {
    Tell("M", Kind("removable"));
    OpenedFile first(u"\\\\.\\M:", GENERIC_READ, 3);
    EXPECT_EQ(Control(first, FSCTL_LOCK_VOLUME), 0u);
    first.Close();
    const OpenedFile second(u"\\\\.\\M:", GENERIC_READ, 3);
    EXPECT_EQ(Control(second, FSCTL_LOCK_VOLUME), 0u);
}

}  // namespace
