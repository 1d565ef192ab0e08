// The process's environment, as far as it may be trusted.
#pragma once

#include <cstdlib>

namespace brevik::platform {

// The value of an environment variable; null when it is unset, empty, or the process runs with more
// rights than the user has who started it.
inline const char* EnvironmentVariable(const char* name) {
    const char* value = secure_getenv(name);
    return value != nullptr && *value != '\0' ? value : nullptr;
}

}  // namespace brevik::platform
