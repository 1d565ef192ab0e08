// Start and stop of the library, its factory and its table, and threads in their first calls.

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include "filesystem/ClassFactory_IF.h"
#include "filesystem/Volume_IF.h"
#include "filesystem/utilities/FileUtilities.h"
#include "support/faulty_api.h"
#include "support/file_library.h"

namespace {

const std::string kNoFactory = InternalError(".\\Private\\FileSystem_ClassFactory_IF", 35);

TEST(FileSystemStart, ComesBeforeAnyFileObject) {
    EXPECT_FALSE(FileSystem::IsStarted());
    for (const char* path : {"", "C:\\a"}) {
        const Failure failure = FailureOf([&] { File(path); });
        EXPECT_EQ(failure.message, kNoFactory);
        EXPECT_FALSE(failure.isFile);
    }
    FileSystem_Start(nullptr);
    EXPECT_TRUE(FileSystem::IsStarted());
    EXPECT_TRUE(File("").IsNull());
}

TEST(FileSystemStart, ThatFailsIsStartedAgainByTheNext) {
    FaultyApi api;
    api.Break("GetVolumeInformationW", 21);
    EXPECT_EQ(MessageOf([] { std::rethrow_exception(FileSystem::EnsureStarted()); }),
              "media not found");
    EXPECT_FALSE(FileSystem::IsStarted());
    api.Break("GetVolumeInformationW", 0);
    FileSystem::EnsureStarted();
    EXPECT_TRUE(FileSystem::IsStarted());
}

// Makes the same object for every path.
class OtherFactory : public ClassFactory_IF {
  public:
    void MakeFileSpec(const FilePath&, const SharedHandle<Volume_IF>&,
                      SharedHandle<FileSpec_IF>&) override {
        ++asked;
    }

    int asked = 0;
};

TEST(FileSystemStart, FirstFactoryAndTableStay) {
    const auto factory = std::make_shared<OtherFactory>();
    ClassFactory_IF::SetFactory(factory);
    FaultyApi api;
    FileSystem_Start(nullptr);
    EXPECT_EQ(factory->asked, 1) << "the start visits the program's file";
    FileSystem_Start(nullptr);
    ClassFactory_IF::SetFactory(std::make_shared<OtherFactory>());
    File("C:\\a");
    EXPECT_EQ(factory->asked, 3);
    File("");
    EXPECT_EQ(factory->asked, 3);
    EXPECT_EQ(FileSystem_Win32::GetApi(), &api);
}

TEST(FileSystemStop, ForgetsWhatTheStartMade) {
    FileSystem_Start(nullptr);
    const FileSpec before = File("C:\\a");
    const FileSpec temp = FileSystem::GetTempFolder();
    const std::string name = PathOf(temp);
    WriteHostFile(DriveC() / "Windows/Temp/Velmar.tmp/file");
    EXPECT_TRUE(temp.IsFolder());
    FileSystem_Stop();
    EXPECT_FALSE(FileSystem::IsStarted());
    EXPECT_EQ(FileSystem_Win32::GetApi(), nullptr);

    FileSystem_Start(nullptr);
    EXPECT_FALSE(File(name.c_str()).IsPresent());
    EXPECT_NE(File("C:\\a").GetVolume(), before.GetVolume());
    EXPECT_EQ(Text(before.GetVolume()->GetRootFolder(File("C:\\").GetVolume())->GetPath()), "c:\\");
}

TEST(FileSystemThreads, FirstCallsAtOnce) {
    constexpr int kThreads = 20;
    std::atomic<int> waiting = kThreads;
    std::vector<FileSpec> files(kThreads);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            for (--waiting; waiting > 0;) {
                std::this_thread::yield();
            }
            FileSystem::EnsureStarted();
            files[static_cast<std::size_t>(i)] = File("C:\\ProgramData\\a");
            files[static_cast<std::size_t>(i)].MakeParent().MakeChild("b");
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const FileSpec& file : files) {
        EXPECT_TRUE(file.IsEqual(files[0]));
        EXPECT_EQ(file.GetVolume(), files[0].GetVolume());
    }
}

TEST(FileSystemThreads, ListAndDeleteBesideEachOther) {
    FileSystem_Start(nullptr);
    const auto folder = NewFolder("work");
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([i] {
            const FolderSpec own{FilePath("C:\\work\\" + std::to_string(i))};
            for (int round = 0; round < 5; ++round) {
                own.CreateFolder();
                for (int k = 0; k < 20; ++k) {
                    own.MakeChild(std::to_string(k)).MakeFileChannel(0x12).Write("text", 4);
                }
                int count = 0;
                for (FolderIterator at = own.MakeIterator(); !at.GetCurrent().IsNull();
                     at.Advance()) {
                    ++count;
                }
                EXPECT_EQ(count, 20);
                own.DeleteTree();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder));
}

}  // namespace
