#include "catalogue/SQLite3Wrapper/SQLite3WrapperTable.h"

#include <string_view>
#include <utility>

#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"
#include "text/StringConversions.h"

namespace {

constexpr std::size_t kComparedBytes = 512;

bool IsNamed(const char* text, const char* name) {
    return text != nullptr && EqualNoCase(std::string_view(text).substr(0, kComparedBytes),
                                          std::string_view(name).substr(0, kComparedBytes));
}

[[noreturn]] void Fail(const char* text) {
    throw SQLite3WrapperException(kWrapperError, text);
}

}  // namespace

SQLite3WrapperTable::SQLite3WrapperTable(SQLite3WrapperResults results, std::int32_t rowCount,
                                         std::int32_t columnCount)
    : SQLite3WrapperTable(std::move(results), 0, rowCount, columnCount) {}

SQLite3WrapperTable::SQLite3WrapperTable(SQLite3WrapperResults results, std::int32_t firstRow,
                                         std::int32_t rowCount, std::int32_t columnCount)
    : results_(std::move(results)),
      firstRow_(firstRow),
      rowCount_(rowCount),
      columnCount_(columnCount) {}

void SQLite3WrapperTable::RequireResults() const {
    if (!results_) {
        Fail("Null Results pointer");
    }
}

const char* SQLite3WrapperTable::GetText(std::int32_t row, std::int32_t column) const {
    // The row of headings comes first.
    const std::size_t place =
        (static_cast<std::size_t>(firstRow_) + static_cast<std::size_t>(row) + 1) *
        static_cast<std::size_t>(columnCount_);
    return results_.get()[place + static_cast<std::size_t>(column)];
}

std::int32_t SQLite3WrapperTable::FindRow(const char* name, std::int32_t row) const {
    while (row < rowCount_ && (name == nullptr || !IsNamed(GetText(row, searchColumn_), name))) {
        ++row;
    }
    return row;
}

void SQLite3WrapperTable::SetSearchColumn(std::int32_t column) {
    RequireResults();
    if (column < 0 || column > columnCount_ - 2) {
        Fail("Invalid row index requested");
    }
    searchColumn_ = column;
}

const char* SQLite3WrapperTable::GetValue(const char* name) const {
    RequireResults();
    const std::int32_t row = FindRow(name, 0);
    if (row == rowCount_) {
        Fail("Invalid field name requested");
    }
    return GetText(row, searchColumn_ + 1);
}

std::int32_t SQLite3WrapperTable::GetValueAsNumber(const char* name, std::int32_t otherwise) const {
    const char* const value = GetValue(name);
    return value != nullptr ? TextToInt(value) : otherwise;
}

std::vector<std::string> SQLite3WrapperTable::GetValues(const char* name) const {
    std::vector<std::string> values = FindValues(name);
    if (values.empty()) {
        Fail("Invalid field name requested");
    }
    return values;
}

const char* SQLite3WrapperTable::FindValue(const char* name) const {
    RequireResults();
    const std::int32_t row = FindRow(name, 0);
    if (row == rowCount_) {
        return nullptr;
    }
    const char* const value = GetText(row, searchColumn_ + 1);
    return value != nullptr ? value : "";
}

std::vector<std::string> SQLite3WrapperTable::FindValues(const char* name) const {
    RequireResults();
    std::vector<std::string> values;
    for (std::int32_t row = FindRow(name, 0); row < rowCount_; row = FindRow(name, row + 1)) {
        const char* const value = GetText(row, searchColumn_ + 1);
        values.emplace_back(value != nullptr ? value : "");
    }
    return values;
}

SharedHandle<SQLite3WrapperTable> SQLite3WrapperTable::MakePart(std::int32_t firstRow,
                                                                std::int32_t rowCount) const {
    return std::make_shared<SQLite3WrapperTable>(results_, firstRow_ + firstRow, rowCount,
                                                 columnCount_);
}
