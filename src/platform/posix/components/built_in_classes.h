// The component classes that the system has itself. Each function makes an object with its first
// reference and gives the interface asked for; on failure the out pointer is null.
#pragma once

#include "platform/component_model.h"

namespace brevik::platform {

HRESULT CreateShellLink(REFIID iid, void** object);

}  // namespace brevik::platform
