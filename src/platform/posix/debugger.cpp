#include "platform/debugger.h"

#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <new>
#include <string_view>

#include "platform/posix/environment.h"
#include "platform/posix/held_signal.h"
#include "platform/posix/scoped_descriptor.h"

namespace brevik::platform {
namespace {

// Answers that are not the descriptor that text goes to.
constexpr int kNotAskedYet = -1;
constexpr int kNobody = -2;

// The longest write that a pipe does not mix with those of others.
constexpr std::size_t kLongestWrite = PIPE_BUF;

// A thread's line as far as it has come.
struct OpenLine {
    std::size_t length = 0;
    char text[kLongestWrite];
};

// All of this is made at load and never destroyed: static objects may speak in their destructors.
std::atomic<int> listener = kNotAskedYet;
std::atomic<bool> listenerIsPipe = false;
pthread_once_t asking = PTHREAD_ONCE_INIT;
thread_local OpenLine* openLine = nullptr;

// While lines are collected, the key makes the system call EndLine at the end of a thread that has
// one, behind the destructors of the thread's own objects.
std::atomic<bool> isCollecting = false;
pthread_key_t lineKey;

bool IsPipe(int file) {
    struct stat status;
    return fstat(file, &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}

int OpenFile(const char* path) {
    // Not to wait for the reader of a named pipe: one that has none is nobody.
    ScopedDescriptor file(
        open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0600));
    if (!file) {
        return kNobody;
    }
    fcntl(file.Get(), F_SETFL, O_APPEND);
    return file.Release();
}

int OpenListener() {
    const char* name = EnvironmentVariable("BREVIK_DEBUG_OUTPUT");
    if (name == nullptr) {
        return kNobody;
    }
    return std::strcmp(name, "-") == 0 ? STDERR_FILENO : OpenFile(name);
}

// Text that cannot be written is lost: there is nobody to tell.
void Write(int file, std::string_view text) {
    const bool isPipe = listenerIsPipe.load(std::memory_order_relaxed);
    const HeldSignal quiet(isPipe ? SIGPIPE : SIGXFSZ, isPipe || IsFileSizeLimited());
    while (!text.empty()) {
        const ssize_t count = write(file, text.data(), text.size());
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno == EAGAIN) {
            pollfd room = {file, POLLOUT, 0};
            poll(&room, 1, -1);
        } else if (errno == EPIPE) {
            listener.store(kNobody, std::memory_order_release);  // its reader is gone for good
            return;
        } else if (errno != EINTR) {
            return;
        }
    }
}

void Flush(int file, OpenLine& line) {
    Write(file, {line.text, line.length});
    line.length = 0;
}

void Collect(int file, OpenLine& line, std::string_view text) {
    while (!text.empty()) {
        const std::size_t count = text.copy(line.text + line.length, kLongestWrite - line.length);
        line.length += count;
        text.remove_prefix(count);
        if (line.length == kLongestWrite) {
            Flush(file, line);
        }
    }
}

// Writes and frees the calling thread's open line.
void EndLine(void* line) {
    openLine = nullptr;
    const int file = listener.load(std::memory_order_acquire);
    if (file != kNobody) {
        Flush(file, *static_cast<OpenLine*>(line));
    }
    delete static_cast<OpenLine*>(line);
}

void Ask() {
    const int file = OpenListener();
    if (file >= 0) {
        listenerIsPipe.store(IsPipe(file), std::memory_order_relaxed);
        isCollecting.store(pthread_key_create(&lineKey, EndLine) == 0, std::memory_order_release);
    }
    listener.store(file, std::memory_order_release);
}

// The descriptor that text goes to, or kNobody.
int Listener() {
    const int current = listener.load(std::memory_order_acquire);
    if (current != kNotAskedYet) {
        return current;
    }
    pthread_once(&asking, Ask);
    return listener.load(std::memory_order_acquire);
}

// The calling thread's open line; null when there is no collecting.
OpenLine* CurrentLine() {
    if (openLine != nullptr || !isCollecting.load(std::memory_order_acquire)) {
        return openLine;
    }
    auto* const line = new (std::nothrow) OpenLine;
    if (line != nullptr && pthread_setspecific(lineKey, line) != 0) {
        delete line;
        return nullptr;
    }
    return openLine = line;
}

// When this library goes, at the process's exit or before, EndLine goes with it: text is written as
// it comes from here on.
[[gnu::destructor]] void StopCollecting() {
    if (isCollecting.exchange(false, std::memory_order_acq_rel)) {
        pthread_key_delete(lineKey);
        if (openLine != nullptr) {
            EndLine(openLine);
        }
    }
}

}  // namespace

void OutputDebugStringA(const char* text) {
    const int file = Listener();
    if (file == kNobody || text == nullptr) {
        return;
    }
    const int callersError = errno;
    const std::string_view whole = text;
    if (OpenLine* const line = CurrentLine(); line != nullptr) {
        const std::size_t complete = whole.rfind('\n') + 1;
        Collect(file, *line, whole.substr(0, complete));
        if (complete > 0) {
            Flush(file, *line);
        }
        Collect(file, *line, whole.substr(complete));
    } else {
        Write(file, whole);
    }
    errno = callersError;
}

bool IsDebuggerOutputOpen() {
    return Listener() != kNobody;
}

}  // namespace brevik::platform
