// Where every trace line leaves the library.
#pragma once

#include <cstdarg>
#include <cstdint>

#include "platform/types.h"

namespace UTrace {

// Makes a line and hands it to the debugger output, the filter and the viewer. Dropped while the
// trace is stopped, or when the format is null or `silent`. For holders of the trace lock only.
// `client` may be null. Throws std::bad_alloc alone.
void Emit(const char* client, int level, unsigned channel, unsigned char tag, const char* format,
          va_list arguments);

// The same with the arguments themselves, for a line without a channel.
void EmitFormatted(const char* client, int level, const char* format, ...);

// Whether there is a viewer. The answer of the platform holds for 3000 milliseconds. For holders of
// the trace lock only.
bool FindViewer();

// Sends the viewer one line with the number of lines that it was too slow for. False when it still
// is after `timeout` milliseconds. For holders of the trace lock only.
bool ReportLostLines(UINT timeout);

// Microseconds from an origin of the system's own.
std::uint64_t Clock();

}  // namespace UTrace
