// The process's volumes: one Volume_IF for each medium that a file object was made on, so that
// volumes can be compared by identity. Any thread.
#pragma once

#include "filesystem/VolumeInfo.h"
#include "filesystem/Volume_IF.h"
#include "text/SharedHandle.h"

namespace FileSystem_Win32 {

// The volume of this description. One that is not registered yet is made where `create`, else the
// result is null.
SharedHandle<Volume_IF> FindVolume(const VolumeInfo& info, bool create);

// Forgets all volumes; file objects keep theirs alive.
void ClearVolumes();

}  // namespace FileSystem_Win32
