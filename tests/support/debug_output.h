// What a test's process says on the debugger output.
#pragma once

#include <string>

// Makes the debugger output of this process go to a file, once and before anything is said there.
class DebugOutput {
  public:
    DebugOutput();

    // What was said since the object's making or the last Take.
    std::string Take();

  private:
    std::size_t taken_ = 0;
};
