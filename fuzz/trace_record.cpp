// The viewer's reader of packets: whatever a packet holds, a line made from it is one line of
// well-formed UTF-8 without control characters, and what was read is what the packet says.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "brevikctl/output/facts.cpp"
#include "brevikctl/output/terminal.cpp"
#include "brevikctl/output/trouble.cpp"
#include "brevikctl/trace/trace_line.cpp"
#include "platform/posix/text/host_text.h"

namespace {

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

void RequireCleanLine(const std::string& line) {
    Require(Utf8FromWide(WideFromUtf8(line)) == line);  // well-formed
    Require(line.back() == '\n');
    for (std::size_t i = 0; i + 1 < line.size(); ++i) {
        const auto byte = static_cast<unsigned char>(line[i]);
        Require(byte >= 0x20 && byte != 0x7F);
        const bool isHighControl = byte == 0xC2 && static_cast<unsigned char>(line[i + 1]) < 0xA0;
        Require(!isHighControl);
    }
}

std::string Rebuild(const TraceLine& line) {
    UTrace::TraceRecord record = {};
    record.size = UTrace::TraceRecord::kEmptySize + static_cast<std::uint32_t>(line.text.size());
    record.magic = UTrace::TraceRecord::kMagic;
    record.level = line.level;
    record.channel = line.channel;
    record.tag = line.tag;
    std::memcpy(record.client, line.client.data(), line.client.size());
    std::memcpy(record.text, line.text.data(), line.text.size());
    return std::string(reinterpret_cast<const char*>(&record), record.size);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string packet(reinterpret_cast<const char*>(data), size);
    TraceLine line;
    if (line.Read(packet) == nullptr) {
        Require(Rebuild(line) == packet);
        RequireCleanLine(line.ToText(false));
        RequireCleanLine(line.ToJson());
        Require(line.ToText(true).find(line.ToText(false).substr(0, 12)) != std::string::npos);
    }
    return 0;
}
