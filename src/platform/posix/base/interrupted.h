// Calls of the host that a signal may interrupt: signals are the host program's, whose handlers
// need not have such calls go on.
#pragma once

#include <cerrno>

namespace brevik::platform {

// The call's result, which is negative with errno on failure, but never because of a signal.
template <typename Call>
auto Uninterrupted(const Call& call) {
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

}  // namespace brevik::platform
