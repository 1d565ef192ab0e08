#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <string>

#include "brevikctl/commands/command.h"
#include "brevikctl/commands/commands.h"
#include "brevikctl/output/stop_signals.h"
#include "brevikctl/output/terminal.h"
#include "brevikctl/output/trouble.h"
#include "brevikctl/trace/trace_line.h"
#include "brevikctl/trace/trace_socket.h"
#include "platform/posix/machine/machine.h"
#include "trace/TraceRecord.h"

namespace {

struct Options {
    std::optional<int> level;
    std::optional<std::string> client;
    bool json = false;
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
        Fail(std::string("standard output: ") + std::strerror(errno));
    }
    return errno == EINTR && StopSignals::Last() == 0;
}

void Trace(const Options& options) {
    const StopSignals signals;
    TraceSocket socket(UTrace::kViewerClass, signals.Descriptor());
    signal(SIGPIPE, SIG_IGN);
    const bool coloured = !options.json && IsColourWelcome(STDOUT_FILENO);
    Say("waiting for trace lines of the machine " + Quoted(Machine::Current().Folder()) +
        "; Ctrl-C ends");
    TraceSocket::Packet packet;
    while (socket.Receive(&packet, -1)) {
        TraceLine line;
        line.arrival = std::chrono::system_clock::now();
        line.sender = packet.sender;
        if (const char* fault = line.Read(packet.bytes)) {
            Say("skipped a packet of " + std::to_string(packet.bytes.size()) +
                " bytes from process " + std::to_string(packet.sender) + ": " + fault);
        } else if (IsWanted(line, options) && !Show(line, options, coloured)) {
            return;
        }
    }
}

}  // namespace

void AddTraceCommand(CLI::App& app) {
    Command(app, "trace", "Show the trace of the machine's running hosts that are yours, live",
            Trace)
        .Option("--level", &Options::level,
                "Only lines up to this level: 1 failures, 3 progress, 4 enter and return")
        .Option("--client", &Options::client, "Only lines of the client of exactly this name")
        .Json("One JSON object a line");
}
