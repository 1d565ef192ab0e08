// A volume of the platform, as it was described when the first file object on it was made.
#pragma once

#include "filesystem/VolumeInfo.h"
#include "filesystem/Volume_IF.h"
#include "platform/types.h"

class Volume_Win32 : public Volume_IF {
  public:
    explicit Volume_Win32(const VolumeInfo& description) : info(description) {}

    SharedHandle<FileSpec_IF> GetRootFolder(const SharedHandle<Volume_IF>& self) override;
    std::uint64_t GetCapacity() override;
    std::uint64_t GetFreeSpace() override;
    std::uint64_t GetMaximumFileSize() override;
    std::uint32_t GetMaximumNameLength() override;
    FilePath GetName() override;
    bool IsCaseSensitive() override;
    bool IsEqual(const SharedHandle<Volume_IF>& other) override;
    bool IsMounted() override;
    bool IsNetwork() override;
    bool IsRemovable() override;
    bool IsValid() override;
    void Unmount() override;

  private:
    [[noreturn]] void Fail(DWORD code) const;

    VolumeInfo info;
};
