// The rules by which the text of a path becomes the stored path of a file
// object.
#pragma once

#include "platform/errors.h"
#include "platform/types.h"

namespace FileSystem_Win32::StoredPath {

// Parses the text in `path` into the stored path, its root, and whether that is
// the root of a share. ERROR_SUCCESS, or the code of the failure; `path` is
// then as far as the parsing has come.
DWORD Parse(WideString& path, WideString& root, bool& unc);

// Whether a component after the root has more units than `maximum`.
bool HasLongerName(const WideString& path, const WideString& root, std::size_t maximum);

}  // namespace FileSystem_Win32::StoredPath
