#include "brevikctl/output/trouble.h"

#include <cstdio>
#include <stdexcept>

void Fail(const std::string& reason, const std::string& hint) {
    throw std::runtime_error(hint.empty() ? reason : reason + "\n" + hint);
}

void Say(const std::string& line) {
    std::fprintf(stderr, "brevikctl: %s\n", line.c_str());
}

void Warn(const std::string& line) {
    Say("warning: " + line);
}
