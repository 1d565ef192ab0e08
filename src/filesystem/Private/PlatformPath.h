// Paths that the platform writes into a buffer.
#pragma once

#include "filesystem/FileException.h"
#include "filesystem/FilePath.h"
#include "platform/errors.h"
#include "platform/modules.h"

namespace FileSystem {

// What `ask` writes when it is called with a buffer's size and the buffer; it returns the length
// without the NUL. A length of 0 raises the platform's last error, with an empty path.
template <typename Ask>
FilePath AskForPath(const Ask& ask) {
    constexpr DWORD kLongest = 0x8000;
    WideString buffer(kLongest, WIDE('\0'));
    const DWORD length = ask(kLongest, buffer.data());
    if (length == 0) {
        ThrowFileError(GetLastError(), {});
    }
    if (length >= kLongest) {
        ThrowFileError(ERROR_INSUFFICIENT_BUFFER, {});
    }
    buffer.resize(length);
    return FilePath(buffer);
}

// The file of a module; null for the host program.
inline FilePath PathOfModule(HMODULE module) {
    return AskForPath(
        [module](DWORD size, WCHAR* buffer) { return GetModuleFileNameW(module, buffer, size); });
}

}  // namespace FileSystem
