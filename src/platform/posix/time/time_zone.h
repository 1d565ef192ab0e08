// The zone of the machine, by the host's rules: those of the variable TZ, which may change while
// the process runs, else those of /etc/localtime. Safe on any thread.
#pragma once

#include <time.h>

#include "platform/clock.h"

namespace brevik::platform {

// Minutes by which local time is ahead of Coordinated Universal Time at this moment.
PLATFORM_API int ZoneOffsetAt(time_t moment);

// What GetTimeZoneInformation answers at this moment.
PLATFORM_API DWORD ZoneInformationAt(time_t moment, TIME_ZONE_INFORMATION* information);

}  // namespace brevik::platform
