// Thread-local slots and critical sections.
#pragma once

#include "platform/errors.h"
#include "platform/types.h"

#ifndef _WIN32

#include <pthread.h>

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

}  // namespace brevik::platform

#endif
