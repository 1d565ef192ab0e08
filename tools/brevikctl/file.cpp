#include "file.h"

#include <signal.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include "file_argument.h"
#include "file_report.h"
#include "filesystem/utilities/FileUtilities.h"
#include "progress_bar.h"
#include "terminal.h"
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

void PrintObject(const std::string& json) {
    std::printf("%s\n", json.c_str());
}

void RequirePresent(const FileSpec& file) {
    if (!file.IsPresent()) {
        ThrowFileError(ERROR_FILE_NOT_FOUND, file.GetPath());
    }
}

void Stat(const Options& options) {
    const FileReport report{FileArgument(options.path)};
    if (options.json) {
        PrintObject(report.ToJson());
    } else {
        std::fputs(report.ToText().c_str(), stdout);
    }
}

// An entry that cannot be described does not keep the others back.
void List(const Options& options) {
    bool isWhole = true;
    for (FolderIterator entries = FolderSpec(FileArgument(options.path)).MakeIterator();
         !entries.GetCurrent().IsNull(); entries.Advance()) {
        try {
            const FileReport report(entries.GetCurrent());
            PrintObject(options.json ? report.ToJson() : report.ToRow());
        } catch (const FileException& failure) {
            if (failure.GetNumber() != Texts::fileNotFound.GetId()) {
                std::fprintf(stderr, "brevikctl: %s\n", Explanation(failure).c_str());
                isWhole = false;
            }
        }
    }
    if (!isWhole) {
        throw CLI::RuntimeError(1);
    }
}

void Find(const Options& options) {
    const FolderSpec folder(FileArgument(options.path));
    const auto find = options.folders ? FileSystem::FindFolders : FileSystem::FindFiles;
    for (const FileSpec& file : find(folder, FilePath(options.second), options.recursive)) {
        const std::string path = PlainText(file.GetPath());
        if (options.json) {
            PrintObject("{\"path\":" + JsonString(path) + "}");
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
        std::fprintf(stderr,
                     "brevikctl: stopped at '%s'; that file has no copy, what was copied before it "
                     "stays\n",
                     SafeText(PlainText(failure.GetPath())).c_str());
    }
    signal(ProgressBar::GetSignal(), SIG_DFL);
    raise(ProgressBar::GetSignal());
}

void Copy(const Options& options) {
    const FileSpec source = FileArgument(options.path);
    RequirePresent(source);
    const FileSpec target = TargetOf(source, options.second);
    if (source.IsFolder() && !options.recursive) {
        throw std::runtime_error("'" + SafeText(options.path) +
                                 "' is a folder\n--recursive copies it with all that it holds.");
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
        throw std::runtime_error("there is no way from one volume to another");
    }
    PrintLine(PlainText(way));
}

void Volume(const Options& options) {
    const FileSpec file = FileArgument(options.path.empty() ? "." : options.path);
    if (options.json) {
        PrintObject(VolumeJson(file));
    } else {
        std::fputs(VolumeText(file).c_str(), stdout);
    }
}

void Run(void (*command)(const Options&), const Options& options) {
    try {
        command(options);
    } catch (const FileException& failure) {
        throw std::runtime_error(Explanation(failure));
    }
}

// A command on a path, with the options that it takes.
class Command {
  public:
    Command(CLI::App* parent, const char* name, const char* description,
            void (*run)(const Options&))
        : command_(parent->add_subcommand(name, description)) {
        command_->callback([run, options = options_] { Run(run, *options); });
    }

    Command& Path(const char* name, const char* description, bool isRequired = true) {
        command_->add_option(name, options_->path, description)->required(isRequired);
        return *this;
    }
    Command& Second(const char* name, const char* description) {
        command_->add_option(name, options_->second, description)->required();
        return *this;
    }
    Command& Flag(const char* name, bool Options::*flag, const char* description) {
        command_->add_flag(name, (*options_).*flag, description);
        return *this;
    }

  private:
    std::shared_ptr<Options> options_ = std::make_shared<Options>();
    CLI::App* command_;
};

}  // namespace

void AddFileCommands(CLI::App& app) {
    CLI::App* file = app.add_subcommand("file", "Files, folders and volumes of the machine");
    file->require_subcommand(1);
    file->footer(
        "A path is C:\\folder\\name, \\\\server\\share\\name, one relative to the current folder, "
        "or a\nhost path that begins with /.\n");
    constexpr const char* kInto = "Its new path, or a folder that exists and takes it in";

    Command(file, "stat", "Show what is known of a file or folder", Stat)
        .Path("PATH", "File or folder")
        .Flag("--json", &Options::json, "One JSON object");
    Command(file, "list", "Show the entries of a folder", List)
        .Path("FOLDER", "Folder")
        .Flag("--json", &Options::json, "One JSON object a line");
    Command(file, "find", "Show the entries of a folder whose names match", Find)
        .Path("FOLDER", "Folder")
        .Second("PATTERN",
                "* stands for any characters, ? for any one but a dot; a * at the end for at least "
                "one")
        .Flag("-r,--recursive", &Options::recursive, "In all folders below as well")
        .Flag("--folders", &Options::folders, "Only folders, which are then not looked into")
        .Flag("--json", &Options::json, "One JSON object a line");
    Command(file, "copy", "Copy a file or folder; nothing is overwritten", Copy)
        .Path("SOURCE", "File or folder")
        .Second("TARGET", kInto)
        .Flag("-r,--recursive", &Options::recursive, "A folder with all that it holds");
    Command(file, "move", "Move or rename a file or folder", Move)
        .Path("SOURCE", "File or folder")
        .Second("TARGET", kInto);
    Command(file, "delete", "Delete a file or an empty folder, also a read-only one", Delete)
        .Path("PATH", "File or folder")
        .Flag("-r,--recursive", &Options::recursive, "A folder with all that it holds");
    Command(file, "mkdir", "Make a folder and those above it that are missing", Mkdir)
        .Path("FOLDER", "Folder");
    Command(file, "size", "Print the bytes in the files of a folder and all below it", Size)
        .Path("PATH", "Folder or file")
        .Flag("--shallow", &Options::shallow, "Only the folder's own files");
    Command(file, "relative", "Print the way from a folder to a file or folder", Relative)
        .Path("TARGET", "File or folder")
        .Second("BASE", "The folder where the way begins");
    Command(file, "volume", "Show the volume that a path lies on", Volume)
        .Path("PATH", "Any path; the current folder by default", false)
        .Flag("--json", &Options::json, "One JSON object");
}
