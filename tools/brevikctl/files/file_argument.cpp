#include "brevikctl/files/file_argument.h"

#include <algorithm>
#include <filesystem>

#include "brevikctl/output/terminal.h"
#include "brevikctl/output/trouble.h"
#include "filesystem/FileSystem.h"
#include "platform/errors.h"
#include "platform/posix/paths/paths.h"
#include "platform/posix/text/host_text.h"
#include "text/SystemException.h"
#include "text/Texts.h"

namespace {

struct Hint {
    long number;
    const char* text;
};

const Hint kHints[] = {
    {Texts::fileExists.GetId(), "Nothing is overwritten: choose another name or delete it first."},
    {Texts::folderNotEmpty.GetId(), "--recursive deletes a folder with all that it holds."},
    {Texts::accessDenied.GetId(),
     "It may be held open by a process, be write-protected, or be a folder where a file is asked "
     "for."},
    {Texts::invalidFilePath.GetId(),
     "A path is C:\\folder\\name, \\\\server\\share\\name, or a host path that begins with /."},
    {Texts::fileNotFound.GetId(), "brevikctl file list shows what a folder holds."},
    {Texts::filePathNotFound.GetId(),
     "A folder on the way, the drive or the share is missing; brevikctl file mkdir makes folders."},
};

// A link is looked through everywhere but in the last name, which is the one that is meant.
std::filesystem::path WithoutLinks(const std::filesystem::path& path) {
    const std::filesystem::path name = path.filename();
    if (name.empty() || name == "." || name == "..") {
        std::string whole = std::filesystem::weakly_canonical(path).string();
        while (whole.size() > 1 && whole.back() == '/') {
            whole.pop_back();
        }
        return whole;
    }
    return std::filesystem::weakly_canonical(path.parent_path()) / name;
}

}  // namespace

FileSpec FileArgument(const std::string& path) {
    FileSystem::EnsureStarted();
    const bool isHostPath = path.starts_with("/") && !path.starts_with("//");
    if (!isHostPath) {
        if (path.empty()) {
            Fail("an empty path names nothing");
        }
        return FileSpec(FilePath(path));
    }
    const std::u16string known = WindowsPath(WithoutLinks(path).string());
    if (known.empty()) {
        Fail(Quoted(path) + " lies on no drive or share of the machine");
    }
    return FileSpec(FilePath(known));
}

FileSpec ExistingFile(const std::string& path) {
    FileSpec file = FileArgument(path);
    if (!file.IsPresent()) {
        Fail("no file " + Quoted(path), "brevikctl file list shows what a folder holds.");
    }
    return file;
}

std::string HostPath(const FileSpec& file) {
    const HostFile found = FindFile(file.GetNativePath());
    if (!found.HasName()) {
        return {};
    }
    std::error_code error;
    const std::filesystem::path path = std::filesystem::canonical(found.path, error);
    return error ? found.path : path.string();
}

std::string HostPlaceOf(const FileSpec& file) {
    const HostFile found = FindFile(file.GetNativePath());
    if (found.path.empty()) {
        Fail("the folder of " + Quoted(PlainText(file.GetPath())) + " is not there",
             "brevikctl file mkdir makes folders.");
    }
    return found.path;
}

std::string PlainText(const FilePath& path) {
    return Utf8ToNarrow(path);
}

std::string Explanation(const std::exception& failure) {
    const auto* ofFile = dynamic_cast<const FileException*>(&failure);
    if (ofFile == nullptr) {
        return failure.what();
    }
    const std::string path = PlainText(ofFile->GetPath());
    const std::string text = (path.empty() ? "" : Quoted(path) + ": ") + SafeText(failure.what());
    const auto* hint = std::ranges::find(kHints, ofFile->GetNumber(), &Hint::number);
    return hint == std::end(kHints) ? text : text + "\n" + hint->text;
}

bool IsStop(const FileException& failure) {
    const auto* system = dynamic_cast<const SystemException::Win32*>(failure.GetInner());
    return system != nullptr && system->GetCode() == ERROR_REQUEST_ABORTED;
}
