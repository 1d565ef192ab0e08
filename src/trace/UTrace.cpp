#include "trace/UTrace.h"

#include <algorithm>
#include <cstring>

#include "text/StringConversions.h"
#include "text/VelmarException.h"
#include "trace/TraceOutput.h"
#include "trace/TraceState.h"

namespace UTrace {

namespace {

// An array of its own: the compiler may give all literals of one content one address.
constexpr char kSilent[] = "silent";

constexpr int kErrorLevel = 1;
constexpr int kSecondLevel = 2;
constexpr int kInfoLevel = 3;

// One line under the lock, when its level passes.
void EmitLine(const char* client, int level, unsigned channel, unsigned char tag,
              const char* format, va_list arguments) {
    const VelmarAutoCriticalSection hold(Lock());
    if (IsLevelOn(level)) {
        Emit(client, level, channel, tag, format, arguments);
    }
}

// The process-wide client; its name is read under the lock.
const char* Ours() {
    return State().clientName.data();
}

}  // namespace

const char* const silent = kSilent;

bool Initialize() {
    TraceState& state = State();
    const VelmarAutoCriticalSection hold(Lock());
    if (state.started) {
        return false;
    }
    state.clientName.fill('\0');
    state.level = 0;
    state.flags = kFlagDebuggerOutput | kFlagAllLevels;
    state.filter = nullptr;
    Depth() = 0;
    state.hasLooked = false;
    state.viewerWindow = nullptr;
    FindViewer();
    state.started = true;
    return true;
}

void Terminate() {
    State().filter = nullptr;
    State().started = false;
}

void SetClientName(const char* name) {
    TraceState& state = State();
    const VelmarAutoCriticalSection hold(Lock());
    state.clientName.fill('\0');
    if (name != nullptr) {
        std::copy_n(name, strnlen(name, state.clientName.size() - 1), state.clientName.begin());
    }
}

void GetClientName(char* buffer, unsigned size) {
    if (buffer == nullptr || size == 0) {
        return;
    }
    TraceState& state = State();
    const VelmarAutoCriticalSection hold(Lock());
    const std::size_t length = strnlen(state.clientName.data(), size - 1);
    *std::copy_n(state.clientName.data(), length, buffer) = '\0';
}

void SetLevel(int level) {
    State().level = level;
}
int GetLevel() {
    return State().level;
}
void SetFlags(int flags) {
    State().flags = flags;
}
int GetFlags() {
    return State().flags;
}
void SetFilter(Filter filter) {
    State().filter = filter;
}

bool IsLevelOn(int level) {
    const TraceState& state = State();
    return level <= state.level || (state.flags & kFlagAllLevels) != 0;
}

// The body of a line operation, whose last parameters are `format` and its arguments.
#define EMIT_LINE(client, level, channel, tag)                \
    va_list arguments;                                        \
    va_start(arguments, format);                              \
    EmitLine(client, level, channel, tag, format, arguments); \
    va_end(arguments)

void Trace(int level, const char* format, ...) {
    EMIT_LINE(Ours(), level, 0, 0);
}
void TraceAs(int level, const char* client, const char* format, ...) {
    EMIT_LINE(client, level, 0, 0);
}
void Error(const char* format, ...) {
    EMIT_LINE(Ours(), kErrorLevel, 0, 0);
}
void ErrorAs(const char* client, const char* format, ...) {
    EMIT_LINE(client, kErrorLevel, 0, 0);
}
void Level2(const char* format, ...) {
    EMIT_LINE(Ours(), kSecondLevel, 0, 0);
}
void Level2As(const char* client, const char* format, ...) {
    EMIT_LINE(client, kSecondLevel, 0, 0);
}
void Info(const char* format, ...) {
    EMIT_LINE(Ours(), kInfoLevel, 0, 0);
}
void InfoAs(const char* client, const char* format, ...) {
    EMIT_LINE(client, kInfoLevel, 0, 0);
}
void Tagged(unsigned channel, const char* format, ...) {
    EMIT_LINE(Ours(), kInfoLevel, channel, 1);
}
void TaggedAs(unsigned channel, const char* client, const char* format, ...) {
    EMIT_LINE(client, kInfoLevel, channel, 1);
}

#undef EMIT_LINE

void Exception(const VelmarException& caught, const char* note) {
    ExceptionAs(Ours(), caught, note);
}

void ExceptionAs(const char* client, const VelmarException& caught, const char* note) {
    const VelmarAutoCriticalSection hold(Lock());
    if (!IsLevelOn(kErrorLevel)) {
        return;
    }
    note = note != nullptr ? note : "";
    std::string format = *note != '\0' ? "%s: " : "%s";
    format += "error = %d, message = \"%s\"";
    format += caught.GetNote().empty() ? "" : ", note = \"%s\"";
    EmitFormatted(client, kErrorLevel, format.c_str(), note, static_cast<int>(caught.GetNumber()),
                  Utf8ToNarrow(caught.GetMessage()).c_str(), caught.GetNote().c_str());
}

}  // namespace UTrace
