// Texts for error numbers: the system's own table, message libraries, and the run-time library's.
//
// Off Windows a message library is a shared object that exports `BrevikMessageTable`, declared
// here.
#pragma once

#include "platform/errors.h"
#include "platform/modules.h"
#include "platform/types.h"

#ifdef _WIN32

#include <cstring>

#else

namespace brevik::platform {

inline constexpr DWORD FORMAT_MESSAGE_ALLOCATE_BUFFER = 0x100;
inline constexpr DWORD FORMAT_MESSAGE_IGNORE_INSERTS = 0x200;
inline constexpr DWORD FORMAT_MESSAGE_FROM_HMODULE = 0x800;
inline constexpr DWORD FORMAT_MESSAGE_FROM_SYSTEM = 0x1000;

// One row of a message library; the text is UTF-8. A row with a null text ends the table.
struct MessageTableRow {
    DWORD code;
    const char* text;
};

// The form of the C function "BrevikMessageTable" that a message library exports.
using MessageTableFunction = const MessageTableRow* (*)();

// The text for `code`, ending in CR LF: from the module `source`, or with
// FORMAT_MESSAGE_FROM_SYSTEM from the system's table. `buffer` points at a WCHAR* that receives a
// block to free with LocalFree. The length without the NUL; 0 with ERROR_MR_MID_NOT_FOUND where
// there is no text.
//
// REQUIRES: FORMAT_MESSAGE_ALLOCATE_BUFFER, and one of the two sources; of a module also
// FORMAT_MESSAGE_IGNORE_INSERTS.
PLATFORM_API DWORD FormatMessageW(DWORD flags, const void* source, DWORD code, DWORD language,
                                  WCHAR* buffer, DWORD size, void* arguments);

// Frees a block of the system; null is legal. Always null.
PLATFORM_API HLOCAL LocalFree(HLOCAL block);

// The run-time library's text for an error number. 0 on success.
PLATFORM_API int strerror_s(char* buffer, std::size_t size, int code);

}  // namespace brevik::platform

#endif
