#include "catalogue/records/SharedRecordStore.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>
#include <vector>

#include "catalogue/RecordGathering.h"
#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"
#include "catalogue/SQLite3Wrapper/SqliteLibrary.h"
#include "catalogue/records/RecordAccess.h"
#include "catalogue/records/RecordTable.h"
#include "catalogue/records/RepairLock.h"
#include "catalogue/records/SQLCertificate.h"
#include "platform/clock.h"
#include "platform/database_library.h"
#include "platform/files.h"
#include "platform/never_destroyed.h"
#include "text/StringConversions.h"
#include "trace/UTrace.h"

namespace {

// On either side of the deletion of a database, for other programs to let go of it.
constexpr DWORD kRepairPause = 500;

// Of statements on a file that is cut, overwritten, under another key or without the table. The
// library answers "error" for a page that does not decrypt.
constexpr std::int32_t kDamages[] = {kSqliteError, kSqliteCorrupt, kSqliteNotADatabase};

bool IsDamage(const std::exception& failure) {
    const auto* const known = dynamic_cast<const SQLite3WrapperException*>(&failure);
    return known != nullptr && std::ranges::find(kDamages, known->GetCode()) != std::end(kDamages);
}

// Whether the file is known not to be there. One that cannot be looked at may well be there for
// others.
bool IsAbsent(const std::string& path) {
    constexpr DWORD kAbsences[] = {ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND, ERROR_INVALID_NAME};
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    return !GetFileAttributesExW(NarrowToWide(path).c_str(), GetFileExInfoStandard, &data) &&
           std::ranges::find(kAbsences, GetLastError()) != std::end(kAbsences);
}

// A folder may let users write its files and not delete another's. An empty file is as good as
// none.
bool DeleteOrEmpty(const WideString& path) {
    return DeleteFileW(path.c_str()) || EmptySharedFile(path.c_str());
}

// Once memory was short, the cipher library may fail for the rest of the process, and every file
// looks damaged. Throws unless a new database can be written and read.
void ProveCipher(const std::string& path) {
    const WideString widePath = NarrowToWide(path);
    DeleteOrEmpty(widePath);
    {
        SQLite3WrapperDB writer;
        writer.Open(path);
        RecordTable::CreateIfMissing(writer);
    }
    SQLite3WrapperDB reader;
    reader.Open(path);
    const bool isProven = reader.TableExists(RecordTable::kName);
    reader.Close();
    DeleteOrEmpty(widePath);
    if (!isProven) {
        throw SQLite3WrapperException(kSqliteNoMemory, "the cipher does not work");
    }
}

}  // namespace

SharedRecordStore& SharedRecordStore::Get() {
    static NeverDestroyed<SharedRecordStore> store;
    return *store;
}

void SharedRecordStore::LoadLibrary() {
    if (SqliteLibrary::IsLoaded()) {
        return;
    }
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    const WideString path = NarrowToWide(SQLCertificate::SqlDatabasePath());
    try {
        if (GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data) &&
            (data.nFileSizeHigh != 0 || data.nFileSizeLow != 0)) {
            SqliteLibrary::Get();
        }
    } catch (const SqliteLibraryMissing&) {
        // The first statement says so.
    }
}

void SharedRecordStore::EnsureOpen() {
    LoadLibrary();
    RecordAccess access(db_);
    if (!opened_) {
        existed_ = PathFileExistsW(NarrowToWide(SQLCertificate::SqlDatabasePath()).c_str());
        Reopen();
    }
    if (!examined_) {
        Examine(access);
    }
    if (examined_ && !std::exchange(purged_, true)) {
        Purge(access);
    }
}

void SharedRecordStore::Reopen() {
    snapshot_.Clear();
    opened_ = false;
    db_.Open(SQLCertificate::SqlDatabasePath());
    opened_ = true;
}

