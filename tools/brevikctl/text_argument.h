// Texts on the command line.
#pragma once

#include <string>

// The text in UTF-16. Throws std::runtime_error for one that is no UTF-8.
std::u16string WideArgument(const std::string& text);
