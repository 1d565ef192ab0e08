#include "filesystem/FileChannel.h"

#include "filesystem/FileException.h"
#include "filesystem/FileSpec_IF.h"

namespace {

constexpr const char* kSource = ".\\Private\\FileChannel";

}  // namespace

void FileChannel::Close() const {
    Existing(impl, kSource, 48).Close();
}

void FileChannel::Flush() const {
    Existing(impl, kSource, 54).Flush();
}

std::uint64_t FileChannel::GetSize() const {
    return Existing(impl, kSource, 60).GetSize();
}

SharedHandle<FileSpec_IF> FileChannel::GetFileSpec() const {
    return Existing(impl, kSource, 66).GetFileSpec();
}

std::uint64_t FileChannel::GetPosition() const {
    return Existing(impl, kSource, 72).GetPosition();
}

bool FileChannel::IsOpen() const {
    return impl != nullptr && impl->IsOpen();
}

void FileChannel::Read(void* buffer, std::uint32_t count, std::uint32_t& done) const {
    Existing(impl, kSource, 97).Read(buffer, count, done);
}

std::FILE* FileChannel::ReleaseToStream() const {
    return Existing(impl, kSource, 104).ReleaseToStream();
}

void FileChannel::SetSize(std::uint64_t size) const {
    Existing(impl, kSource, 111).SetSize(size);
}

void FileChannel::SetPosition(std::uint64_t position) const {
    Existing(impl, kSource, 118).SetPosition(position);
}

void FileChannel::Write(const void* buffer, std::uint32_t count) const {
    Existing(impl, kSource, 125).Write(buffer, count);
}
