// Every test program gives its process a machine of its own, and nothing of the user's environment.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>

#include "support/test_machine.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    TestMachine::Create();
    const int result = RUN_ALL_TESTS();
    TestMachine::Remove();
    return result;
}
