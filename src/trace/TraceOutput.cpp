#include "trace/TraceOutput.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "platform/clock.h"
#include "platform/debugger.h"
#include "trace/TraceRecord.h"
#include "trace/TraceState.h"

namespace UTrace {
namespace {

constexpr std::size_t kMessageCapacity = 1024;
constexpr DWORD kLookupInterval = 3000;  // milliseconds

// A line waits at most kSendTimeout for a busy viewer. After that lines are lost until the viewer,
// tried once in a kRetryInterval, takes one again. In milliseconds.
constexpr UINT kSendTimeout = 50;
constexpr DWORD kRetryInterval = 100;
constexpr UINT kRetryTimeout = 1;

void InsertTime(std::string& line) {
    const std::uint64_t microseconds = Clock();
    const auto seconds = static_cast<unsigned>(microseconds / 1000000);
    const auto milliseconds = static_cast<unsigned>(microseconds % 1000000 / 1000);
    char prefix[32];
    std::snprintf(prefix, sizeof prefix, "%u:%u:%u.%03u : ", seconds / 3600, seconds % 3600 / 60,
                  seconds % 60, milliseconds);
    line.insert(0, prefix);
}

TraceRecord MakeRecord(const char* client, int level, unsigned channel, unsigned char tag,
                       std::string_view line) {
    TraceRecord record;
    const std::size_t length = std::min<std::size_t>(line.size(), TraceRecord::kTextCapacity - 1);
    record.size = static_cast<std::uint32_t>(TraceRecord::kEmptySize + length);
    record.magic = TraceRecord::kMagic;
    record.level = level;
    record.channel = channel;
    record.tag = tag;
    std::memset(record.client, 0, sizeof record.client);
    if (client != nullptr) {
        std::memcpy(record.client, client, strnlen(client, sizeof record.client - 1));
    }
    std::memcpy(record.text, line.data(), length);
    record.text[length] = '\0';
    return record;
}

// Whether the viewer has taken the record; if not, the present line is lost.
bool Send(TraceRecord& record, UINT timeout) {
    TraceState& state = State();
    COPYDATASTRUCT data = {TraceRecord::kMagic, record.size, &record};
    DWORD_PTR ignored = 0;
    SetLastError(ERROR_SUCCESS);
    if (SendMessageTimeoutW(state.viewerWindow, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data),
                            SMTO_BLOCK | SMTO_ABORTIFHUNG, timeout, &ignored)) {
        return true;
    }
    if (GetLastError() == ERROR_INVALID_WINDOW_HANDLE) {
        state.viewerWindow = nullptr;
        state.lastLookup = GetTickCount();
        state.lost = 0;  // the next viewer has missed nothing
    } else {
        state.lastLoss = GetTickCount();
        ++state.lost;
    }
    return false;
}

void SendToViewer(TraceRecord& record) {
    TraceState& state = State();
    if (state.lost != 0 && GetTickCount() - state.lastLoss < kRetryInterval) {
        ++state.lost;
    } else if (state.lost == 0 || ReportLostLines(kRetryTimeout)) {
        Send(record, kSendTimeout);
    }
}

}  // namespace

void Emit(const char* client, int level, unsigned channel, unsigned char tag, const char* format,
          va_list arguments) {
    TraceState& state = State();
    if (!state.started || format == nullptr || format == silent) {
        return;
    }
    const KeepLastError keep;
    const int flags = state.flags;
    const Filter filter = state.filter;
    const bool debugger = (flags & kFlagDebuggerOutput) != 0 && IsDebuggerOutputOpen();
    const bool viewer = FindViewer();
    if (!debugger && filter == nullptr && !viewer) {
        return;  // there is no listener
    }

    char message[kMessageCapacity];
    message[0] = '\0';
    std::vsnprintf(message, sizeof message, format, arguments);

    std::string line(std::size_t{2} * Depth(), ' ');
    line += message;
    if ((flags & kFlagTime) != 0) {
        InsertTime(line);
    }
    if (debugger) {
        OutputDebugStringA(client != nullptr ? (std::string(client) + ": ").c_str() : "");
        OutputDebugStringA(line.c_str());
        OutputDebugStringA("\r\n");
    }
    if (filter != nullptr && !filter(level, client, message)) {
        return;
    }
    if (viewer) {
        TraceRecord record = MakeRecord(client, level, channel, tag, line);
        SendToViewer(record);
    }
}

void EmitFormatted(const char* client, int level, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    Emit(client, level, 0, 0, format, arguments);
    va_end(arguments);
}

bool FindViewer() {
    TraceState& state = State();
    const DWORD now = GetTickCount();
    if (!std::exchange(state.hasLooked, true) || now - state.lastLookup > kLookupInterval) {
        state.lastLookup = now;
        state.viewerWindow = FindWindowW(kViewerClass, nullptr);
        state.lost = state.viewerWindow != nullptr ? state.lost : 0;
    }
    return state.viewerWindow != nullptr;
}

bool ReportLostLines(UINT timeout) {
    constexpr int kErrorLevel = 1;
    TraceState& state = State();
    char text[64];
    std::snprintf(text, sizeof text, "%u lines were not sent: the viewer was too slow", state.lost);
    TraceRecord record =
        MakeRecord(state.clientName.data(), kErrorLevel, TraceRecord::kLostChannel, 1, text);
    if (!Send(record, timeout)) {
        return false;
    }
    state.lost = 0;
    return true;
}

std::uint64_t Clock() {
    LARGE_INTEGER frequency;
    LARGE_INTEGER counter;
    if (QueryPerformanceFrequency(&frequency) && QueryPerformanceCounter(&counter)) {
        // Whole seconds apart, so that the product does not leave 64 bits on a system long up.
        const auto count = static_cast<std::uint64_t>(counter.QuadPart);
        const auto rate = static_cast<std::uint64_t>(frequency.QuadPart);
        return count / rate * 1000000 + count % rate * 1000000 / rate;
    }
    return static_cast<std::uint64_t>(std::clock()) * 1000000 / CLOCKS_PER_SEC;
}

}  // namespace UTrace
