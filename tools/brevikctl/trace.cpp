#include "trace.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <memory>
#include <optional>
#include <stdexcept>

#include "platform/posix/machine.h"
#include "platform/posix/trace_socket.h"
#include "terminal.h"
#include "trace/TraceRecord.h"
#include "trace_line.h"

namespace {

struct Options {
    std::optional<int> level;
    std::optional<std::string> client;
    bool json = false;
};

std::atomic<const TraceSocket*> running = nullptr;
std::atomic<bool> stopped = false;
static_assert(std::atomic<const TraceSocket*>::is_always_lock_free);

void Stop(int) {
    stopped = true;
    running.load()->Wake();
}

// While it lives, the signals that ask a program to end wake the socket. They also end a write that
// waits, since none of them restarts it.
class StopOnSignals {
  public:
    explicit StopOnSignals(const TraceSocket& socket) {
        running = &socket;
        struct sigaction action = {};
        action.sa_handler = Stop;
        for (std::size_t i = 0; i < std::size(kSignals); ++i) {
            sigaction(kSignals[i], &action, &before_[i]);
        }
        action.sa_handler = SIG_IGN;
        sigaction(SIGPIPE, &action, &pipeBefore_);
    }
    StopOnSignals(const StopOnSignals&) = delete;
    StopOnSignals& operator=(const StopOnSignals&) = delete;
    ~StopOnSignals() {
        for (std::size_t i = 0; i < std::size(kSignals); ++i) {
            sigaction(kSignals[i], &before_[i], nullptr);
        }
        sigaction(SIGPIPE, &pipeBefore_, nullptr);
    }

  private:
    static constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};
    struct sigaction before_[std::size(kSignals)];
    struct sigaction pipeBefore_;
};

// Lines that were lost may be such as are wanted.
bool IsWanted(const TraceLine& line, const Options& options) {
    return line.lost || ((!options.level || line.level <= *options.level) &&
                         (!options.client || line.client == *options.client));
}

// False when the output is closed or the user has had enough.
bool Show(const TraceLine& line, const Options& options, bool coloured) {
    if (WriteText(STDOUT_FILENO, options.json ? line.ToJson() : line.ToText(coloured))) {
        return true;
    }
    if (errno != EPIPE && errno != EINTR) {
        throw std::runtime_error(std::string("standard output: ") + std::strerror(errno));
    }
    return errno == EINTR && !stopped;
}

void Complain(const TraceSocket::Packet& packet, const char* fault) {
    WriteText(STDERR_FILENO, "brevikctl: skipped a packet of " +
                                 std::to_string(packet.bytes.size()) + " bytes from process " +
                                 std::to_string(packet.sender) + ": " + fault + "\n");
}

void Run(const Options& options) {
    TraceSocket socket(UTrace::kViewerClass);
    const StopOnSignals stopOnSignals(socket);
    const bool coloured = !options.json && IsColourWelcome(STDOUT_FILENO);
    WriteText(STDERR_FILENO, "brevikctl: waiting for trace lines of the machine " +
                                 Quoted(Machine::Current().Folder()) + "; Ctrl-C ends\n");
    TraceSocket::Packet packet;
    while (!stopped && socket.Receive(&packet, -1)) {
        TraceLine line;
        line.arrival = std::chrono::system_clock::now();
        line.sender = packet.sender;
        if (const char* fault = line.Read(packet.bytes)) {
            Complain(packet, fault);
        } else if (IsWanted(line, options) && !Show(line, options, coloured)) {
            return;
        }
    }
}

}  // namespace

void AddTraceCommands(CLI::App& app) {
    CLI::App* command = app.add_subcommand(
        "trace", "Show the trace of the machine's running hosts that are yours, live");
    const auto options = std::make_shared<Options>();
    command->add_option("--level", options->level,
                        "Only lines up to this level: 1 failures, 3 progress, 4 enter and return");
    command->add_option("--client", options->client,
                        "Only lines of the client of exactly this name");
    command->add_flag("--json", options->json, "One JSON object a line");
    command->callback([options] { Run(*options); });
}
