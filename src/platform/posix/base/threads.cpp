#include "platform/threads.h"

#include <limits.h>
#include <sys/resource.h>

#include <ctime>
#include <type_traits>

#include "platform/posix/base/host_errors.h"
#include "platform/posix/base/last_error.h"

namespace brevik::platform {
namespace {

// A slot is a key of the host's own, which starts null on every thread and again when its number
// comes back after being freed. It has no destructor: what it points at belongs to its owner.
static_assert(std::is_same_v<pthread_key_t, DWORD>);

thread_local DWORD lastError = ERROR_SUCCESS;

}  // namespace

DWORD GetLastError() {
    return lastError;
}

void SetLastError(DWORD code) {
    lastError = code;
}

DWORD TlsAlloc() {
    pthread_key_t key = 0;
    if (pthread_key_create(&key, nullptr) != 0) {
        return Fail(ERROR_NO_SYSTEM_RESOURCES, TLS_OUT_OF_INDEXES);
    }
    return key;
}

BOOL TlsFree(DWORD slot) {
    const int error = pthread_key_delete(slot);
    return Answer(error == 0 ? NO_ERROR : ErrorFromHost(error));
}

void* TlsGetValue(DWORD slot) {
    // A null value is no failure, so success has to show in the error number.
    SetLastError(slot < PTHREAD_KEYS_MAX ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER);
    return pthread_getspecific(slot);
}

BOOL TlsSetValue(DWORD slot, void* value) {
    const int error = pthread_setspecific(slot, value);
    return Answer(error == 0 ? NO_ERROR : ErrorFromHost(error));
}

void InitializeCriticalSection(CRITICAL_SECTION* section) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&section->mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

void DeleteCriticalSection(CRITICAL_SECTION* section) {
    pthread_mutex_destroy(&section->mutex);
}

void EnterCriticalSection(CRITICAL_SECTION* section) {
    pthread_mutex_lock(&section->mutex);
}

void LeaveCriticalSection(CRITICAL_SECTION* section) {
    pthread_mutex_unlock(&section->mutex);
}

HeldSignal::HeldSignal(int signal, bool isNeeded) : isNeeded_(isNeeded) {
    if (!isNeeded_) {
        return;
    }
    sigset_t pending;
    sigpending(&pending);
    wasPending_ = sigismember(&pending, signal) == 1;
    sigemptyset(&signal_);
    sigaddset(&signal_, signal);
    pthread_sigmask(SIG_BLOCK, &signal_, &previous_);
}

HeldSignal::~HeldSignal() {
    if (!isNeeded_) {
        return;
    }
    constexpr timespec kNow = {0, 0};
    while (!wasPending_ && sigtimedwait(&signal_, nullptr, &kNow) > 0) {
    }
    pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
}

bool IsFileSizeLimited() {
    rlimit limit;
    return getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY;
}

}  // namespace brevik::platform
