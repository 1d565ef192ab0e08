// brevikctl as a test starts it.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/posix/base/scoped_descriptor.h"
#include "support/child_process.h"

// The tool, or one group of its commands: the base of a fixture.
class Tool {
  public:
    explicit Tool(std::vector<std::string> group = {}) : group_(std::move(group)) {}

    ChildResult RunTool(const std::vector<std::string>& words,
                        const std::map<std::string, std::string>& environment = {}) const;

    // The output of a command that has nothing to complain about.
    std::string OutputOf(const std::vector<std::string>& words) const;

    // What a command that fails says; it prints nothing and leaves the registry as it was.
    std::string ErrorOf(const std::vector<std::string>& words) const;

  private:
    std::vector<std::string> group_;
};

// The tool on a terminal of its own; ended and reaped at the end of the object.
class ToolOnTerminal {
  public:
    // With `isHeld` it waits for SIGCONT before it starts.
    explicit ToolOnTerminal(const std::vector<std::string>& words, bool isHeld = false);
    ToolOnTerminal(const ToolOnTerminal&) = delete;
    ToolOnTerminal& operator=(const ToolOnTerminal&) = delete;
    ~ToolOnTerminal();

    pid_t Id() const { return id_; }
    void Type(char key) const;

    // What it shows up to a line end, or up to its end.
    std::string ReadLine() const { return ReadTo('\n'); }
    std::string ReadAll() const { return ReadTo(-1); }

    // Its status as waitpid gives it.
    int Wait();

  private:
    std::string ReadTo(int end) const;

    pid_t id_;
    ScopedDescriptor terminal_;
};
