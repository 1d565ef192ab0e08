// Where the record database lies.
#pragma once

#include "text/StringConversions.h"

// The folder, a Windows path, whether it is there or not; nothing is made. Empty when the system
// has no place for it. Any thread.
WideString FindDatabaseFolder();

// The database file in its folder.
WideString DatabaseFileIn(const WideString& folder);
