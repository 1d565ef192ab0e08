// Child processes of a test.
#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

struct ChildResult {
    int exitCode = -1;  // 128 and the signal's number when a signal ended the child
    std::string output;
    std::string errors;
};

// Runs a program to its end, looked for in PATH when its name has no slash, with these variables
// added to the environment (an empty value removes one).
ChildResult RunChild(const std::vector<std::string>& command,
                     const std::map<std::string, std::string>& environment = {});

// A child that runs beside the test; killed and reaped at the end of the object.
class ChildProcess {
  public:
    explicit ChildProcess(const std::vector<std::string>& command,
                          const std::map<std::string, std::string>& environment = {});
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

    pid_t Id() const { return id_; }

    // Gives a line to its standard input, which stays open as long as the object.
    void WriteLine(const std::string& line) const;

    // The next line of its standard output without its end; empty at the end of the output.
    std::string ReadLine();
    void Signal(int number) const;

    // Waits for the end and tells the exit code as above.
    int Wait();

  private:
    pid_t id_ = -1;
    int input_ = -1;
    int output_ = -1;
    std::string buffer_;
};
