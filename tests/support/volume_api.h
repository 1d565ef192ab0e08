// A platform table with a medium in every drive, as the test tells it to be.
#pragma once

#include <algorithm>

#include "support/faulty_api.h"

class VolumeApi : public FaultyApi {
  public:
    BOOL GetVolumeInformationW(const WCHAR* root, WCHAR* labelBuffer, DWORD, DWORD* serialNumber,
                               DWORD* maximumNameLength, DWORD* flags, WCHAR* fileSystemBuffer,
                               DWORD) override {
        lastRoot = root;
        *std::copy(label.begin(), label.end(), labelBuffer) = 0;
        *std::copy(fileSystem.begin(), fileSystem.end(), fileSystemBuffer) = 0;
        *serialNumber = serial;
        *maximumNameLength = nameLength;
        *flags = 0;
        return Passes("GetVolumeInformationW");
    }

    UINT GetDriveTypeW(const WCHAR*) override { return kind; }

    HANDLE CreateFileW(const WCHAR* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                       DWORD disposition, DWORD flags, HANDLE model) override {
        lastOpened = path;
        lastAccess = access;
        return FaultyApi::CreateFileW(path, access, share, security, disposition, flags, model);
    }

    WideString label = WIDE("DISC");
    WideString fileSystem = WIDE("NTFS");
    DWORD serial = 7;
    DWORD nameLength = 255;
    UINT kind = DRIVE_FIXED;

    WideString lastRoot;
    WideString lastOpened;
    DWORD lastAccess = 0;
};
