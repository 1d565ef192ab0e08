// The receiving end of a window class: what a viewer program binds, and FindWindowW finds.
//
// The owner of the object is the only receiver of its class for this user. Any number of senders
// connect; each block that one sends with WM_COPYDATA arrives as one packet.
//
// Threads: one thread receives. Wake may be called on any thread and in a signal handler.
#pragma once

#include <sys/types.h>

#include <map>
#include <string>

#include "platform/posix/runtime_folder.h"
#include "platform/posix/scoped_descriptor.h"
#include "platform/types.h"

namespace brevik::platform {

class PLATFORM_API TraceSocket {
  public:
    struct Packet {
        pid_t sender = 0;  // the process that sent it; 0 when it cannot be told
        std::string bytes;
    };

    // Binds the class. What a receiver that died has left behind is replaced. Throws
    // std::runtime_error, with a text for the user, when a receiver is running already, when the
    // runtime folder cannot be trusted, or when the system refuses.
    explicit TraceSocket(const WCHAR* windowClass);
    TraceSocket(const TraceSocket&) = delete;
    TraceSocket& operator=(const TraceSocket&) = delete;

    // Ends the connections and removes the socket's file. Its lock file stays.
    ~TraceSocket();

    // Waits for the next packet, at most `milliseconds` (-1: without a bound), and takes turns
    // between senders that have one. False when the time ran out or Wake was called. Throws
    // std::runtime_error when the system runs short.
    bool Receive(Packet* packet, int milliseconds);

    // Ends the Receive that is under way, else the next one.
    void Wake() const noexcept;

  private:
    void Bind();
    void Watch(int descriptor);
    void Accept();
    bool Take(int sender, Packet* packet);
    void Drop(int sender);

    SocketName name_;
    RuntimeFolder folder_;
    ScopedDescriptor lock_;  // locked for the life of the object
    ScopedDescriptor poller_;
    ScopedDescriptor wake_;
    ScopedDescriptor listener_;
    bool accepting_ = false;  // false while descriptors have run out
    std::map<int, ScopedDescriptor> senders_;
};

}  // namespace brevik::platform
