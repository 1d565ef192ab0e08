#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <set>

#include "filesystem/ClassFactory_IF.h"
#include "filesystem/FolderSpec.h"
#include "support/faulty_api.h"
#include "support/file_library.h"

namespace {

namespace fs = std::filesystem;

using FolderTest = FileLibrary;

std::set<std::string> Entries(const FolderSpec& folder) {
    std::set<std::string> names;
    for (FolderIterator at = folder.MakeIterator(); !at.GetCurrent().IsNull(); at.Advance()) {
        names.insert(Text(at.GetCurrent().GetName()));
    }
    return names;
}

// A table whose listings hold just these names.
class ListingApi : public FaultyApi {
  public:
    HANDLE FindFirstFileW(const WCHAR* pattern, WIN32_FIND_DATAW* data) override {
        lastPattern = pattern;
        const HANDLE listing = API::FindFirstFileW(pattern, data);
        Take(data);
        return listing;
    }
    BOOL FindNextFileW(HANDLE, WIN32_FIND_DATAW* data) override {
        if (names.empty()) {
            SetLastError(5);
            return FALSE;
        }
        Take(data);
        return TRUE;
    }

    std::deque<WideString> names;
    WideString lastPattern;

  private:
    void Take(WIN32_FIND_DATAW* data) {
        data->dwFileAttributes = FILE_ATTRIBUTE_ARCHIVE;
        *std::copy(names.front().begin(), names.front().end(), data->cFileName) = 0;
        names.pop_front();
    }
};

TEST_F(FolderTest, ListsAllKindsOfEntries) {
    EXPECT_TRUE(Entries(work).empty());
    WriteHostFile(folder / "one");
    const std::set<std::string> one = {"one"};
    EXPECT_EQ(Entries(work), one);
    WriteHostFile(folder / ".hidden");
    fs::create_directory(folder / "\xC3\xA4");
    const std::set<std::string> all = {"one", ".hidden", "\xC3\xA4"};
    EXPECT_EQ(Entries(work), all);
    EXPECT_TRUE(Entries(FolderSpec(FilePath("C:\\"))).count("work"));
}

TEST_F(FolderTest, WhatIsNoFolder) {
    const std::ptrdiff_t open = OpenFileCount();
    EXPECT_EQ(MessageOf([&] { FolderSpec(Child("missing")).MakeIterator(); }),
              "file path not found");
    EXPECT_NE(MessageOf([&] {
                  WriteHostFile(folder / "file");
                  FolderSpec(Child("file")).MakeIterator();
              }),
              "");
    EXPECT_EQ(OpenFileCount(), open);
    const FolderSpec null{FileSpec()};
    EXPECT_TRUE(null.IsNull());
    const Failure failure = FailureOf([&] { null.MakeIterator(); });
    EXPECT_EQ(failure.message, InternalError(".\\Private\\FolderSpec", 64));
    EXPECT_TRUE(failure.isFile && failure.path.empty());
    EXPECT_EQ(MessageOf([&] { null.DeleteTree(); }), InternalError(".\\Private\\FolderSpec", 70));
}

TEST_F(FolderTest, DotsAreNoEntriesWhereverTheyAreListed) {
    ListingApi api;
    const std::set<std::string> two = {"a", "b"};
    for (const std::deque<WideString>& names : {std::deque<WideString>{u".", u"..", u"a", u"b"},
                                                {u"a", u".", u"..", u"b"},
                                                {u"a", u"b", u"..", u"."},
                                                {u"..", u"b", u"a", u"."}}) {
        api.names = names;
        EXPECT_EQ(Entries(work), two);
    }
    EXPECT_EQ(api.lastPattern, u"\\\\?\\C:\\work\\*.*");
    api.names = {u".", u"..", u"."};
    EXPECT_TRUE(Entries(work).empty());
    api.names = {u"a"};
    Entries(FolderSpec(FilePath("C:\\")));
    EXPECT_EQ(api.lastPattern, u"\\\\?\\C:\\*.*");
}

TEST_F(FolderTest, ListingEndsOnceAndIsClosedEarlyOrLate) {
    const std::ptrdiff_t open = OpenFileCount();
    ListingApi api;
    api.names = {u"a", u"b"};
    {
        FolderIterator at = work.MakeIterator();
        FolderIterator copy = at;
        EXPECT_EQ(PathOf(at.GetCurrent()), "C:\\work\\a");
        copy.Advance();
        EXPECT_EQ(PathOf(copy.GetCurrent()), "C:\\work\\b");
        EXPECT_EQ(OpenFileCount(), open) << "the last entry is handed out with the listing closed";
        at.Advance();
        EXPECT_TRUE(at.GetCurrent().IsNull());
        at.Advance();
        EXPECT_TRUE(at.GetCurrent().IsNull());
    }
    api.names = {u"a", u"b", u"c"};
    {
        const FolderIterator left = work.MakeIterator();
        EXPECT_GT(OpenFileCount(), open);
    }
    EXPECT_EQ(OpenFileCount(), open);
}

TEST_F(FolderTest, NamesThatNoPathMayHoldRaise) {
    ListingApi api;
    api.names = {u"a", u"b ", u"c"};
    const std::ptrdiff_t open = OpenFileCount();
    {
        FolderIterator at = work.MakeIterator();
        const Failure failure = FailureOf([&] { at.Advance(); });
        EXPECT_EQ(failure.message, "invalid file path");
        EXPECT_EQ(failure.path, "C:\\work\\b ");
    }
    EXPECT_EQ(OpenFileCount(), open);
}

// Of dots alone, it would be the folder itself.
TEST_F(FolderTest, NamesThatEndInDotsAreNotOneOfTheOthers) {
    ListingApi api;
    api.names = {u"...", u"a", u"b.", u"..."};
    const std::set<std::string> one = {"a"};
    EXPECT_EQ(Entries(work), one);
}

TEST_F(FolderTest, NamesOfTheHostThatNoPathCanSpellStay) {
    fs::create_directories(folder / "tree/...");
    fs::create_directories(folder / "tree/a ");
    WriteHostFile(folder / "tree/a");
    WriteHostFile(folder / "tree/a.");
    EXPECT_EQ(Entries(FolderSpec(Child("tree"))).size(), 1u);
    EXPECT_EQ(MessageOf([&] { FolderSpec(Child("tree")).DeleteTree(); }), "folder not empty");
    EXPECT_FALSE(fs::exists(folder / "tree/a"));
    EXPECT_TRUE(fs::exists(folder / "tree/a."));
}

// Folders and a file, told apart by each of two copies of one iterator.
TEST_F(FolderTest, ACopyLeftBehindTellsOfItsOwnEntry) {
    fs::create_directory(folder / "folder");
    WriteHostFile(folder / "file");
    const FolderIterator first = work.MakeIterator();
    FolderIterator second = first;
    second.Advance();
    EXPECT_EQ(first.IsFolder(), first.GetCurrent().IsFolder());
    EXPECT_EQ(second.IsFolder(), second.GetCurrent().IsFolder());
    second.Advance();
    EXPECT_EQ(first.IsFolder(), first.GetCurrent().IsFolder());
}

TEST_F(FolderTest, DeletesReadOnlyTrees) {
    fs::create_directories(folder / "tree/a/b");
    WriteHostFile(folder / "tree/a/b/file");
    WriteHostFile(folder / "tree/file");
    for (const char* name : {"tree\\a\\b\\file", "tree\\a\\b", "tree\\file", "tree"}) {
        Child(name).SetAttributes(FileAttributes::kReadOnly);
    }
    const FolderSpec tree{Child("tree")};
    tree.DeleteTree();
    EXPECT_FALSE(fs::exists(folder / "tree"));
    EXPECT_EQ(MessageOf([&] { tree.DeleteTree(); }), "");
}

TEST_F(FolderTest, DeletionLeavesWhatLinksLeadTo) {
    fs::create_directories(folder / "tree");
    fs::create_directories(folder / "elsewhere");
    WriteHostFile(folder / "elsewhere/file");
    fs::create_directory_symlink("../elsewhere", folder / "tree/folder");
    fs::create_symlink("../elsewhere/file", folder / "tree/file");
    fs::create_symlink("nowhere", folder / "tree/nowhere");
    fs::create_symlink("circle", folder / "tree/circle");
    fs::create_directory_symlink(".", folder / "tree/self");
    fs::permissions(folder / "elsewhere/file", fs::perms::owner_read);
    FolderSpec(Child("tree")).DeleteTree();
    EXPECT_FALSE(fs::exists(folder / "tree"));
    EXPECT_EQ(fs::status(folder / "elsewhere/file").permissions(), fs::perms::owner_read);

    fs::create_directory_symlink("elsewhere", folder / "tree");
    FolderSpec(Child("tree")).DeleteTree();
    EXPECT_FALSE(fs::exists(fs::symlink_status(folder / "tree")));
    EXPECT_TRUE(fs::exists(folder / "elsewhere/file"));
}

TEST_F(FolderTest, DeletionStopsAtAFileInUse) {
    fs::create_directories(folder / "tree/sub");
    WriteHostFile(folder / "tree/sub/used");
    const FileChannel channel = Child("tree\\sub\\used").MakeFileChannel(FileChannelMode::kRead);
    const Failure failure = FailureOf([&] { FolderSpec(Child("tree")).DeleteTree(); });
    EXPECT_EQ(failure.message, "access denied");
    EXPECT_EQ(failure.path, "C:\\work\\tree\\sub\\used");
    EXPECT_TRUE(fs::exists(folder / "tree/sub/used"));
}

TEST_F(FolderTest, ContentsWithoutTheFoldersAmongThem) {
    fs::create_directories(folder / "tree/sub");
    WriteHostFile(folder / "tree/file");
    const auto tree = std::dynamic_pointer_cast<FolderSpec_IF>(
        ClassFactory_IF::MakeFileSpec("C:\\work\\tree", nullptr));
    tree->DeleteContents(false, tree);
    EXPECT_TRUE(fs::exists(folder / "tree/sub"));
    EXPECT_FALSE(fs::exists(folder / "tree/file"));
    tree->DeleteContents(true, tree);
    EXPECT_TRUE(fs::is_empty(folder / "tree"));
}

}  // namespace
