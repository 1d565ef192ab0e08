// Operations on whole trees, over random ones, beside an independent computation on the host.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <regex>

#include "support/file_library.h"
#include "text/Texts.h"

namespace {

namespace fs = std::filesystem;
using namespace FileSystem;

// A tree of random folders and files below a host folder. Names differ by more than their case.
class RandomTree {
  public:
    RandomTree(unsigned seed, const fs::path& root) : random_(seed) {
        fs::create_directories(root);
        Fill(root, 3);
    }

    unsigned Below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }

    // A pattern of letters that occur in names, and of wildcards.
    std::string Pattern() {
        std::string pattern;
        for (unsigned length = 1 + Below(5); pattern.size() < length;) {
            pattern += "abT.?**"[Below(7)];
        }
        return pattern;
    }

  private:
    std::string Name(std::size_t number) {
        static const char* const kParts[] = {"a",        "B", "at", "T",   "b a",
                                             "\xC3\xA9", ".", "-",  ".txt"};
        std::string name = Below(6) == 0 ? "." : "";
        for (unsigned parts = Below(4); parts > 0; --parts) {
            name += kParts[Below(std::size(kParts))];
        }
        return name + std::to_string(number) + (Below(3) == 0 ? ".tXt" : "");
    }

    void Fill(const fs::path& folder, int depth) {
        const std::size_t count = Below(8);
        for (std::size_t number = 0; number < count; ++number) {
            const fs::path entry = folder / Name(number);
            if (depth > 0 && Below(3) == 0) {
                fs::create_directory(entry);
                Fill(entry, depth - 1);
                continue;
            }
            std::ofstream(entry, std::ios::binary)
                << std::string(Below(10) == 0 ? Below(300'000) : Below(50), 'x');
            fs::last_write_time(
                entry, fs::file_time_type::clock::now() - std::chrono::seconds(Below(100'000'000)));
        }
    }

    std::mt19937 random_;
};

// By a regular expression of its own: a "*" at the end takes at least one byte.
bool Matches(std::string name, const std::string& pattern) {
    std::string expression;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const bool isLast = i + 1 == pattern.size();
        expression += pattern[i] == '*'   ? (isLast ? ".+" : ".*")
                      : pattern[i] == '?' ? std::string("[^.]")
                      : pattern[i] == '.' ? std::string("\\.")
                                          : std::string(1, pattern[i]);
    }
    return std::regex_match(name, std::regex(expression, std::regex::icase));
}

class Trees : public FileUtilities, public testing::WithParamInterface<unsigned> {};

TEST_P(Trees, CopiesAndMovesKeepEveryEntry) {
    RandomTree tree(GetParam(), Host("C:\\source"));
    const std::vector<std::string> listing = Listing(Host("C:\\source"));
    CopyFolder(File("C:\\copy"), File("C:\\source"), true, tickler);
    EXPECT_EQ(Listing(Host("C:\\copy")), listing);
    EXPECT_EQ(Listing(Host("C:\\source")), listing);

    Move(File("C:\\moved"), File("C:\\copy"), tickler);
    EXPECT_EQ(Listing(Host("C:\\moved")), listing);
    EXPECT_FALSE(fs::exists(Host("C:\\copy")));
    // To another volume a folder cannot be renamed.
    Move(File("D:\\moved"), File("C:\\moved"), tickler);
    EXPECT_EQ(Listing(Host("D:\\moved")), listing);
    EXPECT_FALSE(fs::exists(Host("C:\\moved")));
}

TEST_P(Trees, SizesAndFindsAgreeWithTheHost) {
    const fs::path root = Host("C:\\source");
    RandomTree tree(GetParam(), root);
    std::uint64_t size = 0;
    std::uint64_t ownSize = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
        if (entry.is_regular_file()) {
            size += entry.file_size();
            ownSize += entry.path().parent_path() == root ? entry.file_size() : 0;
        }
    }
    EXPECT_EQ(GetFolderSize(Folder("C:\\source"), true), size);
    EXPECT_EQ(GetFolderSize(Folder("C:\\source"), false), ownSize);

