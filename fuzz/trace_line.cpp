// The making of a trace line: whatever the client, depth, flags, level and message, the filter sees
// the bare message, and a viewer gets a record that says the same, cut where it does not fit.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "brevikctl/output/facts.cpp"
#include "brevikctl/output/terminal.cpp"
#include "brevikctl/output/trouble.cpp"
#include "brevikctl/trace/trace_line.cpp"
#include "brevikctl/trace/trace_socket.cpp"
#include "trace/UTrace.h"

namespace {

constexpr int kSetLevel = 4;
constexpr std::size_t kLongestText = 1023;
constexpr std::size_t kLongestClient = 63;

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

// What one input asks for: a byte for each choice, then the client and the message.
struct Choice {
    int flags = 0;
    int level = 0;
    unsigned depth = 0;
    bool refuse = false;
    bool tagged = false;
    unsigned channel = 0;
    std::string client;
    std::string message;
};

// What the filter has seen. It refuses every line but those that `open` lets through.
struct Seen {
    bool open = false;
    int count = 0;
    int level = 0;
    std::string client;
    std::string message;
} seen;

bool Filter(int level, const char* client, const char* message) {
    ++seen.count;
    seen.level = level;
    seen.client = client;
    seen.message = message;
    return seen.open;
}

Choice Read(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kHead = 6;
    Choice choice;
    if (size < kHead) {
        return choice;
    }
    choice.flags = data[0] & 7;
    choice.refuse = (data[0] & 8) != 0;
    choice.tagged = (data[0] & 16) != 0;
    choice.level = static_cast<std::int8_t>(data[1]);
    // Mostly shallow, since a deep line costs many tracers.
    choice.depth = data[3] % 16u == 0 ? data[2] * 3u : data[2] % 8u;
    choice.channel = data[4] * 0x01010101u;
    const std::string rest(reinterpret_cast<const char*>(data) + kHead, size - kHead);
    const std::size_t clientLength = std::min<std::size_t>(data[5], rest.size());
    // As C strings: a NUL ends them.
    choice.client = rest.substr(0, clientLength).c_str();
    choice.message = rest.substr(clientLength).c_str();
    return choice;
}

void Say(const Choice& choice) {
    seen = Seen();
    seen.open = !choice.refuse;
    if (choice.tagged) {
        UTrace::TaggedAs(choice.channel, choice.client.c_str(), "%s", choice.message.c_str());
    } else {
        UTrace::TraceAs(choice.level, choice.client.c_str(), "%s", choice.message.c_str());
    }
}

void SayAtDepth(const Choice& choice, unsigned depth) {
    if (depth == 0) {
        Say(choice);
        return;
    }
    seen.open = false;
    const UTrace::FunctionComponent tracer("fuzz", "function", nullptr);
    SayAtDepth(choice, depth - 1);
    // The tracers' return lines are not looked at.
    UTrace::SetFilter([](int, const char*, const char*) { return false; });
}

void CheckRecord(const Choice& choice, int level, const std::string& packet) {
    TraceLine line;
    Require(line.Read(packet) == nullptr);
    Require(line.level == level);
    Require(line.channel == (choice.tagged ? choice.channel : 0));
    Require(line.tag == (choice.tagged ? 1 : 0));
    Require(line.client == choice.client.substr(0, kLongestClient));
    std::string text =
        std::string(std::size_t{2} * choice.depth, ' ') + choice.message.substr(0, kLongestText);
    std::string shown = line.text;
    if ((choice.flags & UTrace::kFlagTime) != 0) {
        const std::size_t behindTime = shown.find(" : ") + 3;
        text.resize(std::min(text.size(), kLongestText - behindTime));
        shown.erase(0, behindTime);
    }
    Require(shown == text.substr(0, kLongestText));
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    setenv("BREVIK_DEBUG_OUTPUT", "/dev/null", 1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static TraceSocket viewer(UTrace::kViewerClass);
    const Choice choice = Read(data, size);
    UTrace::Initialize();
    UTrace::SetLevel(kSetLevel);
    UTrace::SetFlags(choice.flags);
    UTrace::SetFilter(Filter);
    SayAtDepth(choice, choice.depth);
    UTrace::Terminate();

    const int level = choice.tagged ? 3 : choice.level;
    const bool passes = level <= kSetLevel || (choice.flags & UTrace::kFlagAllLevels) != 0;
    Require(seen.count == (passes ? 1 : 0));
    TraceSocket::Packet packet;
    const bool sent = viewer.Receive(&packet, 0);
    Require(sent == (passes && !choice.refuse));
    if (passes) {
        Require(seen.level == level);
        Require(seen.client == choice.client);
        Require(seen.message == choice.message.substr(0, kLongestText));
    }
    if (sent) {
        CheckRecord(choice, level, packet.bytes);
    }
    return 0;
}
