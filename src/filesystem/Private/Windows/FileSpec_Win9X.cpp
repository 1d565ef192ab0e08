#include "filesystem/Private/Windows/FileSpec_Win9X.h"

WideString FileSpec_Win9X::GetLongPath() const {
    return GetStoredPath();
}
