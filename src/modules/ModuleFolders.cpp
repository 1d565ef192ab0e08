#include "modules/ModuleFolders.h"

#include <algorithm>
#include <cstdio>
#include <memory>

#include "platform/component_model.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/modules.h"
#include "platform/processes.h"
#include "platform/text.h"

namespace {

constexpr DWORD kPathCapacity = MAX_PATH;
constexpr DWORD kAllProcessRights = 0x1F0FFF;

WideString ToLower(WideString path) {
    for (WCHAR& unit : path) {
        unit = static_cast<WCHAR>(towlower(unit));
    }
    return path;
}

// The path up to its last backslash; the whole of a path without one.
WideString FolderOf(WideString path) {
    path.resize(std::min(path.rfind(WIDE('\\')), path.size()));
    return path;
}

// The folder of a path that an operation wrote with this length. A path that filled its buffer was
// cut and names some other folder, so it counts as none.
WideString FolderOf(const WCHAR (&path)[kPathCapacity], DWORD length) {
    return length > 0 && length < kPathCapacity ? FolderOf(WideString(path, length)) : WideString();
}

// The parent's number; 0 when this process is not listed.
DWORD ParentProcessId() {
    const ScopedHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    if (!snapshot) {
        return 0;
    }
    PROCESSENTRY32W entry = {};
    entry.dwSize = static_cast<DWORD>(sizeof entry);
    const DWORD self = GetCurrentProcessId();
    for (BOOL more = Process32FirstW(snapshot.Get(), &entry); more;
         more = Process32NextW(snapshot.Get(), &entry)) {
        if (entry.th32ProcessID == self) {
            return entry.th32ParentProcessID;
        }
    }
    return 0;
}

bool IsReadableFile(const WideString& folder, const WideString& fileName) {
    std::FILE* file = _wfopen((folder + WIDE("\\") + fileName).c_str(), WIDE("r"));
    if (file == nullptr) {
        return false;
    }
    std::fclose(file);
    return true;
}

WideString SharedLibraryFolder() {
    WCHAR path[kPathCapacity];
    ITEMIDLIST* list = nullptr;
    if (FAILED(SHGetSpecialFolderLocation(nullptr, CSIDL_PROGRAM_FILES_COMMON, &list))) {
        return {};
    }
    const bool known = SHGetPathFromIDListW(list, path);
    CoTaskMemFree(list);
    return known ? path + WideString(WIDE("\\Ondrel Shared\\DllShared")) : WideString();
}

// Whether a library lies beside a program, and may be taken from there.
bool LiesBeside(const WideString& programFolder, const WideString& fileName) {
    return IsReadableFile(programFolder, fileName) && MayHoldLibraries(programFolder.c_str());
}

WideString SpelledProcessFolder() {
    WCHAR path[kPathCapacity];
    return FolderOf(path, GetModuleFileNameW(GetModuleHandleW(nullptr), path, kPathCapacity));
}

WideString SpelledParentProcessFolder() {
    const DWORD parent = ParentProcessId();
    const ScopedHandle process(parent != 0 ? OpenProcess(kAllProcessRights, FALSE, parent)
                                           : nullptr);
    if (!process) {
        return {};
    }
    WCHAR path[kPathCapacity];
    return FolderOf(path, GetModuleFileNameExW(process.Get(), nullptr, path, kPathCapacity));
}

}  // namespace

WideString GetProcessFolder() {
    return ToLower(SpelledProcessFolder());
}

WideString GetParentProcessFolder() {
    return ToLower(SpelledParentProcessFolder());
}

WideString FindLibraryFolder(const WideString& fileName) {
    return ToLower(FindSpelledLibraryFolder(fileName));
}

WideString FindSpelledLibraryFolder(const WideString& fileName) {
    WideString folder = SpelledProcessFolder();
    if (LiesBeside(folder, fileName)) {
        return folder;
    }
    folder = SpelledParentProcessFolder();
    if (!folder.empty() && LiesBeside(folder, fileName)) {
        return folder;
    }
    WCHAR path[kPathCapacity];
    WCHAR* filePart = nullptr;
    folder = FolderOf(
        path, SearchPathW(nullptr, fileName.c_str(), nullptr, kPathCapacity, path, &filePart));
    if (!folder.empty()) {
        return folder;
    }
    folder = SharedLibraryFolder();
    return !folder.empty() && IsReadableFile(folder, fileName) ? folder : WideString();
}
