#include "platform/errors.h"

namespace brevik::platform {
namespace {

thread_local DWORD lastError = ERROR_SUCCESS;

}  // namespace

DWORD GetLastError() {
    return lastError;
}

void SetLastError(DWORD code) {
    lastError = code;
}

}  // namespace brevik::platform
