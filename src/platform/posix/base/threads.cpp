#include "platform/threads.h"

#include <limits.h>

#include <type_traits>

#include "platform/posix/base/host_errors.h"
#include "platform/posix/base/last_error.h"

namespace brevik::platform {
namespace {

// A slot is a key of the host's own, which starts null on every thread and again when its number
// comes back after being freed. It has no destructor: what it points at belongs to its owner.
static_assert(std::is_same_v<pthread_key_t, DWORD>);

}  // namespace

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

}  // namespace brevik::platform
