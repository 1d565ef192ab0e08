#include "modules/DllPathManager.h"

#include "platform/folders.h"

namespace BrevikUtils {
namespace {

WideString CurrentFolder() {
    WideString path(GetCurrentDirectoryW(0, nullptr), WCHAR{});
    const DWORD length = GetCurrentDirectoryW(static_cast<DWORD>(path.size()), path.data());
    // Longer than announced: another thread changed it in between.
    path.resize(length < path.size() ? length : 0);
    return path;
}

}  // namespace

DllPathManager::DllPathManager(const WideString& folder) {
    if (!folder.empty()) {
        previous_ = CurrentFolder();
        SetCurrentDirectoryW(folder.c_str());
    }
}

DllPathManager::~DllPathManager() {
    if (!previous_.empty()) {
        SetCurrentDirectoryW(previous_.c_str());
    }
}

}  // namespace BrevikUtils
