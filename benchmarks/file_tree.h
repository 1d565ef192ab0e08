// The trees on which files are measured, on drive C: of the current machine.
#pragma once

#include <filesystem>

namespace FileTree {

inline constexpr int kFilesPerFolder = 500;

// Where a path below C:\ lies on the host; its names are separated by "/".
std::filesystem::path HostPath(const std::string& path);

// Makes a folder below C:\ with so many folders in it, each with kFilesPerFolder empty files.
void Make(const std::string& path, int folders);

// Makes a folder below C:\ with so many empty files in it, named "Entry N.txt".
void MakeFlat(const std::string& path, int files);

}  // namespace FileTree
