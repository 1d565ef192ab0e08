// Paths on the command line, and what is told when an operation on one fails.
#pragma once

#include <string>

#include "filesystem/FileException.h"
#include "filesystem/FileSpec.h"

// The file object of a path of the Windows grammar, or of a host path that begins with one slash;
// links ahead of its last name are followed. Throws std::runtime_error for a host path that lies on
// no drive, and a FileException for one that is no path.
FileSpec FileArgument(const std::string& path);

// Where an object lies on the host; empty when it is not there.
std::string HostPath(const FileSpec& file);

// The same also for one that is not there yet, in a folder that is. Throws std::runtime_error where
// it can lie nowhere.
std::string HostPlaceOf(const FileSpec& file);

// A path as narrow text.
std::string PlainText(const FilePath& path);

// What a failure is told as: path, reason, and on a line of its own what can be done about it where
// that is known.
std::string Explanation(const FileException& failure);

// Whether the failure is that of a copy which was told to stop.
bool IsStop(const FileException& failure);
