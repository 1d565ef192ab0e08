#include "brevikctl/trace/trace_line.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>

#include "brevikctl/output/facts.h"
#include "brevikctl/output/terminal.h"
#include "brevikctl/output/time_text.h"
#include "trace/TraceRecord.h"

namespace {

using UTrace::TraceRecord;

// By level, from 0; any other level is plain.
constexpr Colour kLevelColours[] = {Colour::kNone, Colour::kRed, Colour::kYellow, Colour::kNone,
                                    Colour::kFaint};

Colour ColourOf(std::int32_t level) {
    const auto index = static_cast<std::uint32_t>(level);
    return index < std::size(kLevelColours) ? kLevelColours[index] : Colour::kNone;
}

int MillisecondsOf(std::chrono::system_clock::time_point time) {
    const auto count =
        std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()).count();
    return static_cast<int>(count % 1000);
}

// The time in the form, with its milliseconds.
std::string Text(std::chrono::system_clock::time_point time,
                 std::tm* (*partsOf)(const std::time_t*, std::tm*), const char* form) {
    char milliseconds[8];
    std::snprintf(milliseconds, sizeof milliseconds, ".%03d", MillisecondsOf(time));
    return TimeText(std::chrono::system_clock::to_time_t(time), partsOf, form) + milliseconds;
}

bool IsAllZero(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](char byte) { return byte == '\0'; });
}

}  // namespace

const char* TraceLine::Read(std::string_view packet) {
    if (packet.size() < TraceRecord::kEmptySize || packet.size() > sizeof(TraceRecord)) {
        return "its length is that of no record";
    }
    TraceRecord record;
    std::memcpy(&record, packet.data(), packet.size());
    if (record.magic != TraceRecord::kMagic) {
        return "its magic number is wrong";
    }
    if (record.size != packet.size()) {
        return "its size field is not its length";
    }
    const std::string_view clientField(record.client, sizeof record.client);
    const std::size_t clientLength = clientField.find('\0');
    if (clientLength == std::string_view::npos || !IsAllZero(clientField.substr(clientLength))) {
        return "its client name has no proper end";
    }
    const std::string_view textField(record.text, packet.size() - TraceRecord::kEmptySize + 1);
    if (textField.find('\0') != textField.size() - 1) {
        return "its text does not end where the record ends";
    }
    level = record.level;
    channel = record.channel;
    tag = record.tag;
    client = clientField.substr(0, clientLength);
    text = textField.substr(0, textField.size() - 1);
    lost.reset();
    std::uint32_t number = 0;
    if (tag == 1 && channel == TraceRecord::kLostChannel &&
        std::from_chars(text.data(), text.data() + text.size(), number).ec == std::errc()) {
        lost = number;
    }
    return nullptr;
}

std::string TraceLine::ToText(bool coloured) const {
    const std::string channelMark = tag != 0 && !lost ? "#" + std::to_string(channel) : "";
    char head[64];
    std::snprintf(head, sizeof head, "%s %7d ", Text(arrival, localtime_r, "%T").c_str(), sender);
    std::string line = head + SafeText(client) + " " + std::to_string(level) + channelMark + "  ";
    line += SafeText(text);
    return Coloured(coloured ? ColourOf(level) : Colour::kNone, line) + "\n";
}

std::string TraceLine::ToJson() const {
    Facts facts = {{"time", Text(arrival, gmtime_r, "%FT%T") + "Z"},
                   {"pid", sender},
                   {"level", level},
                   {"channel", channel},
                   {"tag", tag},
                   {"client", client},
                   {"text", text}};
    if (lost) {
        facts.emplace_back("lost", *lost);
    }
    return ToObject(facts) + "\n";
}
