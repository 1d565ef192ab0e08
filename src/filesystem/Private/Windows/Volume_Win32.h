// A volume of the platform, as it was described when the first file object on it was made.
#pragma once

#include "filesystem/VolumeInfo.h"
#include "filesystem/Volume_IF.h"
#include "platform/errors.h"
#include "platform/types.h"
#include "text/SharedHandle.h"

class Volume_Win32 : public Volume_IF {
  public:
    explicit Volume_Win32(const VolumeInfo& description) : info(description) {}

    SharedHandle<FileSpec_IF> GetRootFolder(const SharedHandle<Volume_IF>& self) override;
    std::uint64_t GetCapacity() override;
    std::uint64_t GetFreeSpace() override;
    std::uint64_t GetMaximumFileSize() override;
    std::uint32_t GetMaximumNameLength() override { return info.max_name_length; }
    FilePath GetName() override { return FilePath(info.label); }
    bool IsCaseSensitive() override { return false; }
    bool IsEqual(const SharedHandle<Volume_IF>& other) override { return other.get() == this; }
    bool IsMounted() override;
    bool IsNetwork() override;
    bool IsRemovable() override;
    bool IsValid() override { return IsMounted(); }
    void Unmount() override;

  private:
    [[noreturn]] void Fail(DWORD code) const;

    // Raises the platform's last error unless a call of it succeeded.
    void Require(bool succeeded) const {
        if (!succeeded) {
            Fail(GetLastError());
        }
    }

    VolumeInfo info;
};

// The process's volumes: one Volume_IF for each medium that a file object was made on, so that
// volumes can be compared by identity. Any thread.
namespace FileSystem_Win32 {

// The volume of this description. One that is not registered yet is made where `create`, else the
// result is null.
SharedHandle<Volume_IF> FindVolume(const VolumeInfo& info, bool create);

// Forgets all volumes; file objects keep theirs alive.
void ClearVolumes();

}  // namespace FileSystem_Win32
