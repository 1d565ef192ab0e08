// What a trace line looks like on its way to a viewer.
#pragma once

#include <cstdint>

#include "platform/types.h"

namespace UTrace {

// The window class of a viewer.
inline constexpr WCHAR kViewerClass[] = WIDE("Velmar Works::Trace::1.0");

// Numbers are little-endian. Only `size` bytes of a record are sent.
#pragma pack(push, 1)
struct TraceRecord {
    static constexpr std::uint32_t kMagic = 0x55543132;
    static constexpr std::uint32_t kTextCapacity = 1024;
    static constexpr std::uint32_t kEmptySize = 82;  // a record whose text is its NUL alone

    // The channel of the tagged line with which the trace itself reports lines that the viewer was
    // too slow for. The text begins with their number.
    static constexpr std::uint32_t kLostChannel = 0x4C4F5354;

    std::uint32_t size;        // bytes sent: kEmptySize and the length of the text
    std::uint32_t magic;       // kMagic
    std::int32_t level;        // the line's level
    std::uint32_t channel;     // 0, or the channel of a tagged line
    std::uint8_t tag;          // 0, or 1 for a tagged line
    char client[64];           // NUL-terminated, zero-padded; all zero without a client
    char text[kTextCapacity];  // NUL-terminated, with time and indentation
};
#pragma pack(pop)

static_assert(sizeof(TraceRecord) == 1105);

}  // namespace UTrace
