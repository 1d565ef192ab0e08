// A trace record as a viewer got it: foreign bytes until they have been read.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

struct TraceLine {
    std::chrono::system_clock::time_point arrival;
    pid_t sender = 0;  // 0 when it is not known
    std::int32_t level = 0;
    std::uint32_t channel = 0;
    std::uint8_t tag = 0;
    std::string client;
    std::string text;                   // with its indentation
    std::optional<std::uint32_t> lost;  // the number of lines, where it reports lost ones

    // Reads a packet into the line; arrival and sender stay as they are. Null, or what is wrong
    // with the packet, the line then being left as it was.
    const char* Read(std::string_view packet);

    // One line with its end. Nothing of the record reaches a terminal as a control character.
    std::string ToText(bool coloured) const;

    // One JSON object with a line end.
    std::string ToJson() const;
};