    for (int round = 0; round < 20; ++round) {
        const std::string pattern = tree.Pattern();
        std::vector<std::string> deep;
        std::vector<std::string> flat;
        std::vector<std::string> folders;
        for (fs::recursive_directory_iterator entry(root), end; entry != end; ++entry) {
            const std::string name = entry->path().filename().string();
            if (!Matches(name, pattern)) {
                continue;
            }
            if (entry->is_regular_file()) {
                deep.push_back(name);
            }
            if (entry->path().parent_path() == root) {
                flat.push_back(name);
            }
            // A folder in one that matches is none of the finds.
            const bool isBelowMatch = std::ranges::any_of(
                entry->path().parent_path().lexically_relative(root), [&](const fs::path& part) {
                    return part != "." && Matches(part.string(), pattern);
                });
            if (entry->is_directory() && !isBelowMatch) {
                folders.push_back(name);
            }
        }
        SCOPED_TRACE(pattern);
        const FolderSpec folder = Folder("C:\\source");
        EXPECT_THAT(Names(FindFiles(folder, pattern, true)),
                    testing::UnorderedElementsAreArray(deep));
        EXPECT_THAT(Names(FindFiles(folder, pattern, false)),
                    testing::UnorderedElementsAreArray(flat));
        EXPECT_THAT(Names(FindFolders(folder, pattern, true)),
                    testing::UnorderedElementsAreArray(folders));
    }
}

TEST_P(Trees, RelativePathsAgreeWithTheHost) {
    const fs::path root = Host("C:\\source");
    RandomTree tree(GetParam(), root);
    std::vector<fs::path> paths = {root};
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
        paths.push_back(entry.path());
    }
    const auto file = [&root](const fs::path& path) {
        return File("C:\\source").MakeChild(path.lexically_relative(root).string());
    };
    for (int round = 0; round < 50; ++round) {
        const fs::path& target = paths[tree.Below(static_cast<unsigned>(paths.size()))];
        const fs::path& base = paths[tree.Below(static_cast<unsigned>(paths.size()))];
        const std::string way = target.lexically_relative(base).string();
        EXPECT_EQ(Text(MakeRelativePath(file(target), file(base))), way == "." ? way : "./" + way);
    }
}

INSTANTIATE_TEST_SUITE_P(Seed, Trees, testing::Range(1u, 21u));

// ---- Links ----

class Links : public FileUtilities {
  protected:
    // One leads up, one to a folder beside the tree, and two nowhere.
    void SetUp() override {
        FileUtilities::SetUp();
        Write("C:\\tree\\sub\\file", "12");
        Write("C:\\beside\\file", "345");
        fs::create_directory_symlink("..", Host("C:\\tree\\sub\\up"));
        fs::create_directory_symlink("../beside", Host("C:\\tree\\beside"));
        fs::create_symlink("sub/file", Host("C:\\tree\\link"));
        fs::create_symlink("nowhere", Host("C:\\tree\\nowhere"));
        fs::create_symlink("circle", Host("C:\\tree\\circle"));
    }
};

TEST_F(Links, ScansDoNotGoThroughThem) {
    using testing::UnorderedElementsAre;
    const FolderSpec tree = Folder("C:\\tree");
    EXPECT_EQ(GetFolderSize(tree, true), 4u);
    EXPECT_THAT(Names(FindFiles(tree, "*", true)),
                UnorderedElementsAre("file", "link", "nowhere", "circle"));
    EXPECT_THAT(Names(FindFolders(tree, "up", true)), UnorderedElementsAre("up"));
    EXPECT_THAT(Names(FindFolders(tree, "x", true)), testing::IsEmpty());
    // The folder itself may be one.
    EXPECT_EQ(GetFolderSize(Folder("C:\\tree\\beside"), true), 3u);
}

TEST_F(Links, CopiesLeaveThemOutAndMovesRefuse) {
    CopyFolder(File("C:\\copy"), File("C:\\tree"), true, tickler);
    EXPECT_THAT(Listing(Host("C:\\copy")).size(), 3u);
    EXPECT_EQ(ReadHostFile(Host("C:\\copy\\link")), "12");

    const Failure failure =
        FailureOf([this] { Move(File("D:\\tree"), File("C:\\tree"), tickler); });
    EXPECT_EQ(failure.number, Texts::accessDenied.GetId());
    EXPECT_TRUE(fs::is_symlink(Host(failure.path))) << failure.path;
    EXPECT_FALSE(fs::exists(Host("D:\\tree")));
    Move(File("C:\\moved"), File("C:\\tree"), tickler);
    EXPECT_TRUE(fs::is_symlink(Host("C:\\moved\\sub\\up")));
    Move(File("D:\\copy"), File("C:\\copy"), tickler);
    EXPECT_FALSE(fs::exists(Host("C:\\copy")));
}

}  // namespace
