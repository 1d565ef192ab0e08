#include "modules/DllPathManager.h"

#include <utility>

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
    if (folder.empty()) {
        return;
    }
    // A current folder that no path can name could not be put back, so it is not left.
    WideString current = CurrentFolder();
    if (!current.empty() && SetCurrentDirectoryW(current.c_str())) {
        SetCurrentDirectoryW(folder.c_str());
        previous_ = std::move(current);
    }
}

DllPathManager::~DllPathManager() {
    if (!previous_.empty()) {
        SetCurrentDirectoryW(previous_.c_str());
    }
}

}  // namespace BrevikUtils
