#include "catalogue/records/RepairLock.h"

#include "catalogue/RecordGathering.h"
#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"
#include "platform/clock.h"
#include "platform/database_library.h"
#include "text/StringConversions.h"

namespace {

constexpr DWORD kPause = 20;

std::int32_t CodeOf(DWORD error) {
    switch (error) {
        case ERROR_SHARING_VIOLATION:
            return kSqliteBusy;
        case ERROR_FILE_NOT_FOUND:  // the folder takes no new files
        case ERROR_ACCESS_DENIED:
        case ERROR_WRITE_PROTECT:
            return kSqlitePermission;
        default:
            return kSqliteCannotOpen;
    }
}

}  // namespace

// The lock is a file beside the database that its holder has open without sharing. It stays when
// the lock is given up: if it were deleted, two processes could each hold a file of that name.
RepairLock::RepairLock(const std::string& databasePath) {
    const WideString path = NarrowToWide(databasePath + ".repair");
    MakeSharedFile(path.c_str());
    const DWORD longestWait = RecordGathering::LongestWait();
    for (const DWORD start = GetTickCount();;) {
        file_ = CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file_ != INVALID_HANDLE_VALUE) {
            return;
        }
        const DWORD error = GetLastError();
        if (error != ERROR_SHARING_VIOLATION || GetTickCount() - start >= longestWait) {
            throw SQLite3WrapperException(CodeOf(error), "it cannot be locked");
        }
        Sleep(kPause);
    }
}

RepairLock::~RepairLock() {
    CloseHandle(file_);
}
