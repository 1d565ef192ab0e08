// One open file. See FileChannel for the value class that holds one.
//
// It closes with its last holder. A failure of the platform raises a FileException with the path of
// its file object. One thread at a time; SetSize, which moves the position and puts it back, has a
// lock. Positions and sizes are bytes.
#pragma once

#include <cstdint>
#include <cstdio>

#include "text/SharedHandle.h"

class FileSpec_IF;

// Bits with which a file is opened: kRead, kWrite or both; kTruncate needs kWrite.
namespace FileChannelMode {

inline constexpr std::uint32_t kRead = 0x001;
inline constexpr std::uint32_t kWrite = 0x002;

// Makes the file where it is missing.
inline constexpr std::uint32_t kCreate = 0x010;

// Cuts the file to length 0 once it is open.
inline constexpr std::uint32_t kTruncate = 0x020;

// What others may do meanwhile. A channel that only reads lets others read in any case.
inline constexpr std::uint32_t kShareRead = 0x100;
inline constexpr std::uint32_t kShareWrite = 0x200;

}  // namespace FileChannelMode

class FileChannel_IF {
  public:
    virtual ~FileChannel_IF() = default;

    virtual void Close() = 0;

    // Has what was written reach the medium; nothing for a channel that only reads.
    virtual void Flush() = 0;
    virtual std::uint64_t GetSize() = 0;
    virtual SharedHandle<FileSpec_IF> GetFileSpec() = 0;
    virtual std::uint64_t GetPosition() = 0;
    virtual bool IsOpen() = 0;

    // Reads `count` bytes into `buffer`; `done` is below that at the end of the file alone.
    virtual void Read(void* buffer, std::uint32_t count, std::uint32_t& done) = 0;

    // Hands the open file to a stream of the run-time library, which the caller closes; the channel
    // is closed then. Raises SystemException::Errno without a stream.
    virtual std::FILE* ReleaseToStream() = 0;

    // Cuts or grows the file; the position stays, also when it is past the new end.
    virtual void SetSize(std::uint64_t size) = 0;

    // Counts from the file's beginning; may lie past the end.
    virtual void SetPosition(std::uint64_t position) = 0;

    // Writes all of `count` bytes, or raises.
    virtual void Write(const void* buffer, std::uint32_t count) = 0;
};
