// The file library's start in the frame of a call.

#include <gtest/gtest.h>

#include <filesystem>

#include "support/child_process.h"
#include "support/test_machine.h"

namespace {

namespace fs = std::filesystem;

TEST(FileLibraryStart, FailureIsToldAtEachCallAndStopsNone) {
    // A colon is no part of a name, so the host's own file has no path that could be visited.
    const fs::path folder = TestMachine::ScratchFolder() / "a:b";
    fs::create_directories(folder);
    fs::copy_file(BREVIK_TEST_HOST, folder / "host");
    const ChildResult host = RunChild({folder / "host", "ids", "1031", ".", "ids", "1033"},
                                      {{"BREVIK_DEBUG_OUTPUT", "-"}});
    EXPECT_EQ(host.output, "0 1031\n0 1033\n");
    EXPECT_EQ(host.exitCode, 0);
    std::size_t told = 0;
    for (std::size_t at = 0; (at = host.errors.find("FileSystem_Start", at)) != std::string::npos;
         ++at) {
        ++told;
    }
    EXPECT_EQ(told, 2u) << host.errors;
    EXPECT_NE(host.errors.find("BREVIK KIT"), std::string::npos);
}

TEST(FileLibraryStart, NeedsNoMachine) {
    const ChildResult host =
        RunChild({BREVIK_TEST_HOST, "ids", "1031", ".", "guids"},
                 {{"BREVIK_MACHINE", "/dev/null/machine"}, {"BREVIK_DEBUG_OUTPUT", "-"}});
    EXPECT_EQ(host.output, "0 1031\n0\n");
    EXPECT_EQ(host.errors.find("error ="), std::string::npos) << host.errors;
}

}  // namespace
