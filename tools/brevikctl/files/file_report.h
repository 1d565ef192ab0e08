// What is known of a file, a folder or a volume. Raises what the library raises.
#pragma once

#include <string>

#include "brevikctl/output/facts.h"
#include "filesystem/FileSpec.h"

// In JSON the times are in Coordinated Universal Time.
Facts FileFacts(const FileSpec& file);

// One line: attributes, size, time of last write, name.
std::string FileRow(const FileSpec& file);

// The volume that a file object lies on.
Facts VolumeFacts(const FileSpec& file);
