// An open file of the platform.
#pragma once

#include "filesystem/FileChannel_IF.h"
#include "platform/errors.h"
#include "platform/types.h"
#include "text/CriticalSection.h"

class FileChannel_Win32 : public FileChannel_IF {
  public:
    // Opens the file with bits of FileChannelMode.
    FileChannel_Win32(const SharedHandle<FileSpec_IF>& file, std::uint32_t openMode);
    FileChannel_Win32(const FileChannel_Win32&) = delete;
    FileChannel_Win32& operator=(const FileChannel_Win32&) = delete;
    ~FileChannel_Win32() override;

    void Close() override;
    void Flush() override;
    std::uint64_t GetSize() override;
    SharedHandle<FileSpec_IF> GetFileSpec() override;
    std::uint64_t GetPosition() override;
    bool IsOpen() override;
    void Read(void* buffer, std::uint32_t count, std::uint32_t& done) override;
    std::FILE* ReleaseToStream() override;
    void SetSize(std::uint64_t size) override;
    void SetPosition(std::uint64_t position) override;
    void Write(const void* buffer, std::uint32_t count) override;

  private:
    std::uint64_t Seek(std::uint64_t distance, DWORD method);
    [[noreturn]] void Fail(DWORD code) const;

    // Raises the platform's last error unless a call of it succeeded.
    void Require(bool succeeded) const {
        if (!succeeded) {
            Fail(GetLastError());
        }
    }

    HANDLE handle = nullptr;
    std::uint32_t mode;
    SharedHandle<FileSpec_IF> spec;
    VelmarCriticalSection lock;
};
