// Files of the host as a whole. Failures are std::system_error.
#pragma once

#include <cstddef>
#include <string>

// The bytes of a plain file, cut one byte after `limit`.
std::string ReadHostBytes(const std::string& hostPath, std::size_t limit);

// Replaces a file whole; readable for everyone.
void WriteHostBytes(const std::string& hostPath, const std::string& bytes);

// Makes a file that only its owner may read. Fails where there is one already.
void MakePrivateFile(const std::string& hostPath, const std::string& bytes);
