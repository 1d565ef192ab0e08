#include "catalogue/RepairLock.h"

#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"
#include "platform/clock.h"
#include "platform/database_library.h"
#include "text/StringConversions.h"

namespace {

constexpr DWORD kLongestWait = 60000;
constexpr DWORD kPause = 20;

}  // namespace

// The lock is a file beside the database that its holder has open and shares with nobody. It stays
// when the lock is given up: to delete it would let two processes hold a file of that name each.
RepairLock::RepairLock(const std::string& databasePath) {
    const WideString path = NarrowToWide(databasePath + ".repair");
    MakeSharedFile(path.c_str());
    for (DWORD waited = 0;; waited += kPause) {
        file_ = CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file_ != INVALID_HANDLE_VALUE) {
            return;
        }
        if (GetLastError() != ERROR_SHARING_VIOLATION || waited >= kLongestWait) {
            throw SQLite3WrapperException(kSqliteBusy, "the damaged database cannot be locked");
        }
        Sleep(kPause);
    }
}

RepairLock::~RepairLock() {
    CloseHandle(file_);
}
