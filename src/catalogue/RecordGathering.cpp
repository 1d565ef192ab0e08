#include "catalogue/RecordGathering.h"

#include <algorithm>
#include <iterator>
#include <new>

#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"
#include "catalogue/SQLite3Wrapper/SqliteLibrary.h"
#include "filesystem/FileException.h"
#include "platform/clock.h"
#include "platform/errors.h"
#include "text/SystemException.h"

namespace {

constexpr DWORD kLongestWait = 60000;

// Of a call that took long without having waited in vain, such as one with many imports.
constexpr DWORD kShortestWait = 500;

// What the next try will meet as well. Any other failure of the database may pass: a library that
// is short of memory may report anything.
constexpr std::int32_t kLastingFailures[] = {
    kSqlitePermission, kSqliteReadOnly, kSqliteCorrupt, kSqliteNotADatabase,
    kSqliteEmpty,      kWrapperError,   kSqliteOk};

// What may pass of the operating system's: rights, memory, descriptors, other programs and the
// disk. What is absent or malformed will be at the next try, and a network that is down may take
// long to answer.
constexpr DWORD kPassingErrors[] = {
    ERROR_TOO_MANY_OPEN_FILES, ERROR_ACCESS_DENIED, ERROR_NOT_ENOUGH_MEMORY,   ERROR_OUTOFMEMORY,
    ERROR_GEN_FAILURE,         ERROR_IO_DEVICE,     ERROR_SHARING_VIOLATION,   ERROR_MOD_NOT_FOUND,
    ERROR_BAD_EXE_FORMAT,      ERROR_DISK_FULL,     ERROR_NO_SYSTEM_RESOURCES,
};

thread_local RecordGathering* current = nullptr;

// kSqliteOk for a failure that is not the database's.
std::int32_t CodeOf(const std::exception& failure) {
    const auto* const known = dynamic_cast<const SQLite3WrapperException*>(&failure);
    return known != nullptr ? known->GetCode() : kSqliteOk;
}

}  // namespace

RecordGathering::RecordGathering()
    : outer_(current),
      outermost_(outer_ != nullptr ? outer_->outermost_ : this),
      start_(GetTickCount()) {
    current = this;
}

RecordGathering::~RecordGathering() {
    current = outer_;
}

bool RecordGathering::IsOver() {
    return current != nullptr && current->outermost_->hasWaitedInVain_;
}

DWORD RecordGathering::LongestWait() {
    if (current == nullptr) {
        return kLongestWait;
    }
    if (IsOver()) {
        return 0;
    }
    const DWORD taken = GetTickCount() - current->outermost_->start_;
    return std::max(kLongestWait - std::min(taken, kLongestWait), kShortestWait);
}

bool RecordGathering::IsPassing(const std::exception& failure) {
    return dynamic_cast<const std::bad_alloc*>(&failure) != nullptr ||
           dynamic_cast<const SqliteLibraryMissing*>(&failure) != nullptr ||
           std::ranges::find(kLastingFailures, CodeOf(failure)) == std::end(kLastingFailures);
}

void RecordGathering::Note(DWORD error, const std::string& what) {
    if (current != nullptr && !current->HasMissed() &&
        std::ranges::find(kPassingErrors, error) != std::end(kPassingErrors)) {
        current->missed_ = what + ": error " + std::to_string(error);
    }
}

void RecordGathering::Note(const std::exception& failure) {
    if (const auto* const file = dynamic_cast<const FileException*>(&failure)) {
        const auto* const cause = dynamic_cast<const SystemException::Win32*>(file->GetInner());
        Note(cause != nullptr ? static_cast<DWORD>(cause->GetCode()) : ERROR_SUCCESS,
             Utf8ToNarrow(file->GetPath()));
        return;
    }
    if (current == nullptr || !IsPassing(failure)) {
        return;
    }
    if (!current->HasMissed()) {
        current->missed_ = failure.what();
    }
    if (CodeOf(failure) == kSqliteBusy) {
        current->outermost_->hasWaitedInVain_ = true;
    }
}