// Damage may be in any row, and a load needs them all anyway. While it is unknown how the file is,
// the next call looks again.
void SharedRecordStore::Examine(RecordAccess& access) {
    bool isKnown = true;
    try {
        if (existed_) {
            ReadAll(access);
        }
    } catch (const std::exception& failure) {
        UTrace::Error("TableList failed ");
        if (IsDamage(failure)) {
            isKnown = Repair(access) != Outcome::kMayPass;
        } else {
            RecordGathering::Note(failure);
            isKnown = !RecordGathering::IsPassing(failure);
        }
    }
    examined_ = isKnown;
}

void SharedRecordStore::ReadAll(RecordAccess& access) {
    access.Keys();
    RecordTable::CheckForm(db_);
}

SharedRecordStore::Outcome SharedRecordStore::Repair(RecordAccess& access) {
    try {
        ReplaceIfDamaged(access);
        return Outcome::kMended;
    } catch (const std::exception& failure) {
        RecordGathering::Note(failure);
        UTrace::Error("The damaged record database stays as it is: %s", failure.what());
        return RecordGathering::IsPassing(failure) ? Outcome::kMayPass : Outcome::kStays;
    }
}

bool SharedRecordStore::IsDamaged(RecordAccess& access) {
    try {
        ReadAll(access);
        // Pages without rows are not read above, and needed for new rows.
        const SharedHandle<SQLite3WrapperQuery> check = db_.Query("PRAGMA quick_check(1)");
        return check->IsAtEnd() || std::string("ok") != check->GetColumnText(0);
    } catch (const SQLite3WrapperException& failure) {
        return IsDamage(failure);
    }
}

// Several processes may meet the same damaged file. One at a time may replace it, and looks again
// first: the one before it may have done so.
void SharedRecordStore::ReplaceIfDamaged(RecordAccess& access) {
    const std::string path = SQLCertificate::SqlDatabasePath();
    const RepairLock lock(path);
    Reopen();
    if (!IsDamaged(access)) {
        return;
    }
    db_.Close();
    Sleep(kRepairPause);
    Reopen();
    if (!IsDamaged(access)) {
        return;
    }
    db_.Close();
    ProveCipher(path + ".check");
    const bool isGone = DeleteOrEmpty(NarrowToWide(path));
    Sleep(kRepairPause);
    Reopen();
    if (!isGone) {
        throw SQLite3WrapperException(kSqlitePermission, "it may neither be deleted nor emptied");
    }
}

bool SharedRecordStore::RepairAfter(const std::exception& failure, const SQLite3WrapperDB& db) {
    RecordAccess access(db_);
    if (&db != &db_ || !IsDamage(failure) || triedRepair_) {
        return false;
    }
    const Outcome outcome = Repair(access);
    triedRepair_ = outcome != Outcome::kMayPass;
    return outcome == Outcome::kMended;
}

void SharedRecordStore::Purge(RecordAccess& access) {
    std::vector<std::string> keys;
    access.ListKeys(&keys);
    std::vector<std::string> gone;
    for (const std::string& key : keys) {
        if (!IsAbsent(key)) {
            continue;
        }
        if (RecordTable::CanBeQuoted(key)) {
            gone.push_back(key);
        } else {
            UTrace::Error("TableExist failed, path: %s ", key.c_str());
        }
    }
    try {
        if (!gone.empty()) {
            access.Edit([&](SQLite3WrapperDB& db) { RecordTable::DeleteRows(db, gone); });
        }
    } catch (const std::exception& failure) {
        RecordGathering::Note(failure);
        // The records stay, and the next process tries again.
    }
}

void SharedRecordStore::DropRecords() {
    EnsureOpen();
    RecordAccess access(db_);
    try {
        if (!db_.IsEmptyFile()) {
            access.Edit(RecordTable::DeleteAllRows);
        }
    } catch (const std::exception& failure) {
        if (!IsDamage(failure) || Repair(access) != Outcome::kMended) {
            throw;
        }
    }
}
