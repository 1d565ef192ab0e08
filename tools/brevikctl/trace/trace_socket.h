// The receiving end of a window class: what a viewer program binds, and FindWindowW finds.
//
// The owner of the object is the only receiver of its class for this user. Any number of senders
// connect; each block that one sends with WM_COPYDATA arrives as one packet.
#pragma once

#include <sys/types.h>

#include <map>
#include <string>

#include "platform/posix/base/scoped_descriptor.h"
#include "platform/posix/trace/runtime_folder.h"
#include "platform/types.h"

class TraceSocket {
  public:
    struct Packet {
        pid_t sender = 0;  // the process that sent it; 0 when it is not known
        std::string bytes;
    };

    // Binds the class. What a receiver that died has left is replaced. Fails when a receiver is
    // running already, when the runtime folder cannot be trusted, or when the system refuses.
    // Waiting ends when the descriptor `stop` is readable, where there is one.
    explicit TraceSocket(const WCHAR* windowClass, int stop = -1);
    TraceSocket(const TraceSocket&) = delete;
    TraceSocket& operator=(const TraceSocket&) = delete;

    // Ends the connections and removes the socket's file. Its lock file stays.
    ~TraceSocket();

    // Waits for the next packet, at most `milliseconds` (-1: without a bound), and takes turns
    // between senders that have one. False when the time ran out or `stop` was readable. Fails when
    // the system runs short.
    bool Receive(Packet* packet, int milliseconds);

  private:
    void Watch(int descriptor);
    void Accept();
    bool Take(int sender, Packet* packet);
    void Drop(int sender);

    SocketName name_;
    RuntimeFolder folder_;
    int stop_;
    ScopedDescriptor lock_;  // locked for the life of the object
    ScopedDescriptor poller_;
    ScopedDescriptor listener_;
    bool isAccepting_ = true;  // false while descriptors have run out
    std::map<int, ScopedDescriptor> senders_;
};
