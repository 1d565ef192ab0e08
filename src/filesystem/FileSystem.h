// Start and stop of the file system library, and the state that it keeps for the process.
//
// Everything else in the library requires that FileSystem_Start has run. Any thread.
#pragma once

#include <exception>

#include "filesystem/FolderSpec.h"
#include "platform/modules.h"
#include "text/CriticalSection.h"

// Makes the platform table and the class factory where there is none yet, and visits the file of
// `module` (null: the host program). A failure raises a FileException and leaves the library not
// started. Threads may call it at once; nothing is locked, since what is loaded may call it again.
void FileSystem_Start(HMODULE module);

// Deletes the temporary folder, and forgets the volumes and the platform table. The class factory
// stays. Until the next start no operation that reaches the platform may be called, and no other
// thread may be in the library meanwhile.
void FileSystem_Stop();

namespace FileSystem {

// Whether a start has come to its end since the last stop.
bool IsStarted();

// FileSystem_Start for the host program, unless the library is started. Returns the failure, or
// null. After a FileException, as for a host on a drive that the machine lacks, other paths work.
std::exception_ptr EnsureStarted() noexcept;

// The module given to the last start; null for the host program's file.
HMODULE GetModule();

// The process's temporary folder, null until there is one. Hold GetTempFolderLock() while using
// the reference.
FolderSpec& GetTempFolderState();
BaseCriticalSection& GetTempFolderLock();

}  // namespace FileSystem
