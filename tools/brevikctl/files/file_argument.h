// Paths on the command line, and what is said when an operation on one fails.
#pragma once

#include <exception>
#include <string>

#include "filesystem/FileException.h"
#include "filesystem/FileSpec.h"

// The forms of a path, for the help of commands that take one.
inline constexpr const char* kPathForms =
    "A path is C:\\folder\\name, \\\\server\\share\\name, one relative to the current folder, or "
    "a\n"
    "host path that begins with /.";

// The file object of a path of the Windows grammar, or of a host path that begins with one slash;
// links before its last name are followed. Fails for a host path that lies on no drive, and for one
// that is no path.
FileSpec FileArgument(const std::string& path);

// The same for an object that is there. Fails where it is not.
FileSpec ExistingFile(const std::string& path);

// Where an object lies on the host; empty when it is not there.
std::string HostPath(const FileSpec& file);

// The same also for one that is not there yet, in a folder that is. Fails where it can lie nowhere.
std::string HostPlaceOf(const FileSpec& file);

// A path as narrow text.
std::string PlainText(const FilePath& path);

// What a failure says: of an operation on a file its path, its reason, and on a line of its own
// what can be done about it where that is known.
std::string Explanation(const std::exception& failure);

// Whether the failure is that of a copy that was stopped.
bool IsStop(const FileException& failure);
