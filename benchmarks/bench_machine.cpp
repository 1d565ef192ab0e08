#include "bench_machine.h"

#include <stdlib.h>

#include <stdexcept>
#include <string>

namespace {

constexpr const char* kSiblingFolder =
    "drives/c/Program Files/Common Files/Ondrel Shared/DllShared";

}  // namespace

std::filesystem::path SiblingFolder(const std::filesystem::path& machine) {
    return machine / kSiblingFolder;
}

void PutSibling(const std::filesystem::path& machine) {
    const std::filesystem::path folder = SiblingFolder(machine);
    std::filesystem::create_directories(folder);
    std::filesystem::copy_file(BENCH_SIBLING, folder / "VelmarHTTPClient13.dll");
}

BenchMachine::BenchMachine() {
    std::string pattern = (std::filesystem::temp_directory_path() / "brevik-bench-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no temporary folder: " + pattern);
    }
    root_ = pattern;
    PutSibling(root_ / "with-sibling");
    std::filesystem::create_directory(root_ / "without-sibling");
    std::filesystem::create_directory(root_ / "run");
    setenv("XDG_RUNTIME_DIR", (root_ / "run").c_str(), 1);
    unsetenv("BREVIK_DEBUG_OUTPUT");
    UseSibling(true);
}

BenchMachine::~BenchMachine() {
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
}

void BenchMachine::UseSibling(bool present) const {
    const char* machine = present ? "with-sibling" : "without-sibling";
    setenv("BREVIK_MACHINE", (root_ / machine).c_str(), 1);
}
