// What is told of a file, a folder or a volume.
#pragma once

#include <string>

#include "filesystem/FileSpec.h"
#include "filesystem/dates/DateTime.h"

// What is asked of the disk about one file object, all at one time.
struct FileReport {
    // Raises what the library raises.
    explicit FileReport(const FileSpec& file);

    // A line for each fact.
    std::string ToText() const;

    // One line: attributes, size, time of last write, name.
    std::string ToRow() const;

    // One JSON object without a line end; times are in Coordinated Universal Time.
    std::string ToJson() const;

    std::string path;
    std::string name;
    std::string host;  // where it lies on the host
    bool isFolder = false;
    bool isShortcut = false;
    bool isBrokenLink = false;  // a link of the host that leads nowhere
    std::uint64_t size = 0;     // 0 for a folder and a broken link
    std::uint32_t attributes = 0;
    DateTime created;
    DateTime accessed;
    DateTime modified;
};

// The volume that a file object lies on.
std::string VolumeText(const FileSpec& file);
std::string VolumeJson(const FileSpec& file);
