#include "support/test_machine.h"

#include <stdlib.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

namespace TestMachine {
namespace {

std::filesystem::path root;
pid_t owner = 0;

}  // namespace

void Create() {
    std::string pattern = (std::filesystem::temp_directory_path() / "brevik-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no temporary folder: " + pattern);
    }
    root = pattern;
    owner = getpid();
    std::filesystem::create_directory(Folder());
    std::filesystem::create_directory(RuntimeFolder());
    std::filesystem::create_directory(ScratchFolder());
    setenv("BREVIK_MACHINE", Folder().c_str(), 1);
    setenv("XDG_RUNTIME_DIR", RuntimeFolder().c_str(), 1);
    unsetenv("BREVIK_DEBUG_OUTPUT");
}

void Remove() {
    if (getpid() == owner) {
        std::error_code ignored;
        std::filesystem::remove_all(root, ignored);
    }
}

std::filesystem::path ScratchFolder() {
    return root / "scratch";
}
std::filesystem::path Folder() {
    return root / "machine";
}
std::filesystem::path RuntimeFolder() {
    return root / "run";
}

}  // namespace TestMachine
