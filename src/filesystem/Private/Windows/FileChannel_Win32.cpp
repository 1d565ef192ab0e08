#include "filesystem/Private/Windows/FileChannel_Win32.h"

#include <cerrno>
#include <cstdint>
#include <exception>

#include "filesystem/FileException.h"
#include "filesystem/FileSpec_IF.h"
#include "filesystem/Private/Windows/API.h"
#include "platform/files.h"
#include "text/SystemException.h"

namespace {

using FileSystem_Win32::GetApi;

constexpr const char* kSource = ".\\Private\\Windows\\FileSystem_FileChannel_Win32";

bool Has(std::uint32_t mode, std::uint32_t bit) {
    return (mode & bit) != 0;
}

DWORD AccessOf(std::uint32_t mode) {
    return (Has(mode, FileChannelMode::kRead) ? GENERIC_READ : 0) |
           (Has(mode, FileChannelMode::kWrite) ? GENERIC_WRITE : 0);
}

// A reader that asks for nothing still lets other readers in.
DWORD ShareOf(std::uint32_t mode) {
    const DWORD share = (Has(mode, FileChannelMode::kShareRead) ? FILE_SHARE_READ : 0) |
                        (Has(mode, FileChannelMode::kShareWrite) ? FILE_SHARE_WRITE : 0);
    return share == 0 && AccessOf(mode) == GENERIC_READ ? FILE_SHARE_READ : share;
}

}  // namespace

FileChannel_Win32::FileChannel_Win32(const SharedHandle<FileSpec_IF>& file, std::uint32_t openMode)
    : mode(openMode), spec(file) {
    const bool isWriter = Has(mode, FileChannelMode::kWrite);
    const bool truncates = Has(mode, FileChannelMode::kTruncate);
    if (AccessOf(mode) == 0 || (truncates && !isWriter)) {
        throw VelmarException(kSource, 31);
    }
    const HANDLE opened =
        GetApi()->CreateFileW(spec->GetNativePath().c_str(), AccessOf(mode), ShareOf(mode), nullptr,
                              Has(mode, FileChannelMode::kCreate) ? OPEN_ALWAYS : OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        Fail(GetLastError());
    }
    if (truncates && (SetFilePointer(opened, 0, nullptr, FILE_BEGIN) == INVALID_SET_FILE_POINTER ||
                      !SetEndOfFile(opened))) {
        const DWORD error = GetLastError();
        CloseHandle(opened);
        Fail(error);
    }
    handle = opened;
}

FileChannel_Win32::~FileChannel_Win32() {
    if (IsOpen()) {
        try {
            Close();
        } catch (const std::exception&) {
            // A destructor has no caller to report to.
        }
    }
}

void FileChannel_Win32::Close() {
    Require(CloseHandle(handle));
    handle = nullptr;
}

void FileChannel_Win32::Flush() {
    if (Has(mode, FileChannelMode::kWrite) && !FlushFileBuffers(handle)) {
        Fail(GetLastError());
    }
}

std::uint64_t FileChannel_Win32::GetSize() {
    LARGE_INTEGER size = {};
    Require(GetApi()->GetFileSizeEx(handle, &size));
    return static_cast<std::uint64_t>(size.QuadPart);
}

SharedHandle<FileSpec_IF> FileChannel_Win32::GetFileSpec() {
    return spec;
}

std::uint64_t FileChannel_Win32::GetPosition() {
    return Seek(0, FILE_CURRENT);
}

bool FileChannel_Win32::IsOpen() {
    return handle != nullptr;
}

void FileChannel_Win32::Read(void* buffer, std::uint32_t count, std::uint32_t& done) {
    done = 0;
    auto* place = static_cast<unsigned char*>(buffer);
    while (done < count) {
        DWORD got = 0;
        Require(ReadFile(handle, place + done, count - done, &got, nullptr));
        if (got == 0) {
            return;
        }
        done += got;
    }
}

std::FILE* FileChannel_Win32::ReleaseToStream() {
    if (!IsOpen()) {
        throw VelmarException(kSource, 153);
    }
    const int descriptor = _open_osfhandle(reinterpret_cast<std::intptr_t>(handle), 0);
    if (descriptor == -1) {
        throw SystemException::Errno(errno);
    }
    handle = nullptr;
    const bool isReader = Has(mode, FileChannelMode::kRead);
    const bool isWriter = Has(mode, FileChannelMode::kWrite);
    std::FILE* const stream = _fdopen(descriptor, isReader && isWriter ? "rb+"
                                                  : isReader           ? "rb"
                                                                       : "wb");
    if (stream == nullptr) {
        const int error = errno;
        _close(descriptor);
        throw SystemException::Errno(error);
    }
    return stream;
}

void FileChannel_Win32::SetSize(std::uint64_t size) {
    const VelmarAutoCriticalSection hold(&lock);
    const std::uint64_t position = Seek(0, FILE_CURRENT);
    Seek(size, FILE_BEGIN);
    Require(SetEndOfFile(handle));
    Seek(position, FILE_BEGIN);
}

void FileChannel_Win32::SetPosition(std::uint64_t position) {
    Seek(position, FILE_BEGIN);
}

void FileChannel_Win32::Write(const void* buffer, std::uint32_t count) {
    if (count == 0) {
        return;
    }
    DWORD written = 0;
    Require(WriteFile(handle, buffer, count, &written, nullptr));
    if (written != count) {
        throw VelmarException(kSource, 216);
    }
}

std::uint64_t FileChannel_Win32::Seek(std::uint64_t distance, DWORD method) {
    LARGE_INTEGER move = {};
    LARGE_INTEGER position = {};
    move.QuadPart = static_cast<LONGLONG>(distance);
    Require(GetApi()->SetFilePointerEx(handle, move, &position, method));
    return static_cast<std::uint64_t>(position.QuadPart);
}

void FileChannel_Win32::Fail(DWORD code) const {
    ThrowFileError(code, spec->GetPath());
}
