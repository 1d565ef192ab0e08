#include "catalogue/RecordSnapshot.h"

#include <cstring>
#include <utility>

#include "catalogue/RecordTable.h"

namespace {

// The record key of a row; a row of another program's may have none.
const char* KeyOf(const SQLite3WrapperTable& table, std::int32_t row) {
    const char* const key = table.GetText(row, 0);
    return key != nullptr ? key : "";
}

}  // namespace

SharedHandle<SQLite3WrapperTable> RecordSnapshot::Find(SQLite3WrapperDB& db,
                                                       const std::string& key) {
    Refresh(db);
    const auto found = certificates_.find(key);
    if (found == certificates_.end()) {
        return nullptr;
    }
    return found->second->MakePart(0, found->second->GetRowCount());
}

void RecordSnapshot::Clear() {
    loaded_ = false;
    certificates_.clear();
}

void RecordSnapshot::Refresh(SQLite3WrapperDB& db) {
    // The numbers are taken ahead of the rows: what is written in between is then seen by the next
    // call, which reads these rows once more.
    State state = {RecordTable::EditCount(db), RecordTable::LastRow(db), RecordTable::Version(db)};
    if (loaded_ && state == state_) {
        return;
    }
    const bool isGrown =
        loaded_ && state.editCount == state_.editCount && state.lastRow != state_.lastRow;
    if (!isGrown || !AddBehind(db)) {
        const SharedHandle<SQLite3WrapperTable> all = RecordTable::LoadRowsBehind(db, "0");
        Clear();
        Add(*all);
    }
    loaded_ = true;
    state_ = std::move(state);
}

bool RecordSnapshot::AddBehind(SQLite3WrapperDB& db) {
    const SharedHandle<SQLite3WrapperTable> added = RecordTable::LoadRowsBehind(db, state_.lastRow);
    for (std::int32_t row = 0; row < added->GetRowCount(); ++row) {
        if (certificates_.contains(KeyOf(*added, row))) {
            return false;
        }
    }
    Add(*added);
    return added->GetRowCount() > 0;
}

void RecordSnapshot::Add(const SQLite3WrapperTable& table) {
    const std::int32_t count = table.GetRowCount();
    for (std::int32_t first = 0, end = 0; first < count; first = end) {
        const char* const key = KeyOf(table, first);
        while (end < count && std::strcmp(KeyOf(table, end), key) == 0) {
            ++end;
        }
        certificates_[key] = table.MakePart(first, end - first);
    }
}
