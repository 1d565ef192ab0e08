// An open file: the value that holds a FileChannel_IF. Copies share one file and one position.
//
// It comes from FileSpec::MakeFileChannel. On the null channel IsOpen is false and every other
// operation raises a FileException with an empty path.
#pragma once

#include <cstdint>
#include <cstdio>

#include "filesystem/FileChannel_IF.h"
#include "text/SharedHandle.h"

class FileChannel {
  public:
    // The null channel.
    FileChannel() = default;
    explicit FileChannel(const SharedHandle<FileChannel_IF>& object) : impl(object) {}
    FileChannel(const FileChannel&) = default;
    FileChannel& operator=(const FileChannel&) = default;
    virtual ~FileChannel() = default;

    bool IsNull() const { return impl == nullptr; }

    void Close() const;
    void Flush() const;
    std::uint64_t GetSize() const;
    SharedHandle<FileSpec_IF> GetFileSpec() const;
    std::uint64_t GetPosition() const;
    bool IsOpen() const;
    void Read(void* buffer, std::uint32_t count, std::uint32_t& done) const;
    std::FILE* ReleaseToStream() const;
    void SetSize(std::uint64_t size) const;
    void SetPosition(std::uint64_t position) const;
    void Write(const void* buffer, std::uint32_t count) const;

  private:
    SharedHandle<FileChannel_IF> impl;
};
