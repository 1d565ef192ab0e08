// The temporary folder of a run: two machines, with and without the sibling library, and a runtime
// folder in which no viewer runs.
#pragma once

#include <filesystem>

// Where the sibling library of a machine lies.
std::filesystem::path SiblingFolder(const std::filesystem::path& machine);

// Puts a stand-in for the sibling library into the machine in a folder. Throws on failure.
void PutSibling(const std::filesystem::path& machine);

class BenchMachine {
  public:
    // Makes the folders, and points the environment of this process and its children at the machine
    // with the sibling. Throws on failure.
    BenchMachine();
    BenchMachine(const BenchMachine&) = delete;
    BenchMachine& operator=(const BenchMachine&) = delete;
    ~BenchMachine();

    // For the children that are started from now on.
    void UseSibling(bool present) const;

  private:
    std::filesystem::path root_;
};
