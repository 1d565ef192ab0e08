// The trace: what the library says about what it is doing.
//
// A line has a level (1 failures, 2 unused, 3 arguments and progress, 4 function enter and return),
// a client name and an indentation that follows the open function tracers of its thread. Lines go
// to the debugger output, to the host's filter, and to a viewer program (`brevikctl trace`).
//
// Threads: any. One lock serialises all lines; it is held while a line is made and handed out, also
// across the filter. A tracer object belongs to its thread.
//
// Errors: a line operation throws std::bad_alloc alone. Text that does not fit is cut.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <string>

#include "platform/types.h"

class VelmarException;

namespace UTrace {

// ---- Setup and settings ----

inline constexpr int kFlagDebuggerOutput = 1;  // lines go to the debugger output
inline constexpr int kFlagAllLevels = 2;       // the level test passes for every level
inline constexpr int kFlagTime = 4;            // lines get a time prefix

// Starts the trace with no client name, level 0, flags 3, no filter and depth 0 of the calling
// thread. False, with nothing changed, when it is started already. Until then lines are dropped.
bool Initialize();

// Stops the trace and forgets the filter.
void Terminate();

// The client name that lines carry by default: at most 63 bytes; null counts as empty.
void SetClientName(const char* name);

// Copies at most `size` - 1 bytes and a NUL; with a size of 0 or a null buffer nothing.
void GetClientName(char* buffer, unsigned size);

void SetLevel(int level);
int GetLevel();
void SetFlags(int flags);
int GetFlags();

// A function of the host that sees each line: level, client (may be null) and the message without
// time and indentation. False keeps the line from the viewer. Called under the trace lock.
using Filter = bool (*)(int level, const char* client, const char* message);

// Null removes the filter.
void SetFilter(Filter filter);

// Whether a line of this level passes: it is not above the set level, or the flags let all pass.
bool IsLevelOn(int level);

// ---- Lines ----
//
// printf formats. The text is cut to 1023 bytes. A null format drops the line.

void Trace(int level, const char* format, ...) PRINTF_CHECKED(2, 3);
void TraceAs(int level, const char* client, const char* format, ...) PRINTF_CHECKED(3, 4);
void Error(const char* format, ...) PRINTF_CHECKED(1, 2);
void ErrorAs(const char* client, const char* format, ...) PRINTF_CHECKED(2, 3);
void Level2(const char* format, ...) PRINTF_CHECKED(1, 2);
void Level2As(const char* client, const char* format, ...) PRINTF_CHECKED(2, 3);
void Info(const char* format, ...) PRINTF_CHECKED(1, 2);
void InfoAs(const char* client, const char* format, ...) PRINTF_CHECKED(2, 3);

// A level 3 line that a viewer gets with a channel number and the tag 1.
void Tagged(unsigned channel, const char* format, ...) PRINTF_CHECKED(2, 3);
void TaggedAs(unsigned channel, const char* client, const char* format, ...) PRINTF_CHECKED(3, 4);

// Reports a caught exception at level 1: `note` unless it is null or empty, and the exception's
// number, message and note.
void Exception(const VelmarException& caught, const char* note);
void ExceptionAs(const char* client, const VelmarException& caught, const char* note);

// ---- Function tracers ----

// A format that writes nothing. Compared by address, not by content.
extern const char* const silent;

// Base of the stack objects that write a function's enter and return lines and indent the lines
// between them by one step. Both are at level 4 and need no level test.
class ITrace {
  public:
    ITrace(const ITrace&) = delete;
    ITrace& operator=(const ITrace&) = delete;
    virtual ~ITrace();

    // The value given to Return, 0 before.
    virtual long GetResult() const { return result_; }

    // Keeps the function's result for the return line: "return = VALUE" with a null format, else
    // the format's text, cut to 1023 bytes. `silent` drops the return line. The last call counts.
    // Returns `value`.
    virtual long Return(long value, const char* format, ...) PRINTF_CHECKED(3, 4);

  protected:
    ITrace(std::string client, const char* name);

    // Writes the enter line: the name, " - ", and the text of the format, "enter" where it is null.
    // The name is part of the format: a percent sign in it begins a conversion.
    void Enter(const char* format, va_list arguments);

  private:
    std::string client_;
    std::string name_;
    std::string resultText_;
    long result_ = 0;
    unsigned savedDepth_ = 0;
    bool silent_ = false;
};

// A tracer whose lines carry the client name set at its making.
class Function : public ITrace {
  public:
    Function(const char* name, const char* format, ...) PRINTF_CHECKED(3, 4);
    ~Function() override = default;
};

// A tracer whose lines carry the client name given.
class FunctionComponent : public ITrace {
  public:
    FunctionComponent(const char* client, const char* name, const char* format, ...)
        PRINTF_CHECKED(4, 5);
    ~FunctionComponent() override = default;
};

}  // namespace UTrace
