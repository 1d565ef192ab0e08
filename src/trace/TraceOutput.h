// Where every trace line leaves the library.
#pragma once

#include <cstdarg>
#include <cstdint>

#include "platform/types.h"

namespace UTrace {

// Makes a line of a format and its arguments and hands it to whoever listens: the debugger output,
// the filter, the viewer. Dropped while the trace is stopped, or when the format is null or
// `silent`. For holders of the trace lock only. `client` may be null. Throws std::bad_alloc alone.
void Emit(const char* client, int level, unsigned channel, unsigned char tag, const char* format,
          va_list arguments);

// The same with the arguments themselves, for a line without a channel.
void EmitFormatted(const char* client, int level, const char* format, ...);

// Whether a viewer is there. A look costs a call to the platform, so its answer holds for 3000
// milliseconds. For holders of the trace lock only.
bool FindViewer();

// Sends the viewer one line with the number of lines that it was too slow for. False when it is
// still too slow after `timeout` milliseconds. For holders of the trace lock only.
bool ReportLostLines(UINT timeout);

// Microseconds from an origin of the system's own.
std::uint64_t Clock();

}  // namespace UTrace
