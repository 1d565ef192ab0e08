#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "file_tree.h"
#include "rows.h"

namespace {

constexpr int kLargeTree = 200;  // folders
constexpr int kSmallTree = kLargeTree / 10;
constexpr double kFilesInLarge = kLargeTree * FileTree::kFilesPerFolder;
constexpr double kFilesInSmall = kSmallTree * FileTree::kFilesPerFolder;

void MakeBigFile() {
    constexpr int kBlocks = 1024;
    std::ofstream file(FileTree::HostPath("big"), std::ios::binary);
    std::string block(std::size_t{1} << 20, '\0');
    for (int i = 0; i < kBlocks; ++i) {
        block[static_cast<std::size_t>(i)] = static_cast<char>(i);
        file << block;
    }
    if (!file.flush()) {
        throw std::runtime_error("the file to be copied cannot be written");
    }
}

void MakeTrees() {
    FileTree::Make("large", kLargeTree);
    FileTree::Make("small", kSmallTree);
    FileTree::MakeFlat("flat 1000", 1000);
    FileTree::MakeFlat("flat 100000", 100'000);
    MakeBigFile();
}

void RemoveTrees() {
    for (const char* path : {"large", "small", "flat 1000", "flat 100000", "big", "copy"}) {
        std::filesystem::remove_all(FileTree::HostPath(path));
    }
}

// Scatter of a few repetitions counts as no growth.
Row GrowthRow() {
    constexpr double kScatter = 1.1;
    const Figures figures = MeasureSubject("find-growth");
    const Nanoseconds large = figures.ours / kFilesInLarge;
    const Nanoseconds small = figures.peer / kFilesInSmall;
    return {
        "FindFiles for each of 100,000 files", "<= 1.1 x peer", Text(large),
        "the same for each of 10,000 files",   Text(small),     Verdict(large <= kScatter * small)};
}

std::string Rate(Nanoseconds time) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f GiB/s", 1e9 / time.count());
    return text;
}

Row CopyRow(const std::string& what, const std::string& subject, double share) {
    const Figures figures = MeasureSubject(subject);
    char target[24];
    std::snprintf(target, sizeof target, ">= %.1f x peer", share);
    return {what,
            target,
            Rate(figures.ours),
            "cp",
            Rate(figures.peer),
            Verdict(figures.ours * share <= figures.peer)};
}

Row ListingMemoryRow() {
    constexpr double kSlack = 256;  // KiB; the allocator takes memory in steps
    const double large = MeasureListing("flat 100000");
    const double small = MeasureListing("flat 1000");
    const auto text = [](double figure) { return std::to_string(std::lround(figure)) + " KiB"; };
    return {"memory taken while 100,000 files are listed",
            "no growth",
            text(large),
            "the same with 1,000 files",
            text(small),
            Verdict(large <= small + kSlack)};
}

}  // namespace

std::vector<Row> FileRows() {
    MakeTrees();
    std::vector<Row> rows;
    rows.push_back(SubjectRow("FindFiles with a pattern, 100,000 files in 200 folders",
                              "find-files", "recursive_directory_iterator, fnmatch",
                              "<= 2.5 x peer", AtMost(2.5)));
    rows.push_back(GrowthRow());
    rows.push_back(SubjectRow("FileSpec made from a path that exists", "file-spec",
                              "std::filesystem::canonical", "< 6 us", Under(6 * kMicrosecond)));
    rows.push_back(SubjectRow("FileSpec made and found, other case, 1,000 entries", "other-case",
                              "directory_iterator, strcasecmp", "< 400 us",
                              Under(400 * kMicrosecond)));
    rows.push_back(CopyRow("CopyFile of 1 GiB in the cache", "copy-file", 0.9));
    rows.push_back(CopyRow("the same, block by block", "copy-by-blocks", 0.6));
    rows.push_back(SubjectRow("DeleteTree of 10,000 files in 20 folders", "delete-tree",
                              "std::filesystem::remove_all", "<= 2 x peer", AtMost(2)));
    rows.push_back(ListingMemoryRow());
    RemoveTrees();
    return rows;
}
