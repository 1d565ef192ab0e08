#include "platform/viewer_window.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <mutex>
#include <string>
#include <utility>

#include "platform/posix/base/scoped_descriptor.h"
#include "platform/posix/trace/runtime_folder.h"

namespace brevik::platform {
namespace {

// The connection to the viewer. Never destroyed: a thread of the host may still trace while the
// process ends.
constinit std::mutex lock;
constinit int connection = -1;
constinit SocketName connectedTo = {};

const HWND kWindow = reinterpret_cast<HWND>(std::uintptr_t{1});

// REQUIRES: the lock is held.
void Disconnect() {
    if (connection >= 0) {
        close(std::exchange(connection, -1));
    }
}

bool IsAlive(int descriptor) {
    pollfd end = {descriptor, 0, 0};
    return poll(&end, 1, 0) == 0;
}

// A connection to this class's socket in the folder, if it is the same user's.
ScopedDescriptor ConnectIn(const std::string& path, const WCHAR* windowClass) {
    const RuntimeFolder folder = OpenRuntimeFolder(path, false);
    if (!folder.descriptor) {
        return {};
    }
    TakeStandardStreams();
    ScopedDescriptor made(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const sockaddr_un address = folder.Address(SocketNameOf(windowClass));
    ucred peer = {};
    socklen_t size = sizeof peer;
    const bool trusted =
        made &&
        connect(made.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        getsockopt(made.Get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
    return trusted ? std::move(made) : ScopedDescriptor();
}

ScopedDescriptor Connect(const WCHAR* windowClass) {
    for (const std::string& path : RuntimeFolderPaths()) {
        if (ScopedDescriptor made = ConnectIn(path, windowClass)) {
            return made;
        }
    }
    return {};
}

// Waits until the receiver's queue has room; false when the time ran out.
bool WaitForRoom(int descriptor, std::chrono::steady_clock::time_point deadline) {
    using std::chrono::milliseconds;
    for (;;) {
        const auto left =
            std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now()).count();
        if (left <= 0) {
            return false;
        }
        pollfd end = {descriptor, POLLOUT, 0};
        const int timeout = static_cast<int>(std::min<long long>(left, INT_MAX));
        if (poll(&end, 1, timeout) > 0) {
            return true;
        }
    }
}

// Sends the block as one packet. 0, or the error.
DWORD SendPacket(int descriptor, const COPYDATASTRUCT& data, UINT milliseconds) {
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    for (bool late = false;;) {
        if (send(descriptor, data.lpData, data.cbData, MSG_NOSIGNAL | MSG_DONTWAIT) >= 0) {
            return ERROR_SUCCESS;
        }
        if (errno == EMSGSIZE) {
            return ERROR_INVALID_PARAMETER;
        }
        if (errno != EAGAIN && errno != EINTR) {
            return ERROR_INVALID_WINDOW_HANDLE;
        }
        if (late) {
            return ERROR_TIMEOUT;
        }
        // A queue counts as having room only when most of it is free, so the last try comes
        // after the wait.
        late = !WaitForRoom(descriptor, deadline);
    }
}

}  // namespace

HWND FindWindowW(const WCHAR* windowClass, const WCHAR*) {
    SetLastError(ERROR_SUCCESS);
    const std::lock_guard guard(lock);
    if (connection >= 0 && (!IsAlive(connection) || connectedTo != SocketNameOf(windowClass))) {
        Disconnect();
    }
    if (connection < 0) {
        connection = Connect(windowClass).Release();
        connectedTo = connection >= 0 ? SocketNameOf(windowClass) : SocketName();
    }
    return connection >= 0 ? kWindow : nullptr;
}

LRESULT SendMessageTimeoutW(HWND window, UINT, WPARAM, LPARAM lParam, UINT, UINT milliseconds,
                            DWORD_PTR* result) {
    const auto* data = reinterpret_cast<const COPYDATASTRUCT*>(lParam);
    const std::lock_guard guard(lock);
    const DWORD error = window == kWindow && connection >= 0
                            ? SendPacket(connection, *data, milliseconds)
                            : ERROR_INVALID_WINDOW_HANDLE;
    if (error == ERROR_INVALID_WINDOW_HANDLE) {
        Disconnect();
    }
    if (error != ERROR_SUCCESS) {
        SetLastError(error);
        return 0;
    }
    if (result != nullptr) {
        *result = TRUE;
    }
    return TRUE;
}

}  // namespace brevik::platform
