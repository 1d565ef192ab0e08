#include "text/Texts.h"

namespace Texts {

const VelmarText volumeNotFound(-10013, "volume not found");
const VelmarText volumeLocked(-10012, "volume locked");
const VelmarText volumeFull(-10011, "volume full");
const VelmarText filePathNotFound(-10010, "file path not found");
const VelmarText mediaNotFound(-10009, "media not found");
const VelmarText invalidFilePath(-10008, "invalid file path");
const VelmarText invalidMedia(-10007, "invalid media");
const VelmarText folderNotEmpty(-10006, "folder not empty");
const VelmarText fileNotFound(-10005, "file not found");
const VelmarText fileExists(-10004, "file exists");
const VelmarText endOfFile(-10003, "end of file");
const VelmarText copying(-10002, "copying %0");
const VelmarText allFiles(-10001, "all files");
const VelmarText accessDenied(-10000, "access denied");
const VelmarText mmresultError(-15, "operating system error: MMRESULT = %0");
const VelmarText hresultError(-14, "operating system error: HRESULT = %0 - %1");
const VelmarText win32Error(-12, "operating system error: number = %0 - %1");
const VelmarText errnoError(-11, "operating system error: number = %0 - %1");
const VelmarText unknownError(-4, "unknown error: %0");
const VelmarText runtimeError(-3, "runtime error: %0");
const VelmarText internalError(-2, "internal software error: %0, line %1");
const VelmarText memoryError(-1, "memory allocation error");
const VelmarText empty(0, "");

}  // namespace Texts
