#include "processes.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <stdexcept>

#include "platform/posix/base/scoped_descriptor.h"
#include "platform/types.h"

namespace {

// Starts the command, its standard output in `output` where that is a descriptor.
pid_t Start(const std::vector<std::string>& command, int output) {
    std::vector<char*> arguments;
    for (const std::string& word : command) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (output >= 0) {
        posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    }
    pid_t child = -1;
    const int error =
        posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        throw std::runtime_error(command[0] + " cannot be started");
    }
    return child;
}

void WaitFor(pid_t child, const std::string& program) {
    int status = -1;
    if (waitpid(child, &status, 0) != child || status != 0) {
        throw std::runtime_error(program + " failed");
    }
}

}  // namespace

Nanoseconds Median(std::vector<Nanoseconds> figures) {
    const auto middle = figures.begin() + static_cast<std::ptrdiff_t>(figures.size() / 2);
    std::nth_element(figures.begin(), middle, figures.end());
    return *middle;
}

std::string OutputOf(const std::vector<std::string>& command) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    const ScopedDescriptor input(ends[0]);
    ScopedDescriptor output(ends[1]);
    const pid_t child = Start(command, output.Get());
    output.Close();
    std::string text;
    std::array<char, 4096> block;
    for (;;) {
        const ssize_t count = read(input.Get(), block.data(), block.size());
        if (count <= 0) {
            break;
        }
        text.append(block.data(), static_cast<std::size_t>(count));
    }
    WaitFor(child, command[0]);
    return text;
}

Nanoseconds TimeOf(const std::string& program) {
    const auto start = std::chrono::steady_clock::now();
    WaitFor(Start({program}, -1), program);
    return std::chrono::steady_clock::now() - start;
}
