#include <algorithm>
#include <exception>
#include <vector>

#include "filesystem/FileException.h"
#include "filesystem/Private/Windows/API.h"
#include "filesystem/Private/Windows/FileSpec_Win32.h"
#include "filesystem/utilities/FileUtilities.h"
#include "text/Texts.h"

namespace FileSystem {
namespace {

// Sets the tickler to the sink's own range, and reports 0.0 and the message "copying" with the
// path.
void BeginCopy(Tickler& tickler, const FilePath& source) {
    tickler.SetBase(0.0);
    tickler.SetScale(1.0);
    tickler.SetProgress(0.0);
    VelmarTextArgs message(Texts::copying);
    message.push_back(source);
    tickler.SetMessage(message);
}

constexpr std::uint64_t kLargestBlock = 65536;

// What the platform's copy hands to its progress routine.
struct CopyContext {
    Tickler* tickler;
    FilePath source;
    FilePath target;
    std::exception_ptr failure;  // out of the sink; it must not pass through the platform
};

DWORD Report(CopyContext& context, double share, bool isFirst) {
    if (isFirst) {
        BeginCopy(*context.tickler, context.source);
    }
    context.tickler->SetProgress(share);
    return context.tickler->IsCancelled() ? PROGRESS_CANCEL : PROGRESS_CONTINUE;
}

DWORD WINAPI OnProgress(LARGE_INTEGER total, LARGE_INTEGER done, LARGE_INTEGER, LARGE_INTEGER,
                        DWORD stream, DWORD reason, HANDLE, HANDLE, void* data) {
    CopyContext& context = *static_cast<CopyContext*>(data);
    const double share = total.QuadPart == 0 ? 1.0
                                             : static_cast<double>(done.QuadPart) /
                                                   static_cast<double>(total.QuadPart);
    try {
        return Report(context, share, stream == 1 && reason == CALLBACK_STREAM_SWITCH);
    } catch (...) {
        context.failure = std::current_exception();
        return PROGRESS_CANCEL;
    }
}

void CopyByPlatform(const FileSpec& target, const FileSpec& source, Tickler& tickler) {
    CopyContext context = {&tickler, source.GetPath(), target.GetPath(), nullptr};
    const BOOL copied = FileSystem_Win32::GetApi()->CopyFileExW(
        source.GetNativePath().c_str(), target.GetNativePath().c_str(), OnProgress, &context,
        nullptr, COPY_FILE_FAIL_IF_EXISTS);
    const DWORD error = GetLastError();
    if (context.failure != nullptr) {
        std::rethrow_exception(context.failure);
    }
    if (!copied) {
        ThrowFileError(error, context.source);
    }
}

// False when the sink wants the copy to stop.
bool CopyBlocks(const FileChannel& target, const FileChannel& source, const Tickler& tickler) {
    const std::uint64_t size = source.GetSize();
    std::vector<char> block(static_cast<std::size_t>(std::min(size, kLargestBlock)));
    std::uint64_t bytesDone = 0;
    for (;;) {
        std::uint32_t count = 0;
        source.Read(block.data(), static_cast<std::uint32_t>(block.size()), count);
        if (count == 0) {
            return true;
        }
        target.Write(block.data(), count);
        bytesDone += count;
        tickler.SetProgress(static_cast<double>(bytesDone) / static_cast<double>(size));
        if (tickler.IsCancelled()) {
            return false;
        }
    }
}

[[noreturn]] void AbandonCopy(const FileSpec& target, const FileSpec& source) {
    try {
        target.Delete();
    } catch (const std::exception&) {
        // The stop is what the caller hears of.
    }
    ThrowFileError(ERROR_REQUEST_ABORTED, source.GetPath());
}

void CopyByBlocks(const FileSpec& target, const FileSpec& source, Tickler& tickler) {
    if (target.IsPresent()) {
        ThrowFileError(ERROR_FILE_EXISTS, target.GetPath());
    }
    BeginCopy(tickler, source.GetPath());
    const FileChannel from = source.MakeFileChannel(FileChannelMode::kRead);
    const FileChannel to =
        target.MakeFileChannel(FileChannelMode::kWrite | FileChannelMode::kCreate);
    const bool isWhole = CopyBlocks(to, from, tickler);
    // Setting the time opens the file without sharing.
    to.Close();
    from.Close();
    if (!isWhole) {
        AbandonCopy(target, source);
    }
    target.SetModificationTime(source.GetModificationTime());
}

bool IsOfPlatform(const FileSpec& file) {
    return dynamic_cast<FileSpec_Win32*>(FileSpec_Impl(file).Get()) != nullptr;
}

bool IsBelow(const FileSpec& file, const FileSpec& folder) {
    for (FileSpec above = file.MakeParent(); !above.IsNull(); above = above.MakeParent()) {
        if (above.IsEqual(folder)) {
            return true;
        }
    }
    return false;
}

void CopyTree(const FileSpec& target, const FileSpec& source, bool recursive, Tickler& tickler) {
    if (!target.IsPresent()) {
        target.CreateFolder();
        target.SetAttributes(source.GetAttributes());
    }
    // No listing stays open during a descent.
    std::vector<FileSpec> folders;
    for (FolderIterator entries = FolderSpec(source).MakeIterator(); entries; entries.Advance()) {
        const FileSpec& entry = entries.GetCurrent();
        if (entries.HasNoContents()) {
            continue;
        }
        if (!entries.IsFolder() || entry.IsAlias()) {
            CopyFile(target.MakeChild(entry.GetName()), entry, tickler);
        } else if (recursive) {
            folders.push_back(entry);
        }
    }
    for (const FileSpec& folder : folders) {
        CopyTree(target.MakeChild(folder.GetName()), folder, recursive, tickler);
    }
}

bool TryRename(const FileSpec& target, const FileSpec& source) {
    try {
        source.Rename(target);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

// What a copy of the folder would leave out, the first one met; null when it would be whole.
FileSpec FindLeftOut(const FolderSpec& folder) {
    for (FolderIterator entries = folder.MakeIterator(); entries; entries.Advance()) {
        const FileSpec& entry = entries.GetCurrent();
        if (entries.HasNoContents()) {
            return entry;
        }
        if (entries.IsFolder() && !entry.IsAlias()) {
            const FileSpec below = FindLeftOut(FolderSpec(entry));
            if (!below.IsNull()) {
                return below;
            }
        }
    }
    return {};
}

void MoveFolderByCopying(const FileSpec& target, const FileSpec& source, Tickler& tickler) {
    const FolderSpec folder(source);
    const FileSpec leftOut = FindLeftOut(folder);
    if (!leftOut.IsNull()) {
        ThrowFileError(ERROR_ACCESS_DENIED, leftOut.GetPath());
    }
    CopyFolder(target, source, true, tickler);
    folder.DeleteTree();
}

}  // namespace

void CopyFile(const FileSpec& target, const FileSpec& source, Tickler& tickler) {
    if (IsOfPlatform(target) && IsOfPlatform(source)) {
        CopyByPlatform(target, source, tickler);
    } else {
        CopyByBlocks(target, source, tickler);
    }
}

void CopyFolder(const FileSpec& target, const FileSpec& source, bool recursive, Tickler& tickler) {
    // Such a copy would go on to copy itself.
    if (recursive && IsBelow(target, source)) {
        ThrowFileError(ERROR_SHARING_VIOLATION, target.GetPath());
    }
    CopyTree(target, source, recursive, tickler);
}

void Move(const FileSpec& target, const FileSpec& source, Tickler& tickler) {
    if (!TryRename(target, source)) {
        if (source.IsFile()) {
            CopyFile(target, source, tickler);
            source.Delete();
        } else if (source.IsFolder()) {
            MoveFolderByCopying(target, source, tickler);
        } else {
            ThrowFileError(ERROR_ACCESS_DENIED, source.GetPath());
        }
    }
    BeginCopy(tickler, source.GetPath());
    tickler.SetProgress(1.0);
}

}  // namespace FileSystem
