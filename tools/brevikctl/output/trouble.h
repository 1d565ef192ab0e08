// What went wrong, as it is said to the user.
#pragma once

#include <exception>
#include <string>

// The reason is a sentence on its subject, such as "it is missing"; the hint is what can be done
// about it, and may be empty.
struct Trouble {
    std::string reason;
    std::string hint;
};

// Ends a command that has already said all that there is to say; the exit code is 1.
struct AllSaid {};

// Ends the command with exit code 1, reason and hint being said on lines of their own.
[[noreturn]] void Fail(const std::string& reason, const std::string& hint = {});

// Writes a line to standard error, under the tool's name.
void Say(const std::string& line);
void Warn(const std::string& line);
