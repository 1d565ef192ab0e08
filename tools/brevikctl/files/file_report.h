// What is known of a file, a folder or a volume.
#pragma once

#include <string>

#include "brevikctl/output/facts.h"
#include "filesystem/DateTime.h"
#include "filesystem/FileSpec.h"

// What is asked of the disk about one file object, all at one time.
struct FileReport {
    // Raises what the library raises.
    explicit FileReport(const FileSpec& file);

    // In JSON the times are in Coordinated Universal Time.
    Facts ToFacts() const;

    // One line: attributes, size, time of last write, name.
    std::string ToRow() const;

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
Facts VolumeFacts(const FileSpec& file);
