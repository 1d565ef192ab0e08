#include "catalogue/RecordSnapshot.h"

#include <cstring>

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
    // Both numbers are taken ahead of the rows: what is written in between is then seen by the next
    // call, which reads these rows once more.
    const std::int32_t editCount = RecordTable::EditCount(db);
    const std::string lastRow = RecordTable::LastRow(db);
    const bool sameEdits = loaded_ && editCount == editCount_;
    if (sameEdits && lastRow == lastRow_) {
        return;
    }
    const SharedHandle<SQLite3WrapperTable> table =
        RecordTable::LoadRowsBehind(db, sameEdits ? lastRow_ : "0");
    if (!sameEdits) {
        Clear();
    }
    Add(*table);
    loaded_ = true;
    editCount_ = editCount;
    lastRow_ = lastRow;
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
