// Folders of the running program, and the search for a library beside it.
//
// Folders are wide Windows paths without a trailing backslash, in lower case unless stated; empty
// for none. Nothing is thrown but std::bad_alloc, and nothing reported. Any thread.
#pragma once

#include "platform/types.h"

// The folder of the host process's executable.
WideString GetProcessFolder();

// The folder of the parent process's executable.
WideString GetParentProcessFolder();

// The first folder that holds a readable file of this name: the host's, its parent's, one of the
// system's search order, and the suite's shared library folder in the common program files.
WideString FindLibraryFolder(const WideString& fileName);

// The same as the system spells it, to load from: in lower case it may be another folder.
WideString FindSpelledLibraryFolder(const WideString& fileName);
