#include "support/debug_output.h"

#include <stdlib.h>

#include <fstream>
#include <iterator>

#include "support/test_machine.h"

namespace {

std::string Said() {
    std::ifstream file(TestMachine::ScratchFolder() / "debugger-output", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

DebugOutput::DebugOutput() : taken_(Said().size()) {
    setenv("BREVIK_DEBUG_OUTPUT", (TestMachine::ScratchFolder() / "debugger-output").c_str(), 1);
}

std::string DebugOutput::Take() {
    std::string said = Said().substr(taken_);
    taken_ += said.size();
    return said;
}
