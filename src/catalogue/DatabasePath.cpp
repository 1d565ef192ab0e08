// Where the record database lies.

#include <mutex>
#include <string>

#include "catalogue/SQLCertificate.h"
#include "catalogue/SharedFolder.h"
#include "platform/files.h"
#include "platform/folders.h"
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

Utf8String FindDatabasePath() {
    WideString path = CommonDataFolder();
    if (path.empty()) {
        return {};
    }
    path += WIDE("\\Velmar");
    if (!PathFileExistsW(path.c_str())) {
        CreateSharedFolder(path);
    }
    return WideToUtf8(path + WIDE("\\qzc13.db"));
}

}  // namespace

std::string SQLCertificate::SqlDatabasePath() {
    static std::mutex& mutex = *new std::mutex;  // never destroyed, as what it guards
    static Utf8String& known = *new Utf8String;
    const std::lock_guard lock(mutex);
    if (known.empty()) {
        known = FindDatabasePath();
        UTrace::Info("SqlDatabasePath result = %s)", Utf8ToNarrow(known).c_str());
    }
    return Utf8ToNarrow(known);
}
