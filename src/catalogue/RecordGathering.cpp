#include "catalogue/RecordGathering.h"

#include <algorithm>
#include <iterator>
#include <new>

#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"
#include "catalogue/SQLite3Wrapper/SqliteLibrary.h"
#include "platform/clock.h"

namespace {

constexpr DWORD kLongestWait = 60000;

// What tells nothing of the next try.
constexpr std::int32_t kPassingFailures[] = {kSqliteBusy,    kSqliteLocked, kSqliteNoMemory,
                                             kSqliteIoError, kSqliteFull,   kSqliteCannotOpen,
                                             kSqliteProtocol};

thread_local RecordGathering* current = nullptr;

std::int32_t CodeOf(const std::exception& failure) {
    const auto* const known = dynamic_cast<const SQLite3WrapperException*>(&failure);
    return known != nullptr ? known->GetCode() : kSqliteOk;
}

bool IsPassing(const std::exception& failure) {
    return dynamic_cast<const std::bad_alloc*>(&failure) != nullptr ||
           dynamic_cast<const SqliteLibraryMissing*>(&failure) != nullptr ||
           std::ranges::find(kPassingFailures, CodeOf(failure)) != std::end(kPassingFailures);
}

}  // namespace

RecordGathering::RecordGathering() : outer_(current), start_(GetTickCount()) {
    current = this;
}

RecordGathering::~RecordGathering() {
    current = outer_;
}

DWORD RecordGathering::LongestWait() {
    if (current == nullptr) {
        return kLongestWait;
    }
    if (!current->wait_) {
        current->wait_ = kLongestWait - std::min(GetTickCount() - current->start_, kLongestWait);
    }
    return *current->wait_;
}

void RecordGathering::Note(const std::exception& failure) {
    if (current == nullptr || !IsPassing(failure)) {
        return;
    }
    current->hasMissed_ = true;
    if (CodeOf(failure) == kSqliteBusy) {
        current->hasWaitedInVain_ = true;
        current->wait_ = 0;
    }
}
