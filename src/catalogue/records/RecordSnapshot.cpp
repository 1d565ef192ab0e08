#include "catalogue/records/RecordSnapshot.h"

#include <cstring>
#include <utility>

#include "catalogue/records/RecordTable.h"

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

std::vector<std::string> RecordSnapshot::Keys(SQLite3WrapperDB& db) {
    Refresh(db);
    std::vector<std::string> keys;
    for (const std::string* key : order_) {
        keys.push_back(*key);
    }
    return keys;
}

void RecordSnapshot::Clear() {
    loaded_ = false;
    order_.clear();
    certificates_.clear();
}

void RecordSnapshot::Refresh(SQLite3WrapperDB& db) {
    // The numbers are taken before the rows: what is written in between is then seen by the next
    // call, which reads these rows once more.
    std::string version = RecordTable::Version(db);
    std::string lastRow = RecordTable::LastRow(db);
    const bool isGrown = loaded_ && version == version_;
    if (isGrown && lastRow == lastRow_) {
        return;
    }
    const SharedHandle<SQLite3WrapperTable> rows =
        RecordTable::LoadRowsAfter(db, isGrown ? lastRow_ : "0");
    if (!isGrown) {
        Clear();
    }
    loaded_ = false;
    Add(db, *rows);
    loaded_ = true;
    version_ = std::move(version);
    lastRow_ = std::move(lastRow);
}

void RecordSnapshot::Add(SQLite3WrapperDB& db, const SQLite3WrapperTable& table) {
    const std::int32_t count = table.GetRowCount();
    for (std::int32_t first = 0, end = 0; first < count; first = end) {
        const char* const key = KeyOf(table, first);
        while (end < count && std::strcmp(KeyOf(table, end), key) == 0) {
            ++end;
        }
        const auto [place, isNew] = certificates_.try_emplace(key);
        if (isNew) {
            place->second = table.MakePart(first, end - first);
            order_.push_back(&place->first);
        } else if (RecordTable::CanBeQuoted(key)) {
            // A field that was written after the import stands apart from the others.
            place->second = RecordTable::LoadRows(db, place->first);
        }
    }
}
