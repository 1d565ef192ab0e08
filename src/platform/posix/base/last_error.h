// How an operation answers: with a result, and on failure with the thread's last error.
#pragma once

#include "platform/errors.h"
#include "platform/types.h"

namespace brevik::platform {

// Sets the last error, and returns the result of an operation that failed.
template <typename Result = BOOL>
Result Fail(DWORD error, Result result = {}) {
    SetLastError(error);
    return result;
}

// TRUE for NO_ERROR, which leaves the last error as it was; else FALSE with that error.
inline BOOL Answer(DWORD error) {
    return error == NO_ERROR ? TRUE : Fail(error);
}

}  // namespace brevik::platform
