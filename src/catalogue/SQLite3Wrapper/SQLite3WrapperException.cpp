#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <utility>

namespace {

using CodeName = std::pair<std::int32_t, const char*>;
constexpr CodeName kCodeNames[] = {
    {0, "SQLITE_OK"},        {1, "SQLITE_ERROR"},       {2, "SQLITE_INTERNAL"},
    {3, "SQLITE_PERM"},      {4, "SQLITE_ABORT"},       {5, "SQLITE_BUSY"},
    {6, "SQLITE_LOCKED"},    {7, "SQLITE_NOMEM"},       {8, "SQLITE_READONLY"},
    {9, "SQLITE_INTERRUPT"}, {10, "SQLITE_IOERR"},      {11, "SQLITE_CORRUPT"},
    {12, "SQLITE_NOTFOUND"}, {13, "SQLITE_FULL"},       {14, "SQLITE_CANTOPEN"},
    {15, "SQLITE_PROTOCOL"}, {16, "SQLITE_EMPTY"},      {17, "SQLITE_SCHEMA"},
    {18, "SQLITE_TOOBIG"},   {19, "SQLITE_CONSTRAINT"}, {20, "SQLITE_MISMATCH"},
    {21, "SQLITE_MISUSE"},   {22, "SQLITE_NOLFS"},      {23, "SQLITE_AUTH"},
    {24, "SQLITE_FORMAT"},   {25, "SQLITE_RANGE"},      {100, "SQLITE_ROW"},
    {101, "SQLITE_DONE"},    {1000, "CPPSQLITE_ERROR"},
};

const char* NameOf(std::int32_t code) {
    const auto* const found = std::ranges::find(kCodeNames, code, &CodeName::first);
    return found != std::end(kCodeNames) ? found->second : "UNKNOWN_ERROR";
}

}  // namespace

// The message is not made by the database library: that it is missing is one of the failures.
SQLite3WrapperException::SQLite3WrapperException(std::int32_t code, const char* text) noexcept
    : code_(code) {
    try {
        message_ = std::string(NameOf(code)) + "[" + std::to_string(code) +
                   "]: " + (text != nullptr ? text : "");
    } catch (const std::bad_alloc&) {
        message_.clear();
    }
}
