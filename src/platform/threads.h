// Thread-local slots, critical sections, and calls that must not be broken off half-way.
#pragma once

#include "platform/errors.h"
#include "platform/types.h"

#ifdef _WIN32

// Threads are not cancelled here, and no write raises a signal.
struct UnbrokenCall {
    UnbrokenCall() {}
};

#else

#include <pthread.h>
#include <signal.h>

namespace brevik::platform {

inline constexpr DWORD TLS_OUT_OF_INDEXES = 0xFFFFFFFF;

// A new slot that is null on every thread, or TLS_OUT_OF_INDEXES with error 1450.
PLATFORM_API DWORD TlsAlloc();
PLATFORM_API BOOL TlsFree(DWORD slot);

// Null with error 0 where the thread has stored nothing.
PLATFORM_API void* TlsGetValue(DWORD slot);
PLATFORM_API BOOL TlsSetValue(DWORD slot, void* value);

// A lock that its holder may take again.
struct CRITICAL_SECTION {
    pthread_mutex_t mutex;
};

PLATFORM_API void InitializeCriticalSection(CRITICAL_SECTION* section);
PLATFORM_API void DeleteCriticalSection(CRITICAL_SECTION* section);
PLATFORM_API void EnterCriticalSection(CRITICAL_SECTION* section);
PLATFORM_API void LeaveCriticalSection(CRITICAL_SECTION* section);

class NoCancellation {
  public:
    NoCancellation() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &previous_); }
    NoCancellation(const NoCancellation&) = delete;
    NoCancellation& operator=(const NoCancellation&) = delete;
    ~NoCancellation() { pthread_setcancelstate(previous_, nullptr); }

  private:
    int previous_ = PTHREAD_CANCEL_ENABLE;
};

// Keeps from the host a signal that a failing write raises, until the object ends: SIGPIPE of a
// pipe without a reader, SIGXFSZ beyond the process's limit on the size of files. The write fails
// with an error number all the same.
class PLATFORM_API HeldSignal {
  public:
    // Without need for it the object does nothing.
    HeldSignal(int signal, bool isNeeded);
    HeldSignal(const HeldSignal&) = delete;
    HeldSignal& operator=(const HeldSignal&) = delete;

    // One that came meanwhile is taken back; one that was pending before is the host's.
    ~HeldSignal();

  private:
    bool isNeeded_;
    bool wasPending_ = false;
    sigset_t signal_ = {};
    sigset_t previous_ = {};
};

// Whether a write can raise SIGXFSZ.
PLATFORM_API bool IsFileSizeLimited();

// Keeps from the calling thread, until the object ends, what would break a call off half-way: a
// cancellation, which would unwind through code that lets no exception pass, and the signal of a
// write beyond the process's limit on the size of files, which fails all the same.
struct UnbrokenCall {
    NoCancellation uncancelled;
    HeldSignal withinLimit{SIGXFSZ, IsFileSizeLimited()};
};

}  // namespace brevik::platform

#endif
