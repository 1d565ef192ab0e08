// Child processes of a run.
#pragma once

#include <chrono>
#include <string>
#include <vector>

using Nanoseconds = std::chrono::duration<double, std::nano>;

// The middle of the figures. REQUIRES: there is one.
Nanoseconds Median(std::vector<Nanoseconds> figures);

// Runs a program to its end and gives its standard output. Throws when it cannot be run or fails.
std::string OutputOf(const std::vector<std::string>& command);

// The time from a program's start to its end. Throws as above.
Nanoseconds TimeOf(const std::string& program);
