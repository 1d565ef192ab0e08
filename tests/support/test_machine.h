// The temporary machine of a test process.
#pragma once

#include <filesystem>

namespace TestMachine {

// Makes a new empty machine in a temporary folder and points the environment at it: BREVIK_MACHINE
// at Folder(), XDG_RUNTIME_DIR at RuntimeFolder(), and BREVIK_DEBUG_OUTPUT away.
void Create();
void Remove();

// A temporary folder of this process, outside the machine, for files of the test.
std::filesystem::path ScratchFolder();
std::filesystem::path Folder();
std::filesystem::path RuntimeFolder();

}  // namespace TestMachine
