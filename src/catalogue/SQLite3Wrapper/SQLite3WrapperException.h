// A failure of the record database: a result code and a text.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

// Result codes of the database that the catalogue acts on.
inline constexpr std::int32_t kSqliteOk = 0;
inline constexpr std::int32_t kSqliteError = 1;
inline constexpr std::int32_t kSqlitePermission = 3;
inline constexpr std::int32_t kSqliteBusy = 5;
inline constexpr std::int32_t kSqliteNoMemory = 7;
inline constexpr std::int32_t kSqliteReadOnly = 8;
inline constexpr std::int32_t kSqliteInterrupt = 9;
inline constexpr std::int32_t kSqliteCorrupt = 11;
inline constexpr std::int32_t kSqliteCannotOpen = 14;
inline constexpr std::int32_t kSqliteEmpty = 16;
inline constexpr std::int32_t kSqliteSchema = 17;
inline constexpr std::int32_t kSqliteNotADatabase = 26;
inline constexpr std::int32_t kSqliteRow = 100;
inline constexpr std::int32_t kSqliteDone = 101;

// A failure that the wrapper found by itself.
inline constexpr std::int32_t kWrapperError = 1000;

class SQLite3WrapperException : public std::exception {
  public:
    // The message is "NAME[CODE]: TEXT", such as "SQLITE_BUSY[5]: database is locked"; a null text
    // counts as empty. Throws nothing: without memory the message is empty.
    SQLite3WrapperException(std::int32_t code, const char* text) noexcept;

    // The message is the text as it stands; the code is 0.
    explicit SQLite3WrapperException(const std::string& message) : message_(message) {}
    explicit SQLite3WrapperException(const char* message)
        : message_(message != nullptr ? message : "") {}

    const char* what() const noexcept override { return message_.c_str(); }
    std::int32_t GetCode() const { return code_; }

  private:
    std::int32_t code_ = 0;
    std::string message_;
};
