#include "support/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>
#include <utility>

namespace {

// Starts the command on these descriptors; -1 leaves the test's own.
pid_t Start(const std::vector<std::string>& command,
            const std::map<std::string, std::string>& environment, int input, int output,
            int errors) {
    std::vector<char*> arguments;
    for (const std::string& word : command) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    const pid_t id = fork();
    if (id == 0) {
        for (const auto& [name, value] : environment) {
            if (value.empty()) {
                unsetenv(name.c_str());
            } else {
                setenv(name.c_str(), value.c_str(), 1);
            }
        }
        const int streams[] = {input, output, errors};
        for (int stream = 0; stream < 3; ++stream) {
            if (streams[stream] >= 0) {
                dup2(streams[stream], stream);
            }
        }
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    if (id < 0) {
        throw std::runtime_error("fork failed");
    }
    return id;
}

int ExitCode(pid_t id) {
    int status = 0;
    waitpid(id, &status, 0);
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

ChildResult RunChild(const std::vector<std::string>& command,
                     const std::map<std::string, std::string>& environment) {
    int output[2];
    int errors[2];
    if (pipe2(output, O_CLOEXEC) != 0 || pipe2(errors, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    const pid_t id = Start(command, environment, -1, output[1], errors[1]);
    close(output[1]);
    close(errors[1]);
    ChildResult result;
    pollfd ends[2] = {{output[0], POLLIN, 0}, {errors[0], POLLIN, 0}};
    for (int open = 2; open > 0;) {
        poll(ends, 2, -1);
        for (pollfd& end : ends) {
            if (end.fd < 0 || end.revents == 0) {
                continue;
            }
            char block[4096];
            const ssize_t count = read(end.fd, block, sizeof block);
            if (count > 0) {
                (&end == ends ? result.output : result.errors)
                    .append(block, static_cast<std::size_t>(count));
            } else {
                end.fd = -1;
                --open;
            }
        }
    }
    close(output[0]);
    close(errors[0]);
    result.exitCode = ExitCode(id);
    return result;
}

ChildProcess::ChildProcess(const std::vector<std::string>& command,
                           const std::map<std::string, std::string>& environment) {
    int input[2];
    int output[2];
    if (pipe2(input, O_CLOEXEC) != 0 || pipe2(output, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    id_ = Start(command, environment, input[0], output[1], -1);
    close(input[0]);
    close(output[1]);
    input_ = input[1];
    output_ = output[0];
}

ChildProcess::~ChildProcess() {
    if (id_ > 0) {
        kill(id_, SIGKILL);
        ExitCode(id_);
    }
    close(input_);
    close(output_);
}

void ChildProcess::WriteLine(const std::string& line) const {
    const std::string text = line + "\n";
    if (write(input_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        throw std::runtime_error("the child does not read");
    }
}

std::string ChildProcess::ReadLine() {
    for (;;) {
        const std::size_t end = buffer_.find('\n');
        if (end != std::string::npos) {
            std::string line = buffer_.substr(0, end);
            buffer_.erase(0, end + 1);
            return line;
        }
        char block[4096];
        const ssize_t count = read(output_, block, sizeof block);
        if (count <= 0) {
            return std::exchange(buffer_, {});
        }
        buffer_.append(block, static_cast<std::size_t>(count));
    }
}

void ChildProcess::Signal(int number) const {
    kill(id_, number);
}

int ChildProcess::Wait() {
    const int code = ExitCode(id_);
    id_ = -1;
    return code;
}
