// Listings of folders.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "platform/files.h"
#include "platform/folders.h"
#include "platform/posix/text/host_text.h"
#include "support/drive_files.h"

namespace {

namespace fs = std::filesystem;

// The names in a folder, "." and ".." first as they come and the others in byte order, or the error
// of its listing.
std::string List(const std::u16string& folder) {
    WIN32_FIND_DATAW data;
    SetLastError(0);
    const HANDLE listing = FindFirstFileW((folder + u"\\*.*").c_str(), &data);
    if (listing == INVALID_HANDLE_VALUE) {
        return "error " + std::to_string(GetLastError());
    }
    std::vector<std::string> names;
    do {
        names.push_back(Utf8FromWide(data.cFileName));
    } while (FindNextFileW(listing, &data));
    EXPECT_EQ(GetLastError(), ERROR_NO_MORE_FILES);
    EXPECT_FALSE(FindNextFileW(listing, &data));
    EXPECT_TRUE(FindClose(listing));
    std::size_t dots = 0;
    while (dots < names.size() && names[dots].find_first_not_of('.') == std::string::npos) {
        ++dots;
    }
    std::sort(names.begin() + static_cast<std::ptrdiff_t>(dots), names.end());
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : " ") + name;
    }
    return text;
}

TEST(Listing, HoldsEveryNameOrSaysWhyThereIsNone) {
    const fs::path folder = NewFolder("List");
    for (const char* name : {".h", "A.txt", "a2", "b", "c.d.e", "noext", "_x"}) {
        std::ofstream(folder / name) << "text";
    }
    fs::create_directory(DriveC() / "List0");
    const fs::path shares = fs::path(Machine::Current().Folder()) / "shares/Srv";
    fs::create_directories(shares / "Music/Song");
    fs::create_directories(shares / "Empty");
    ASSERT_TRUE(SetCurrentDirectoryW(u"C:\\list"));
    const std::string all = ". .. .h A.txt _x a2 b c.d.e noext";
    const struct {
        const WCHAR* folder;
        std::string names;
    } cases[] = {
        {u"C:\\List0", ". .."},
        {u"C:\\list", all},
        {u"\\\\?\\C:\\List", all},
        {u".", all},
        {u"..\\list/", all},
        // A root has no "." and "..".
        {u"\\\\srv\\music", "Song"},
        {u"\\\\?\\UNC\\srv\\music", "Song"},
        {u"\\\\srv\\empty", "error 2"},
        {u"C:\\missing", "error 3"},
        {u"C:\\List\\b", "error 267"},
        {u"C:\\List\\b\\more", "error 3"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(List(row.folder), row.names) << Utf8FromWide(row.folder);
    }
    ASSERT_TRUE(SetCurrentDirectoryW(u"C:\\"));
}

TEST(Listing, TellsFoldersAndLinksFromFiles) {
    const fs::path folder = NewFolder("Kinds");
    fs::create_directory(folder / "folder");
    std::ofstream(folder / "file") << "text";
    fs::create_directory_symlink("folder", folder / "folder-link");
    fs::create_symlink("file", folder / "file-link");
    fs::create_symlink("nowhere", folder / "dangling");
    fs::create_symlink("circle", folder / "circle");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    WIN32_FIND_DATAW data;
    const HANDLE listing = FindFirstFileW(u"C:\\kinds\\*.*", &data);
    ASSERT_NE(listing, INVALID_HANDLE_VALUE);
    std::set<std::pair<std::string, DWORD>> found;
    do {
        found.emplace(Utf8FromWide(data.cFileName), data.dwFileAttributes);
    } while (FindNextFileW(listing, &data));
    constexpr DWORD kFolder = FILE_ATTRIBUTE_DIRECTORY;
    constexpr DWORD kLink = FILE_ATTRIBUTE_REPARSE_POINT;
    const std::set<std::pair<std::string, DWORD>> expected = {
        {".", kFolder},   {"..", kFolder}, {"folder", kFolder}, {"folder-link", kFolder | kLink},
        {"file", 0},      {"pipe", 0},     {"file-link", 0},    {"dangling", kLink},
        {"circle", kLink}};
    EXPECT_EQ(found, expected);
    EXPECT_TRUE(FindClose(listing));
}

TEST(Listing, PassesOverNamesThatNoPathCanHold) {
    const fs::path folder = NewFolder("Names");
    const std::string longest(255, 'n');
    const char* const kept[] = {".d.o t", "\xC3\xA9", "\xF0\x9F\x98\x80", longest.c_str()};
    for (const char* name : kept) {
        std::ofstream(folder / name) << "text";
    }
    // The last five need the prefix \\?\.
    for (const char* name :
         {"back\\slash", "a*b", "a?b", "a\"b", "a<b", "a>b", "a|b", "C:", "tab\t", "\xFF", "\xC3",
          "\xED\xA0\x80", "a\x01", "dot.", "blank ", "both. ", "...", " "}) {
        std::ofstream(folder / name) << "text";
    }
    std::string expected = ". ..";
    for (const char* name : {".d.o t", longest.c_str(), "\xC3\xA9", "\xF0\x9F\x98\x80"}) {
        expected += std::string(" ") + name;
    }
    EXPECT_EQ(List(u"C:\\names"), expected);
    // What was listed can be opened.
    for (const char* name : kept) {
        const std::u16string path = u"\\\\?\\C:\\names\\" + WideFromUtf8(name);
        WIN32_FILE_ATTRIBUTE_DATA data;
        EXPECT_TRUE(GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) << name;
    }
}

TEST(Listing, EndsWithItsHandle) {
    WIN32_FIND_DATAW data;
    NewFolder("Handles");
    const auto descriptors = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    const auto before = descriptors();
    const HANDLE listing = FindFirstFileW(u"C:\\handles\\*.*", &data);
    EXPECT_EQ(descriptors(), before + 1);
    EXPECT_TRUE(FindClose(listing));
    EXPECT_EQ(descriptors(), before);
    const HANDLE file = CreateFileW(u"C:\\handles\\file", GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    for (const HANDLE wrong : {listing, file, INVALID_HANDLE_VALUE, HANDLE{}}) {
        SetLastError(0);
        EXPECT_FALSE(FindNextFileW(wrong, &data));
        EXPECT_EQ(GetLastError(), 6u);
    }
    EXPECT_TRUE(CloseHandle(file));

    if (geteuid() != 0) {
        fs::permissions(DriveC() / "Handles", fs::perms::none);
        EXPECT_EQ(List(u"C:\\handles"), "error 5");
        fs::permissions(DriveC() / "Handles", fs::perms::owner_all);
    }
}

}  // namespace
