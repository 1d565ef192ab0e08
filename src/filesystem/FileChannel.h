// An open file: the value that holds a FileChannel_IF. Copies share one file and one position.
//
// It comes from FileSpec::MakeFileChannel. On the null channel IsOpen is false and every other
// operation raises a FileException with an empty path.
#pragma once

#include <cstdint>
#include <cstdio>

#include "filesystem/FileChannel_IF.h"
#include "filesystem/FileException.h"
#include "text/SharedHandle.h"

class FileChannel {
  public:
    // The null channel.
    FileChannel() = default;
    explicit FileChannel(const SharedHandle<FileChannel_IF>& object) : impl(object) {}
    virtual ~FileChannel() = default;

    bool IsNull() const { return impl == nullptr; }

    void Close() const { Get(48).Close(); }
    void Flush() const { Get(54).Flush(); }
    std::uint64_t GetSize() const { return Get(60).GetSize(); }
    SharedHandle<FileSpec_IF> GetFileSpec() const { return Get(66).GetFileSpec(); }
    std::uint64_t GetPosition() const { return Get(72).GetPosition(); }
    bool IsOpen() const { return impl != nullptr && impl->IsOpen(); }
    void Read(void* buffer, std::uint32_t count, std::uint32_t& done) const {
        Get(97).Read(buffer, count, done);
    }
    std::FILE* ReleaseToStream() const { return Get(104).ReleaseToStream(); }
    void SetSize(std::uint64_t size) const { Get(111).SetSize(size); }
    void SetPosition(std::uint64_t position) const { Get(118).SetPosition(position); }
    void Write(const void* buffer, std::uint32_t count) const { Get(125).Write(buffer, count); }

  private:
    FileChannel_IF& Get(int line) const { return Existing(impl, ".\\Private\\FileChannel", line); }

    SharedHandle<FileChannel_IF> impl;
};
