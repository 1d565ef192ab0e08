// Locking and dismounting a drive through its device.

#include <gtest/gtest.h>

#include <string>

#include "support/drive_files.h"

namespace {

namespace fs = std::filesystem;

// Makes drive M: one of this kind, with a medium in it or without.
void TellKind(const std::string& kind, bool empty = false) {
    const fs::path file = fs::path(Machine::Current().Folder()) / "registry.reg";
    WriteHostFile(file.string() + ".new",
                  "Windows Registry Editor Version 5.00\n\n"
                  "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Brevik\\Volumes\\M]\n"
                  "\"Kind\"=\"" +
                      kind + "\"\n\"Empty\"=dword:0000000" + (empty ? "1" : "0") + "\n\n");
    fs::rename(file.string() + ".new", file);
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
    TellKind("fixed");
    {
        const OpenedFile fixed(u"\\\\.\\M:", GENERIC_READ, 3);
        ASSERT_TRUE(fixed.IsOpen());
        EXPECT_EQ(Control(fixed, FSCTL_LOCK_VOLUME), 5u);
        EXPECT_EQ(Control(fixed, FSCTL_DISMOUNT_VOLUME), 5u);
    }
    TellKind("removable", true);
    {
        const OpenedFile empty(u"\\\\.\\m:", GENERIC_READ, 3);
        ASSERT_TRUE(empty.IsOpen());
        EXPECT_EQ(Control(empty, FSCTL_LOCK_VOLUME), 21u);
    }
    for (const char* kind : {"removable", "cdrom"}) {
        TellKind(kind);
        const OpenedFile device(u"\\\\.\\M:", GENERIC_READ, 3);
        EXPECT_EQ(Control(device, FSCTL_LOCK_VOLUME), 0u);
        EXPECT_EQ(Control(device, FSCTL_DISMOUNT_VOLUME), 0u);
        EXPECT_EQ(Control(device, 0x00090000), 50u);
    }
}

TEST_F(DriveDevices, AreNotLockedWhileInUse) {
    TellKind("removable");
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
    TellKind("removable");
    OpenedFile first(u"\\\\.\\M:", GENERIC_READ, 3);
    EXPECT_EQ(Control(first, FSCTL_LOCK_VOLUME), 0u);
    first.Close();
    const OpenedFile second(u"\\\\.\\M:", GENERIC_READ, 3);
    EXPECT_EQ(Control(second, FSCTL_LOCK_VOLUME), 0u);
}

}  // namespace
