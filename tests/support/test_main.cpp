// Every test program gives its process a machine of its own, and nothing of the user's environment.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>

#include "support/test_machine.h"

// The thread sanitizer does not see the lock that the run-time library holds while it reads the
// zone.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions() {
    return "race:tzset_internal\n";
}

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    TestMachine::Create();
    const int result = RUN_ALL_TESTS();
    TestMachine::Remove();
    return result;
}
