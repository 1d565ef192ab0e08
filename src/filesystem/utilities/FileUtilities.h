// Copying and moving, scans, unique names, the folders of the process, and relative paths.
//
// A failure raises a FileException unless stated otherwise and leaves what was done so far. Any
// thread, once FileSystem_Start has run.
//
// No operation on a tree follows a link to a folder in it, which may lead back into the tree or to
// one that was not named. The folder that it is given may be such a link.
#pragma once

#include <cstdint>
#include <vector>

#include "filesystem/FileSpec.h"
#include "filesystem/FolderSpec.h"
#include "filesystem/ticklers/Tickler.h"

namespace FileSystem {

// Copies a file with its time of last write, and with its attributes where the platform copies it.
// A target that exists raises "file exists". Each file is reported from 0.0 to 1.0 of the sink's
// own range, which the tickler is set to, with the message "copying" and the source's path. When
// the sink cancels, the copy raises ERROR_REQUEST_ABORTED and leaves no target.
void CopyFile(const FileSpec& target, const FileSpec& source, Tickler& tickler);

// Copies the files and shortcuts of a folder and then, where `recursive`, its folders. A missing
// target is made, with the source's attributes; one that exists is added to. One below the source
// raises "access denied" where `recursive`. Links to folders, and those that lead nowhere, are left
// out. Progress as above, file by file.
void CopyFolder(const FileSpec& target, const FileSpec& source, bool recursive, Tickler& tickler);

// Renames the source or, where the platform refuses, copies it whole and then deletes it: a folder
// with something in it that a copy leaves out raises "access denied" before anything is copied.
void Move(const FileSpec& target, const FileSpec& source, Tickler& tickler);

// Makes a folder and all folders above it that are missing. A file on the way raises "file exists"
// with that file's path.
void CreatePath(const FileSpec& folder);

// A child of the folder that does not exist at this moment: the first free one of name.extension,
// name1.extension up to name999999.extension. A "*" in the name is the place for the number; there
// is one in every candidate then. Nothing is made. Null when none is free.
FileSpec MakeUniqueName(const FileSpec& folder, const FilePath& name, const FilePath& extension);

// The entries whose names match the pattern (FilePath::IsMatch): those of the folder in the
// platform's order, then those of each folder below it. Where `recursive`, folders are looked into
// and never found themselves, links to folders neither; else they are found like files.
std::vector<FileSpec> FindFiles(const FolderSpec& folder, const FilePath& pattern, bool recursive);

// The folders whose names match, in the same order. One that matches is not looked into.
std::vector<FileSpec> FindFolders(const FolderSpec& folder, const FilePath& pattern,
                                  bool recursive);

// The bytes in the files of a folder and, where `recursive`, of all folders below it.
std::uint64_t GetFolderSize(const FolderSpec& folder, bool recursive);

// The file of the host program, and that of the module given to FileSystem_Start.
FileSpec GetApplicationFile();
FileSpec GetLibraryFile();

// The process's own temporary folder, made at the first call and again when it has vanished.
// FileSystem_Stop deletes it with all that it holds.
FileSpec GetTempFolder();

// The current folder of the process, against which relative paths are resolved.
FileSpec GetCurrentFolder();
void SetCurrentFolder(const FileSpec& folder);

// Whether a file of this name lies beside the host program or the library, or in the folder
// "Velmar Works" beside one of them.
bool FindProgramFile(const FilePath& name);

// What has this name beside the library, present or not. Raises "access denied" for a folder where
// a file is asked for, and the other way round.
FileSpec GetSiblingFile(const FilePath& name);
FileSpec GetSiblingFolder(const FilePath& name);

// The way from `base`, a folder, to `target`, such as "./../../b", with "/" between names. Empty
// for a null base and for objects on two volumes; a null target raises.
FilePath MakeRelativePath(const FileSpec& target, const FileSpec& base);

}  // namespace FileSystem
