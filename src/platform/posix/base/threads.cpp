#include "platform/threads.h"

#include <limits.h>

#include <cerrno>
#include <type_traits>

namespace brevik::platform {
namespace {

// A slot is a key of the host's own, which starts null on every thread and again when its number
// comes back after being freed. It has no destructor: what it points at belongs to its owner.
static_assert(std::is_same_v<pthread_key_t, DWORD>);

BOOL Answer(int error) {
    if (error == 0) {
        return TRUE;
    }
    SetLastError(error == ENOMEM ? ERROR_NOT_ENOUGH_MEMORY : ERROR_INVALID_PARAMETER);
    return FALSE;
}

}  // namespace

DWORD TlsAlloc() {
    pthread_key_t key = 0;
    if (pthread_key_create(&key, nullptr) != 0) {
        SetLastError(ERROR_NO_SYSTEM_RESOURCES);
        return TLS_OUT_OF_INDEXES;
    }
    return key;
}

BOOL TlsFree(DWORD slot) {
    return Answer(pthread_key_delete(slot));
}

void* TlsGetValue(DWORD slot) {
    // A null value is no failure, so success has to be told by the error number.
    SetLastError(slot < PTHREAD_KEYS_MAX ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER);
    return pthread_getspecific(slot);
}

BOOL TlsSetValue(DWORD slot, void* value) {
    return Answer(pthread_setspecific(slot, value));
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
