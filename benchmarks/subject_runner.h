// Runs one subject and its peer side by side in this process.
#pragma once

#include <string>

#include "processes.h"

struct Figures {
    Nanoseconds ours{};
    Nanoseconds peer{};
};

// The child's side: measures the subject of this name and prints both medians. Returns the exit
// code.
int RunSubject(const std::string& name);

// The parent's side: starts this program again as such a child. Throws when it fails.
Figures MeasureSubject(const std::string& name);

// The same for the memory that the listing of a folder below C:\ takes, in KiB.
int RunListing(const std::string& folder);
double MeasureListing(const std::string& folder);
