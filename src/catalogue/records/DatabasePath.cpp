#include "catalogue/records/DatabasePath.h"

#include <mutex>
#include <string>

#include "catalogue/records/SQLCertificate.h"
#include "catalogue/records/SharedFolder.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/never_destroyed.h"
#include "text/StringConversions.h"
#include "trace/UTrace.h"

namespace {

// Empty when the system has neither folder.
WideString CommonDataFolder() {
    WCHAR path[MAX_PATH] = {};
    if (SHGetSpecialFolderPathW(nullptr, path, CSIDL_COMMON_APPDATA, FALSE)) {
        return path;
    }
    const UINT length = GetWindowsDirectoryW(path, MAX_PATH);
    return length > 0 && length < MAX_PATH ? path : WideString();
}

}  // namespace

WideString FindDatabaseFolder() {
    const WideString data = CommonDataFolder();
    return data.empty() ? data : data + WIDE("\\Velmar");
}

WideString DatabaseFileIn(const WideString& folder) {
    return folder + WIDE("\\qzc13.db");
}

std::string SQLCertificate::SqlDatabasePath() {
    static NeverDestroyed<std::mutex> mutex;
    static NeverDestroyed<Utf8String> known;
    const std::lock_guard lock(*mutex);
    if (!known->empty()) {
        return Utf8ToNarrow(*known);
    }
    const WideString folder = FindDatabaseFolder();
    if (!folder.empty() && !PathFileExistsW(folder.c_str())) {
        CreateSharedFolder(folder);
    }
    const Utf8String path = folder.empty() ? Utf8String() : WideToUtf8(DatabaseFileIn(folder));
    UTrace::Info("SqlDatabasePath result = %s)", Utf8ToNarrow(path).c_str());
    // A folder that could not be made now is made by a later call.
    if (PathFileExistsW(folder.c_str())) {
        *known = path;
    }
    return Utf8ToNarrow(path);
}
