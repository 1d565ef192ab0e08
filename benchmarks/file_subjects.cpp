#include "file_subjects.h"

#include <benchmark/benchmark.h>
#include <fnmatch.h>
#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "file_tree.h"
#include "filesystem/FileSystem.h"
#include "filesystem/utilities/FileUtilities.h"
#include "processes.h"
#include "support/forwarding_file.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kPattern = "*7.TXT";
constexpr std::size_t kFoundPerFolder = FileTree::kFilesPerFolder / 10;

FileSpec File(const std::string& path) {
    return FileSpec(FilePath("C:\\" + path));
}

void Register(void (*ours)(benchmark::State&), void (*peer)(benchmark::State&)) {
    FileSystem::EnsureStarted();
    benchmark::RegisterBenchmark("ours", ours)->UseRealTime();
    benchmark::RegisterBenchmark("peer", peer)->UseRealTime();
}

// ---- Finding ----

void FindIn(benchmark::State& state, const char* tree, std::size_t folders) {
    const FolderSpec folder(File(tree));
    for (auto _ : state) {
        if (FileSystem::FindFiles(folder, kPattern, true).size() != folders * kFoundPerFolder) {
            state.SkipWithError("not all found");
        }
    }
}

void FindInLarge(benchmark::State& state) {
    FindIn(state, "large", 200);
}
void FindInSmall(benchmark::State& state) {
    FindIn(state, "small", 20);
}

void FindPeer(benchmark::State& state) {
    for (auto _ : state) {
        std::vector<fs::path> found;
        for (const fs::directory_entry& entry :
             fs::recursive_directory_iterator(FileTree::HostPath("large"))) {
            if (!entry.is_directory() &&
                fnmatch(kPattern, entry.path().filename().c_str(), FNM_CASEFOLD) == 0) {
                found.push_back(entry.path());
            }
        }
        if (found.size() != 200 * kFoundPerFolder) {
            state.SkipWithError("not all found");
        }
    }
}

// ---- One file object ----

void FileSpecOurs(benchmark::State& state) {
    const FilePath path("C:\\large\\Folder 100\\File 250.txt");
    for (auto _ : state) {
        benchmark::DoNotOptimize(FileSpec(path));
    }
}

void FileSpecPeer(benchmark::State& state) {
    const fs::path path = FileTree::HostPath("large/Folder 100/File 250.txt");
    for (auto _ : state) {
        benchmark::DoNotOptimize(fs::canonical(path));
    }
}

void OtherCaseOurs(benchmark::State& state) {
    const FilePath path("C:\\FLAT 1000\\ENTRY 500.TXT");
    for (auto _ : state) {
        if (!FileSpec(path).IsPresent()) {
            state.SkipWithError("not there");
        }
    }
}

void OtherCasePeer(benchmark::State& state) {
    const fs::path folder = FileTree::HostPath("flat 1000");
    for (auto _ : state) {
        bool isThere = false;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
            if (strcasecmp(entry.path().filename().c_str(), "ENTRY 500.TXT") == 0) {
                isThere = true;
                break;
            }
        }
        if (!isThere) {
            state.SkipWithError("not there");
        }
    }
}

// ---- Copying ----

// Copies "big" to "copy" again and again. What an earlier copy left to be written is written out
// first, so that no run pays for another.
void RepeatCopy(benchmark::State& state, void (*copy)()) {
    for (auto _ : state) {
        state.PauseTiming();
        fs::remove(FileTree::HostPath("copy"));
        sync();
        state.ResumeTiming();
        copy();
    }
    if (fs::file_size(FileTree::HostPath("copy")) != fs::file_size(FileTree::HostPath("big"))) {
        state.SkipWithError("not copied");
    }
}

void CopyOurs(benchmark::State& state) {
    RepeatCopy(state, [] {
        Tickler tickler;
        FileSystem::CopyFile(File("copy"), File("big"), tickler);
    });
}

void CopyByBlocks(benchmark::State& state) {
    RepeatCopy(state, [] {
        Tickler tickler;
        FileSystem::CopyFile(File("copy"), ForwardingFile::Make(File("big")), tickler);
    });
}

void CopyPeer(benchmark::State& state) {
    RepeatCopy(state, [] {
        OutputOf(
            {"/bin/cp", FileTree::HostPath("big").string(), FileTree::HostPath("copy").string()});
    });
}

// ---- Deleting ----

constexpr int kDoomedTrees = 2 * kLengthyRepetitions;

std::string DoomedTree(int number) {
    return "doomed " + std::to_string(number);
}

// Each repetition of either side takes the next of the trees that were made ahead: to make one
// right after a deletion takes the host long.
void DeleteNext(benchmark::State& state, void (*deleteTree)(const std::string&)) {
    static int next = 0;
    const std::string tree = DoomedTree(next++);
    for (auto _ : state) {
        deleteTree(tree);
    }
    if (next > kDoomedTrees || fs::exists(FileTree::HostPath(tree))) {
        state.SkipWithError("not deleted");
    }
}

void DeleteOurs(benchmark::State& state) {
    DeleteNext(state, [](const std::string& tree) { FolderSpec(File(tree)).DeleteTree(); });
}

void DeletePeer(benchmark::State& state) {
    DeleteNext(state, [](const std::string& tree) { fs::remove_all(FileTree::HostPath(tree)); });
}

// ---- Memory ----

double ResidentKibibytes() {
    std::ifstream pages("/proc/self/statm");
    long total = 0;
    long resident = 0;
    pages >> total >> resident;
    return static_cast<double>(resident * sysconf(_SC_PAGESIZE)) / 1024;
}

}  // namespace

void RegisterFindFiles() {
    Register(FindInLarge, FindPeer);
}
void RegisterFindGrowth() {
    Register(FindInLarge, FindInSmall);
}
void RegisterFileSpec() {
    Register(FileSpecOurs, FileSpecPeer);
}
void RegisterOtherCase() {
    Register(OtherCaseOurs, OtherCasePeer);
}
void RegisterCopyFile() {
    Register(CopyOurs, CopyPeer);
}
void RegisterCopyByBlocks() {
    Register(CopyByBlocks, CopyPeer);
}
void RegisterDeleteTree() {
    for (int number = 0; number < kDoomedTrees; ++number) {
        FileTree::Make(DoomedTree(number), 20);
    }
    sync();
    FileSystem::EnsureStarted();
    benchmark::RegisterBenchmark("ours", DeleteOurs)->UseRealTime()->Iterations(1);
    benchmark::RegisterBenchmark("peer", DeletePeer)->UseRealTime()->Iterations(1);
}

double MeasureListingMemory(const char* path) {
    constexpr int kBetweenLooks = 500;
    FileSystem::EnsureStarted();
    FolderIterator entries = FolderSpec(File(path)).MakeIterator();
    const double before = ResidentKibibytes();
    double most = before;
    for (int count = 1; !entries.GetCurrent().IsNull(); entries.Advance(), ++count) {
        if (count % kBetweenLooks == 0) {
            most = std::max(most, ResidentKibibytes());
        }
    }
    return most - before;
}
