#include "brevikctl/trace/trace_socket.h"

#include <sys/epoll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstring>

#include "brevikctl/output/trouble.h"

#include "platform/posix/base/interrupted.h"
namespace {

// Connections that wait while the receiver is stopped. Each may hold a full queue of packets, so
// there are few; a sender beyond them finds no window.
constexpr int kBacklog = 64;

[[noreturn]] void FailOfSystem(const std::string& what) {
    Fail(what + ": " + std::strerror(errno));
}

// The first of the folders that can be trusted, made where it is missing.
RuntimeFolder FolderForSockets() {
    std::string refusals;
    for (const std::string& path : RuntimeFolderPaths()) {
        RuntimeFolder folder = OpenRuntimeFolder(path, true);
        if (folder.descriptor) {
            return folder;
        }
        refusals += (refusals.empty() ? "" : "\n") + folder.refusal;
    }
    Fail(refusals);
}

int MillisecondsUntil(std::chrono::steady_clock::time_point deadline) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}

// The process that sent this message, as the system vouches for it.
pid_t SenderOf(msghdr* message) {
    const cmsghdr* part = CMSG_FIRSTHDR(message);
    ucred credentials = {};
    if (part != nullptr && part->cmsg_level == SOL_SOCKET && part->cmsg_type == SCM_CREDENTIALS) {
        std::memcpy(&credentials, CMSG_DATA(part), sizeof credentials);
    }
    return credentials.pid;
}

}  // namespace

TraceSocket::TraceSocket(const WCHAR* windowClass, int stop)
    : name_(SocketNameOf(windowClass)), folder_(FolderForSockets()), stop_(stop) {
    const std::string lockName = std::string(name_.data()) + ".lock";
    lock_ = OpenDescriptor(lockName, O_RDWR | O_CREAT | O_NOFOLLOW, S_IRUSR | S_IWUSR,
                           folder_.descriptor.Get());
    if (!lock_) {
        FailOfSystem("the file " + folder_.path + "/" + lockName + " cannot be opened");
    }
    if (Uninterrupted([&] { return flock(lock_.Get(), LOCK_EX | LOCK_NB); }) != 0) {
        Fail("a viewer of this machine is already running for this user; end it first");
    }
    poller_ = ScopedDescriptor(epoll_create1(EPOLL_CLOEXEC));
    if (!poller_) {
        FailOfSystem("the viewer cannot wait for packets");
    }
    if (stop_ >= 0) {
        Watch(stop_);
    }
    // The lock is ours, so no other viewer listens at a socket that is still there.
    unlinkat(folder_.descriptor.Get(), name_.data(), 0);
    listener_ = ScopedDescriptor(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    // Accepted connections inherit it: each packet then names its sender, also after a fork.
    const int on = 1;
    const sockaddr_un address = folder_.Address(name_);
    if (!listener_ || setsockopt(listener_.Get(), SOL_SOCKET, SO_PASSCRED, &on, sizeof on) != 0 ||
        bind(listener_.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener_.Get(), kBacklog) != 0) {
        FailOfSystem("no socket can be made in " + folder_.path);
    }
    Watch(listener_.Get());
}

TraceSocket::~TraceSocket() {
    unlinkat(folder_.descriptor.Get(), name_.data(), 0);
}

void TraceSocket::Watch(int descriptor) {
    epoll_event event = {};
    event.events = EPOLLIN;
    event.data.fd = descriptor;
    if (epoll_ctl(poller_.Get(), EPOLL_CTL_ADD, descriptor, &event) != 0) {
        FailOfSystem("a connection cannot be watched");
    }
}

void TraceSocket::Accept() {
    ScopedDescriptor sender(
        accept4(listener_.Get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (sender) {
        const int descriptor = sender.Get();
        Watch(descriptor);
        senders_.emplace(descriptor, std::move(sender));
        return;
    }
    const bool isShort = errno == EMFILE || errno == ENFILE;
    if (isShort && !senders_.empty()) {
        // Until a sender leaves; the waiting connection would end every wait at once.
        epoll_ctl(poller_.Get(), EPOLL_CTL_DEL, listener_.Get(), nullptr);
        isAccepting_ = false;
    } else if (errno != EAGAIN && errno != EINTR && errno != ECONNABORTED) {
        FailOfSystem("a sender cannot connect");
    }
}

void TraceSocket::Drop(int sender) {
    senders_.erase(sender);
    if (!isAccepting_) {
        Watch(listener_.Get());
        isAccepting_ = true;
    }
}

bool TraceSocket::Take(int sender, Packet* packet) {
    // The length first, so that a packet of any size comes whole. An empty one looks like
    // the end of the connection, and no sender makes one.
    const ssize_t length = recv(sender, nullptr, 0, MSG_PEEK | MSG_TRUNC);
    if (length <= 0) {
        if (length == 0 || (errno != EAGAIN && errno != EINTR)) {
            Drop(sender);
        }
        return false;
    }
    packet->bytes.resize(static_cast<std::size_t>(length));
    iovec block = {packet->bytes.data(), packet->bytes.size()};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(ucred))];
    msghdr message = {};
    message.msg_iov = &block;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    if (recvmsg(sender, &message, MSG_CMSG_CLOEXEC) != length) {
        return false;
    }
    packet->sender = SenderOf(&message);
    return true;
}

bool TraceSocket::Receive(Packet* packet, int milliseconds) {
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    for (;;) {
        // One event at a time: the poller hands out those that are ready in turn.
        epoll_event event = {};
        const int timeout = milliseconds < 0 ? -1 : MillisecondsUntil(deadline);
        const int count = epoll_wait(poller_.Get(), &event, 1, timeout);
        if (count < 0 && errno != EINTR) {
            FailOfSystem("the viewer cannot wait for packets");
        }
        if (count < 0) {
            continue;
        }
        if (count == 0 || event.data.fd == stop_) {
            return false;
        }
        if (event.data.fd == listener_.Get()) {
            Accept();
        } else if (Take(event.data.fd, packet)) {
            return true;
        }
    }
}
