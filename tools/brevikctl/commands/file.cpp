#include <signal.h>

#include <functional>
#include <string>

#include "brevikctl/commands/command.h"
#include "brevikctl/commands/commands.h"
#include "brevikctl/files/file_argument.h"
#include "brevikctl/files/file_report.h"
#include "brevikctl/files/progress_bar.h"
#include "brevikctl/output/facts.h"
#include "brevikctl/output/terminal.h"
#include "brevikctl/output/trouble.h"
#include "filesystem/utilities/FileUtilities.h"
#include "text/Texts.h"

namespace {

struct Options {
    std::string path;
    std::string second;  // a target, a base or a pattern
    bool recursive = false;
    bool shallow = false;
    bool folders = false;
    bool json = false;
};

void RequirePresent(const FileSpec& file) {
    if (!file.IsPresent()) {
        ThrowFileError(ERROR_FILE_NOT_FOUND, file.GetPath());
    }
}

void Stat(const Options& options) {
    PrintFacts(FileFacts(FileArgument(options.path)), options.json);
}

// An entry that cannot be described does not keep the others back.
void List(const Options& options) {
    bool isWhole = true;
    for (FolderIterator entries = FolderSpec(FileArgument(options.path)).MakeIterator();
         !entries.GetCurrent().IsNull(); entries.Advance()) {
        try {
            const FileSpec entry = entries.GetCurrent();
            PrintLine(options.json ? ToObject(FileFacts(entry)) : FileRow(entry));
        } catch (const FileException& failure) {
            if (failure.GetNumber() != Texts::fileNotFound.GetId()) {
                Say(Explanation(failure));
                isWhole = false;
            }
        }
    }
    if (!isWhole) {
        throw AllSaid();
    }
}

void Find(const Options& options) {
    const FolderSpec folder(FileArgument(options.path));
    const auto find = options.folders ? FileSystem::FindFolders : FileSystem::FindFiles;
    for (const FileSpec& file : find(folder, FilePath(options.second), options.recursive)) {
        const std::string path = PlainText(file.GetPath());
        if (options.json) {
            PrintFacts({{"path", path}}, true);
        } else {
            PrintLine(path);
        }
    }
}

// A folder that exists takes the copy in, under the source's name.
FileSpec TargetOf(const FileSpec& source, const std::string& path) {
    const FileSpec target = FileArgument(path);
    const bool isInto = target.IsPresent() && target.IsFolder() && !source.IsRoot();
    return isInto ? target.MakeChild(source.GetName()) : target;
}

// Runs a copy with its bar. When a signal stops it, the program ends by that signal.
void RunWithProgress(const std::function<void(Tickler&)>& copy) {
    try {
        ProgressBar bar;
        Tickler tickler(&bar);
        copy(tickler);
        return;
    } catch (const FileException& failure) {
        if (!IsStop(failure)) {
            throw;
        }
        Say("stopped at " + Quoted(PlainText(failure.GetPath())) +
            "; that file has no copy, what was copied before it stays");
    }
    signal(StopSignals::Last(), SIG_DFL);
    raise(StopSignals::Last());
}

void Copy(const Options& options) {
    const FileSpec source = FileArgument(options.path);
    RequirePresent(source);
    const FileSpec target = TargetOf(source, options.second);
    if (source.IsFolder() && !options.recursive) {
        Fail(Quoted(options.path) + " is a folder",
             "--recursive copies it with all that it holds.");
    }
    RunWithProgress([&](Tickler& tickler) {
        if (source.IsFolder()) {
            FileSystem::CopyFolder(target, source, true, tickler);
        } else {
            FileSystem::CopyFile(target, source, tickler);
        }
    });
}

void Move(const Options& options) {
    const FileSpec source = FileArgument(options.path);
    RequirePresent(source);
    const FileSpec target = TargetOf(source, options.second);
    RunWithProgress([&](Tickler& tickler) { FileSystem::Move(target, source, tickler); });
}

void Delete(const Options& options) {
    const FileSpec file = FileArgument(options.path);
    RequirePresent(file);
    if (options.recursive && file.IsFolder()) {
        FolderSpec(file).DeleteTree();
    } else {
        file.Delete();
    }
}

void Mkdir(const Options& options) {
    FileSystem::CreatePath(FileArgument(options.path));
}

void Size(const Options& options) {
    const FileSpec file = FileArgument(options.path);
    PrintLine(std::to_string(file.IsFolder()
                                 ? FileSystem::GetFolderSize(FolderSpec(file), !options.shallow)
                                 : file.GetFileSize()));
}

void Relative(const Options& options) {
    const FilePath way =
        FileSystem::MakeRelativePath(FileArgument(options.path), FileArgument(options.second));
    if (way.IsEmpty()) {
        Fail("there is no way from one volume to another");
    }
    PrintLine(PlainText(way));
}

void Volume(const Options& options) {
    const FileSpec file = FileArgument(options.path.empty() ? "." : options.path);
    PrintFacts(VolumeFacts(file), options.json);
}

}  // namespace

void AddFileCommands(CLI::App& app) {
    CLI::App& file = AddGroup(app, "file", "Files, folders and volumes of the machine");
    file.footer(std::string(kPathForms) + "\n");
    constexpr const char* kInto = "Its new path, or a folder that exists and takes it in";

    Command(file, "stat", "Show what is known of a file or folder", Stat)
        .Required("PATH", &Options::path, "File or folder")
        .Json();
    Command(file, "list", "Show the entries of a folder", List)
        .Required("FOLDER", &Options::path, "Folder")
        .Json("One JSON object a line");
    Command(file, "find", "Show the entries of a folder whose names match", Find)
        .Required("FOLDER", &Options::path, "Folder")
        .Required("PATTERN", &Options::second,
                  "* stands for any characters, ? for any one but a dot; a * at the end for at "
                  "least one")
        .Flag("-r,--recursive", &Options::recursive, "In all folders below as well")
        .Flag("--folders", &Options::folders, "Only folders, which are then not looked into")
        .Json("One JSON object a line");
    Command(file, "copy", "Copy a file or folder; nothing is overwritten", Copy)
        .Required("SOURCE", &Options::path, "File or folder")
        .Required("TARGET", &Options::second, kInto)
        .Flag("-r,--recursive", &Options::recursive, "A folder with all that it holds");
    Command(file, "move", "Move or rename a file or folder", Move)
        .Required("SOURCE", &Options::path, "File or folder")
        .Required("TARGET", &Options::second, kInto);
    Command(file, "delete", "Delete a file or an empty folder, also a read-only one", Delete)
        .Required("PATH", &Options::path, "File or folder")
        .Flag("-r,--recursive", &Options::recursive, "A folder with all that it holds");
    Command(file, "mkdir", "Make a folder and those above it that are missing", Mkdir)
        .Required("FOLDER", &Options::path, "Folder");
    Command(file, "size", "Print the bytes in the files of a folder and all below it", Size)
        .Required("PATH", &Options::path, "Folder or file")
        .Flag("--shallow", &Options::shallow, "Only the folder's own files");
    Command(file, "relative", "Print the way from a folder to a file or folder", Relative)
        .Required("TARGET", &Options::path, "File or folder")
        .Required("BASE", &Options::second, "The folder where the way begins");
    Command(file, "volume", "Show the volume that a path lies on", Volume)
        .Option("PATH", &Options::path, "Any path; the current folder by default")
        .Json();
}
