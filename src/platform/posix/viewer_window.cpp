#include "platform/viewer_window.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <mutex>

#include "platform/posix/runtime_folder.h"
#include "platform/posix/scoped_descriptor.h"

namespace brevik::platform {
namespace {

// A connection to a receiver. The handle is a number that is never given twice, so that a stale one
// is known as such.
struct Connection {
    std::uint32_t handle = 0;
    ScopedDescriptor descriptor;  // empty: the place is free
    SocketName name = {};
};

// Never destroyed: a thread of the host may still trace while the process ends.
union Connections {
    std::array<Connection, 16> all = {};
    ~Connections() {}
};

constinit std::mutex lock;
constinit Connections connections;
constinit std::uint32_t lastHandle = 0;

// Nobody holds the lock across a fork, so that the child can go on sending; unloading closes what
// is still open.
struct Lifetime {
    Lifetime() {
        pthread_atfork([] { lock.lock(); }, [] { lock.unlock(); }, [] { lock.unlock(); });
    }
    ~Lifetime() {
        const std::lock_guard guard(lock);
        for (Connection& connection : connections.all) {
            connection = Connection();
        }
    }
} lifetime;

// REQUIRES: the lock is held. Null when there is none.
Connection* FindByHandle(HWND window) {
    const auto handle = reinterpret_cast<std::uintptr_t>(window);
    for (Connection& connection : connections.all) {
        if (connection.descriptor && connection.handle == handle) {
            return &connection;
        }
    }
    return nullptr;
}

bool IsAlive(const Connection& connection) {
    pollfd end = {connection.descriptor.Get(), 0, 0};
    return poll(&end, 1, 0) == 0;
}

// REQUIRES: the lock is held. The live connection of this name, else a free one; null when all are
// in use. Connections whose receiver has ended are closed.
Connection* FindByName(const SocketName& name) {
    Connection* unused = nullptr;
    for (Connection& connection : connections.all) {
        if (connection.descriptor && !IsAlive(connection)) {
            connection = Connection();
        }
        if (!connection.descriptor) {
            unused = &connection;
        } else if (connection.name == name) {
            return &connection;
        }
    }
    return unused;
}

// A connection to the receiver of this name, if it is the same user's.
ScopedDescriptor Connect(const SocketName& name) {
    const RuntimeFolder folder = OpenRuntimeFolder(false);
    if (!folder.descriptor) {
        return {};
    }
    ScopedDescriptor connection(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const sockaddr_un address = folder.Address(name);
    ucred peer = {};
    socklen_t size = sizeof peer;
    const bool trusted = connection &&
                         connect(connection.Get(), reinterpret_cast<const sockaddr*>(&address),
                                 sizeof address) == 0 &&
                         getsockopt(connection.Get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
                         peer.uid == geteuid();
    return trusted ? std::move(connection) : ScopedDescriptor();
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
        // A queue counts as having room only when most of it is free, so the last try comes behind
        // the wait.
        late = !WaitForRoom(descriptor, deadline);
    }
}

// A descriptor of its own for one send, which needs no lock while it waits.
ScopedDescriptor Borrow(HWND window) {
    const std::lock_guard guard(lock);
    const Connection* connection = FindByHandle(window);
    return connection == nullptr
               ? ScopedDescriptor()
               : ScopedDescriptor(fcntl(connection->descriptor.Get(), F_DUPFD_CLOEXEC, 0));
}

// Whatever failed, the next send must not wait for it again.
void GiveUp(HWND window) {
    const std::lock_guard guard(lock);
    if (Connection* connection = FindByHandle(window)) {
        *connection = Connection();
    }
}

}  // namespace

HWND FindWindowW(const WCHAR* windowClass, const WCHAR* title) {
    SetLastError(ERROR_SUCCESS);
    if (windowClass == nullptr || title != nullptr) {
        return nullptr;
    }
    const SocketName name = SocketNameOf(windowClass);
    const std::lock_guard guard(lock);
    Connection* connection = FindByName(name);
    if (connection == nullptr) {
        return nullptr;
    }
    if (!connection->descriptor) {
        ScopedDescriptor made = Connect(name);
        if (!made) {
            return nullptr;
        }
        lastHandle = lastHandle == UINT32_MAX ? 1 : lastHandle + 1;
        *connection = {lastHandle, std::move(made), name};
    }
    return reinterpret_cast<HWND>(std::uintptr_t{connection->handle});
}

LRESULT SendMessageTimeoutW(HWND window, UINT message, WPARAM, LPARAM lParam, UINT,
                            UINT milliseconds, DWORD_PTR* result) {
    const auto* data = reinterpret_cast<const COPYDATASTRUCT*>(lParam);
    if (message != WM_COPYDATA || data == nullptr || data->lpData == nullptr || data->cbData == 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    const ScopedDescriptor connection = Borrow(window);
    const DWORD error = connection ? SendPacket(connection.Get(), *data, milliseconds)
                                   : ERROR_INVALID_WINDOW_HANDLE;
    if (error == ERROR_TIMEOUT || error == ERROR_INVALID_WINDOW_HANDLE) {
        GiveUp(window);
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
