// How the copying of a file begins to be reported.
#pragma once

#include "filesystem/FilePath.h"
#include "filesystem/ticklers/Tickler.h"

namespace FileSystem {

// Sets the tickler to the sink's own range, and reports 0.0 and the message "copying" with the
// path.
void BeginCopy(Tickler& tickler, const FilePath& source);

}  // namespace FileSystem
