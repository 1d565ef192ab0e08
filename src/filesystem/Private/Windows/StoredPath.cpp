#include "filesystem/Private/Windows/StoredPath.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "filesystem/Private/Windows/API.h"
#include "platform/text.h"

namespace FileSystem_Win32::StoredPath {
namespace {

using View = std::basic_string_view<WCHAR>;

constexpr WCHAR kSeparator = WIDE('\\');
constexpr View kLongPrefix = WIDE("\\\\?\\");
constexpr View kLongSharePrefix = WIDE("\\\\?\\UNC\\");

// What no path may hold among the units below 128, the colon left out.
constexpr auto kBanned = [] {
    std::array<bool, 128> table = {};
    std::fill_n(table.begin(), 0x20, true);
    for (const WCHAR unit : View(WIDE("\"*<>?|"))) {
        table[unit] = true;
    }
    return table;
}();

void StripPrefix(WideString& path) {
    if (path.starts_with(kLongSharePrefix)) {
        path.erase(2, kLongSharePrefix.size() - 2);
    } else if (path.starts_with(kLongPrefix)) {
        path.erase(0, kLongPrefix.size());
    }
}

bool IsDriveLetter(WCHAR unit) {
    const auto upper = towupper(unit);
    return upper >= WIDE('A') && upper <= WIDE('Z');
}

bool IsWellFormed(const WideString& path) {
    for (std::size_t i = 0; i < path.size(); ++i) {
        const WCHAR unit = path[i];
        if (unit == kSeparator) {
            // A share path begins with two.
            if (i > 1 && path[i - 1] == kSeparator) {
                return false;
            }
        } else if (unit == WIDE(':')) {
            if (i != 1 || !IsDriveLetter(path[0])) {
                return false;
            }
        } else if (unit < kBanned.size() && kBanned[unit]) {
            return false;
        }
    }
    return true;
}

// Empty on failure. Asked again where the length has changed in between:
// another thread may change the current folder.
WideString MakeFullPath(const WideString& path) {
    API& api = *GetApi();
    WideString full;
    DWORD length = api.GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    while (length > full.size()) {
        full.resize(length);
        length = api.GetFullPathNameW(path.c_str(), length, full.data(), nullptr);
    }
    full.resize(length);
    return full;
}

// Appends the separator that the root of a share ends in where the path has
// none. False for a path without a root: one of a device, or a server alone.
bool FindRoot(WideString& path, WideString& root, bool& unc) {
    if (path.size() > 2 && path[1] == WIDE(':') && path[2] == kSeparator) {
        root = path.substr(0, 3);
        unc = false;
        return true;
    }
    const bool isShare =
        path.size() > 2 && path[0] == kSeparator && path[1] == kSeparator && path[2] != WIDE('.');
    const std::size_t serverEnd = isShare ? path.find(kSeparator, 2) : WideString::npos;
    if (serverEnd == WideString::npos) {
        return false;
    }
    const std::size_t shareEnd = path.find(kSeparator, serverEnd + 1);
    if (shareEnd == WideString::npos) {
        path += kSeparator;
        root = path;
    } else {
        root = path.substr(0, shareEnd + 1);
    }
    unc = true;
    return true;
}

}  // namespace

DWORD Parse(WideString& path, WideString& root, bool& unc) {
    std::replace(path.begin(), path.end(), WIDE('/'), kSeparator);
    StripPrefix(path);
    if (!IsWellFormed(path)) {
        return ERROR_BAD_PATHNAME;
    }
    WideString full = MakeFullPath(path);
    if (full.empty()) {
        // For the empty path, which a bare prefix leaves, the platform reports no
        // error.
        return path.empty() ? ERROR_BAD_PATHNAME : GetLastError();
    }
    path = std::move(full);
    StripPrefix(path);
    if (!FindRoot(path, root, unc) || path.back() == WIDE(' ')) {
        return ERROR_BAD_PATHNAME;
    }
    if (path.back() == kSeparator && path != root) {
        path.pop_back();
    }
    return ERROR_SUCCESS;
}

bool HasLongerName(const WideString& path, const WideString& root, std::size_t maximum) {
    for (std::size_t begin = root.size(); begin < path.size();) {
        const std::size_t end = std::min(path.find(kSeparator, begin), path.size());
        if (end - begin > maximum) {
            return true;
        }
        begin = end + 1;
    }
    return false;
}

}  // namespace FileSystem_Win32::StoredPath
