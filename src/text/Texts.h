// The library's own texts. Their numbers are the numbers of the failures made from them.
#pragma once

#include "text/VelmarText.h"

namespace Texts {

extern const VelmarText volumeNotFound;
extern const VelmarText volumeLocked;
extern const VelmarText volumeFull;
extern const VelmarText filePathNotFound;
extern const VelmarText mediaNotFound;
extern const VelmarText invalidFilePath;
extern const VelmarText invalidMedia;
extern const VelmarText folderNotEmpty;
extern const VelmarText fileNotFound;
extern const VelmarText fileExists;
extern const VelmarText endOfFile;
extern const VelmarText copying;
extern const VelmarText allFiles;
extern const VelmarText accessDenied;
extern const VelmarText mmresultError;
extern const VelmarText hresultError;
extern const VelmarText win32Error;
extern const VelmarText errnoError;
extern const VelmarText unknownError;
extern const VelmarText runtimeError;
extern const VelmarText internalError;
extern const VelmarText memoryError;
extern const VelmarText empty;

}  // namespace Texts
