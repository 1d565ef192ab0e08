#include "support/tool.h"

#include <gmock/gmock.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/registry_machine.h"

ChildResult Tool::RunTool(const std::vector<std::string>& words,
                          const std::map<std::string, std::string>& environment) const {
    std::vector<std::string> command = {BREVIK_TEST_TOOL};
    command.insert(command.end(), group_.begin(), group_.end());
    command.insert(command.end(), words.begin(), words.end());
    return RunChild(command, environment);
}

std::string Tool::OutputOf(const std::vector<std::string>& words) const {
    const ChildResult result = RunTool(words);
    EXPECT_EQ(result.exitCode, 0) << testing::PrintToString(words);
    EXPECT_EQ(result.errors, "") << testing::PrintToString(words);
    return result.output;
}

std::string Tool::ErrorOf(const std::vector<std::string>& words) const {
    const std::string before = ReadRegistry();
    const ChildResult result = RunTool(words);
    EXPECT_EQ(result.exitCode, 1) << testing::PrintToString(words);
    EXPECT_EQ(result.output, "") << testing::PrintToString(words);
    EXPECT_EQ(ReadRegistry(), before) << testing::PrintToString(words);
    EXPECT_THAT(result.errors, testing::StartsWith("brevikctl: "));
    return result.errors;
}

ToolOnTerminal::ToolOnTerminal(const std::vector<std::string>& words, bool isHeld) {
    int primary = -1;
    id_ = forkpty(&primary, nullptr, nullptr, nullptr);
    if (id_ == 0) {
        std::vector<char*> command = {const_cast<char*>(BREVIK_TEST_TOOL)};
        for (const std::string& word : words) {
            command.push_back(const_cast<char*>(word.c_str()));
        }
        command.push_back(nullptr);
        if (isHeld) {
            raise(SIGSTOP);
        }
        execv(BREVIK_TEST_TOOL, command.data());
        _exit(127);
    }
    terminal_ = ScopedDescriptor(primary);
    if (isHeld) {
        int status = 0;
        EXPECT_EQ(waitpid(id_, &status, WUNTRACED), id_);
    }
}

ToolOnTerminal::~ToolOnTerminal() {
    if (id_ > 0) {
        kill(id_, SIGTERM);
        Wait();
    }
}

void ToolOnTerminal::Type(char key) const {
    EXPECT_EQ(write(terminal_.Get(), &key, 1), 1);
}

int ToolOnTerminal::Wait() {
    int status = -1;
    EXPECT_EQ(waitpid(id_, &status, 0), id_);
    id_ = -1;
    return status;
}

std::string ToolOnTerminal::ReadTo(int end) const {
    std::string shown;
    for (char byte = 0; byte != end && read(terminal_.Get(), &byte, 1) == 1;) {
        shown += byte;
    }
    return shown;
}
