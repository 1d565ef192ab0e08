// The modules of the system that are no files here: the platform library answers for them itself.
#pragma once

#include <string_view>

#include "platform/modules.h"

namespace brevik::platform {

struct SystemFunction {
    const char* name;
    FARPROC (*address)();
};

struct SystemModule {
    std::u16string_view path;
    std::u16string_view name;
    SystemFunction function;
};

// The module of this bare name or path, with its extension, in any case; null when there is none.
const SystemModule* FindSystemModule(std::u16string_view name);

// The module's handle, which is never counted, and the module of such a handle; null when the
// handle is none of these.
HMODULE HandleOf(const SystemModule* module);
const SystemModule* FindSystemModule(HMODULE handle);

}  // namespace brevik::platform
