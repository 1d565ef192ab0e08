// The library's own texts. Their numbers are the numbers of the failures made from them.
#pragma once

#include "text/VelmarText.h"

namespace Texts {

inline const VelmarText volumeNotFound(-10013, "volume not found");
inline const VelmarText volumeLocked(-10012, "volume locked");
inline const VelmarText volumeFull(-10011, "volume full");
inline const VelmarText filePathNotFound(-10010, "file path not found");
inline const VelmarText mediaNotFound(-10009, "media not found");
inline const VelmarText invalidFilePath(-10008, "invalid file path");
inline const VelmarText invalidMedia(-10007, "invalid media");
inline const VelmarText folderNotEmpty(-10006, "folder not empty");
inline const VelmarText fileNotFound(-10005, "file not found");
inline const VelmarText fileExists(-10004, "file exists");
inline const VelmarText endOfFile(-10003, "end of file");
inline const VelmarText copying(-10002, "copying %0");
inline const VelmarText allFiles(-10001, "all files");
inline const VelmarText accessDenied(-10000, "access denied");
inline const VelmarText mmresultError(-15, "operating system error: MMRESULT = %0");
inline const VelmarText hresultError(-14, "operating system error: HRESULT = %0 - %1");
inline const VelmarText win32Error(-12, "operating system error: number = %0 - %1");
inline const VelmarText errnoError(-11, "operating system error: number = %0 - %1");
inline const VelmarText unknownError(-4, "unknown error: %0");
inline const VelmarText runtimeError(-3, "runtime error: %0");
inline const VelmarText internalError(-2, "internal software error: %0, line %1");
inline const VelmarText memoryError(-1, "memory allocation error");
inline const VelmarText empty(0, "");

}  // namespace Texts
