// Handles: numbers under which the system's objects are known to their users, from OpenHandle until
// CloseHandle. An object lives on while an operation still uses it. Safe on any thread.
#pragma once

#include <memory>

#include "platform/types.h"

namespace brevik::platform {

// Base of what a handle stands for.
class HandleObject {
  public:
    HandleObject() = default;
    HandleObject(const HandleObject&) = delete;
    HandleObject& operator=(const HandleObject&) = delete;
    virtual ~HandleObject() = default;
};

// A new handle on the object.
HANDLE OpenHandle(std::shared_ptr<HandleObject> object);

// Null for what is no handle.
std::shared_ptr<HandleObject> FindHandleObject(HANDLE handle);

// The object of a handle; null when it is none, or one on an object of another kind.
template <typename Object>
std::shared_ptr<Object> FindHandle(HANDLE handle) {
    return std::dynamic_pointer_cast<Object>(FindHandleObject(handle));
}

}  // namespace brevik::platform
