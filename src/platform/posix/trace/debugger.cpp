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
#include <mutex>
#include <string_view>

#include "platform/posix/base/environment.h"
#include "platform/posix/base/interrupted.h"
#include "platform/posix/base/scoped_descriptor.h"
#include "platform/threads.h"

namespace brevik::platform {
namespace {

// In the place of the descriptor that text goes to.
constexpr int kNotAskedYet = -1;
constexpr int kNone = -2;

// The longest write that a pipe does not mix with those of others.
constexpr std::size_t kLongestWrite = PIPE_BUF;

// The line that is being made, and the thread that makes it.
struct OpenLine {
    pthread_t thread = {};
    std::size_t length = 0;
    char text[kLongestWrite] = {};
};

// All of this is made at load and never destroyed: static objects may speak in their destructors.
constinit std::atomic<int> listener = kNotAskedYet;
constinit bool listenerIsPipe = false;
constinit std::mutex lock;
constinit OpenLine line;

bool IsPipe(int file) {
    struct stat status;
    return fstat(file, &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}

int OpenFile(const char* path) {
    // Not to wait for the reader of a named pipe.
    ScopedDescriptor file =
        OpenDescriptor(path, O_WRONLY | O_APPEND | O_CREAT | O_NOCTTY | O_NONBLOCK, 0600);
    if (!file) {
        return kNone;
    }
    fcntl(file.Get(), F_SETFL, O_APPEND);
    return file.Release();
}

int OpenListener() {
    const char* name = EnvironmentVariable("BREVIK_DEBUG_OUTPUT");
    if (name == nullptr) {
        return kNone;
    }
    return std::strcmp(name, "-") == 0 ? STDERR_FILENO : OpenFile(name);
}

// Text that cannot be written is lost.
void Write(int file, std::string_view text) {
    const HeldSignal quiet(listenerIsPipe ? SIGPIPE : SIGXFSZ,
                           listenerIsPipe || IsFileSizeLimited());
    while (!text.empty()) {
        const ssize_t count = Uninterrupted([&] { return write(file, text.data(), text.size()); });
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno == EAGAIN) {
            pollfd room = {file, POLLOUT, 0};
            poll(&room, 1, -1);
        } else if (errno == EPIPE) {
            listener.store(kNone, std::memory_order_release);  // its reader is gone for good
            return;
        } else {
            return;
        }
    }
}

void Flush(int file) {
    Write(file, {line.text, line.length});
    line.length = 0;
}

void Collect(int file, std::string_view text) {
    while (!text.empty()) {
        const std::size_t count = text.copy(line.text + line.length, kLongestWrite - line.length);
        line.length += count;
        text.remove_prefix(count);
        if (line.length == kLongestWrite) {
            Flush(file);
        }
    }
}

// The descriptor that text goes to, or kNone.
int Listener() {
    if (const int known = listener.load(std::memory_order_acquire); known != kNotAskedYet) {
        return known;
    }
    const std::lock_guard guard(lock);
    if (listener.load(std::memory_order_relaxed) == kNotAskedYet) {
        const int file = OpenListener();
        listenerIsPipe = file >= 0 && IsPipe(file);
        listener.store(file, std::memory_order_release);
    }
    return listener.load(std::memory_order_relaxed);
}

}  // namespace

void OutputDebugStringA(const char* text) {
    const int file = Listener();
    if (file == kNone || text == nullptr) {
        return;
    }
    const int callersError = errno;
    const std::string_view whole = text;
    const std::lock_guard guard(lock);
    if (line.length > 0 && !pthread_equal(line.thread, pthread_self()) && whole.ends_with('\n')) {
        Write(file, whole);  // past the line that another thread has begun
    } else {
        const std::size_t complete = whole.rfind('\n') + 1;
        Collect(file, whole.substr(0, complete));
        if (complete > 0) {
            Flush(file);
        }
        Collect(file, whole.substr(complete));
        line.thread = pthread_self();
    }
    errno = callersError;
}

bool IsDebuggerOutputOpen() {
    return Listener() != kNone;
}

}  // namespace brevik::platform
