// Files on drive C: of the test's machine, and what the platform answers about them.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "platform/files.h"
#include "platform/posix/machine/machine.h"

inline std::filesystem::path DriveC() {
    return std::filesystem::path(Machine::Current().Folder()) / "drives/c";
}

// A new empty folder at the root of drive C:.
inline std::filesystem::path NewFolder(const std::string& name) {
    const std::filesystem::path folder = DriveC() / name;
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    return folder;
}

inline void WriteHostFile(const std::filesystem::path& path, const std::string& text = "text") {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

inline std::string ReadHostFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The error number of an operation that told this result, 0 for success.
inline DWORD ErrorOf(BOOL result) {
    return result ? 0 : GetLastError();
}

// An open file, closed at the end.
class OpenedFile {
  public:
    OpenedFile(const std::u16string& path, DWORD access, DWORD share = 0,
               DWORD disposition = OPEN_EXISTING, DWORD flags = FILE_ATTRIBUTE_NORMAL) {
        SetLastError(777);
        handle_ = CreateFileW(path.c_str(), access, share, nullptr, disposition, flags, nullptr);
        error_ = GetLastError();
    }
    OpenedFile(const OpenedFile&) = delete;
    OpenedFile& operator=(const OpenedFile&) = delete;
    ~OpenedFile() { Close(); }

    HANDLE Get() const { return handle_; }
    bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }

    // The last error right after opening.
    DWORD Error() const { return error_; }

    void Close() {
        if (IsOpen()) {
            EXPECT_TRUE(CloseHandle(handle_));
            handle_ = INVALID_HANDLE_VALUE;
        }
    }

  private:
    HANDLE handle_;
    DWORD error_;
};

// 0xFFFFFFFF when there is nothing.
inline DWORD AttributesAt(const std::u16string& path) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    return GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data) ? data.dwFileAttributes
                                                                            : 0xFFFFFFFF;
}
