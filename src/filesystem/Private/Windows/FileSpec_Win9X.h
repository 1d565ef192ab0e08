// The file object of the Windows 9x family, which knows no prefix for long paths.
#pragma once

#include "filesystem/Private/Windows/FileSpec_Win32.h"

class FileSpec_Win9X : public FileSpec_Win32 {
  public:
    using FileSpec_Win32::FileSpec_Win32;

    // The stored path as it is.
    WideString GetLongPath() const override;
};
