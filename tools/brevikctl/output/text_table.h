// A table of texts for a terminal: columns as wide as their widest text, the last as it comes.
#pragma once

#include <string>
#include <vector>

using TextTable = std::vector<std::vector<std::string>>;

// Prints the rows to standard output, each made safe with SafeText; all have as many columns as the
// first.
void PrintTable(const TextTable& rows);
