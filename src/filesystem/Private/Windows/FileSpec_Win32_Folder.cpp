// The folder side of a file object: listing it, and deleting it with all that
// it holds.

#include <memory>
#include <string_view>

#include "filesystem/FileSpec.h"
#include "filesystem/Private/Windows/API.h"
#include "filesystem/Private/Windows/FileSpec_Win32.h"

class FileSpec_Win32::Iterator : public FolderSpec_Iterator {
  public:
    explicit Iterator(const SharedHandle<FileSpec_Win32>& listed) : folder(listed) {
        const WideString pattern =
            folder->GetLongPath() + (folder->IsRoot() ? WIDE("*.*") : WIDE("\\*.*"));
        find = FileSystem_Win32::GetApi()->FindFirstFileW(pattern.c_str(), &data);
        folder->Require(find != INVALID_HANDLE_VALUE);
        PassOver();
    }
    Iterator(const Iterator&) = delete;
    Iterator& operator=(const Iterator&) = delete;
    ~Iterator() override { End(); }

    SharedHandle<FileSpec_IF> Next() override {
        if (find == nullptr) {
            return nullptr;
        }
        SharedHandle<FileSpec_IF> entry = folder->MakeChildSpec(data.cFileName);
        kind_ = {.isFolder = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0,
                 .isLink = (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0};
        Step();
        PassOver();
        return entry;
    }

  private:
    // A step that fails for any reason ends the listing.
    void Step() {
        if (!FileSystem_Win32::GetApi()->FindNextFileW(find, &data)) {
            End();
        }
    }

    // The folder itself and the one above are no entries, wherever a platform lists them. Nor are
    // names that a path cannot spell: it loses dots at its end.
    void PassOver() {
        while (find != nullptr &&
               std::basic_string_view<WCHAR>(data.cFileName).ends_with(WIDE('.'))) {
            Step();
        }
    }

    void End() {
        if (find != nullptr) {
            FindClose(find);
            find = nullptr;
        }
    }

    SharedHandle<FileSpec_Win32> folder;
    HANDLE find = nullptr;  // null once the listing has ended
    WIN32_FIND_DATAW data;  // the entry that the next call of Next returns
};

SharedHandle<FolderSpec_Iterator> FileSpec_Win32::MakeIterator(
    const SharedHandle<FolderSpec_IF>& self) {
    return std::make_shared<Iterator>(std::static_pointer_cast<FileSpec_Win32>(self));
}

void FileSpec_Win32::DeleteContents(bool recursive, const SharedHandle<FolderSpec_IF>& self) {
    const SharedHandle<FolderSpec_Iterator> listing = MakeIterator(self);
    while (const SharedHandle<FileSpec_IF> entry = listing->Next()) {
        if (!listing->GetKind()->isFolder) {
            static_cast<const FileSpec_Win32&>(*entry).DeletePresent(false);
        } else if (recursive) {
            const auto folder = std::dynamic_pointer_cast<FolderSpec_IF>(entry);
            folder->DeleteTree(folder);
        }
    }
}

void FileSpec_Win32::DeleteTree(const SharedHandle<FolderSpec_IF>& self) {
    if (!IsPresent()) {
        return;
    }
    // Of a link to a folder elsewhere the link goes, and what it leads to stays.
    if ((GetPlatformAttributes().dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        DeleteContents(true, self);
    }
    Delete();
}
