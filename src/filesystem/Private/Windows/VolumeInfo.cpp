#include "filesystem/VolumeInfo.h"

#include <iterator>
#include <tuple>

#include "filesystem/FileException.h"
#include "filesystem/Private/Windows/API.h"

VolumeInfo::VolumeInfo(const WideString& rootPath) : root(StringToLower(rootPath)) {
    WCHAR labelText[0x100] = {};
    WCHAR fileSystemText[0x10] = {};
    DWORD serialNumber = 0;
    DWORD nameLength = 0;
    DWORD flagBits = 0;
    if (!FileSystem_Win32::GetApi()->GetVolumeInformationW(
            root.c_str(), labelText, static_cast<DWORD>(std::size(labelText)), &serialNumber,
            &nameLength, &flagBits, fileSystemText,
            static_cast<DWORD>(std::size(fileSystemText)))) {
        const DWORD error = GetLastError();
        ThrowFileError(error, FilePath(root));
    }
    flags = flagBits;
    max_name_length = nameLength;
    serial = serialNumber;
    label = labelText;
    file_system = fileSystemText;
}

bool operator==(const VolumeInfo& a, const VolumeInfo& b) {
    return std::tie(a.root, a.label, a.serial) == std::tie(b.root, b.label, b.serial);
}

bool operator<(const VolumeInfo& a, const VolumeInfo& b) {
    return std::tie(a.root, a.label, a.serial) < std::tie(b.root, b.label, b.serial);
}
