// The log of the calls, described in docs/http-client.md: one JSON line each, in a file beside the
// library. Lines of several threads and processes stay whole.
#pragma once

#include <initializer_list>
#include <string>
#include <variant>
#include <vector>

#include "platform/component_model.h"

namespace HttpClient {

// One argument of a call; it keeps nothing but the pointers given.
struct Argument {
    Argument(const char* argumentName, BSTR text) : name(argumentName), value(text) {}
    Argument(const char* argumentName, const char* text) : name(argumentName), value(text) {}
    Argument(const char* argumentName, long long number) : name(argumentName), value(number) {}

    const char* name;
    std::variant<BSTR, const char*, long long> value;
};

struct Operation {
    const char* interface;
    unsigned object;  // numbered in the order of their making, from 1; 0 for a factory
    int slot;
    const char* name;
};

// Adds a line for a call; one that cannot be written is lost. Throw std::bad_alloc alone.
void LogCall(const Operation& operation, std::initializer_list<Argument> arguments);

// Adds a line for settings that are not understood.
void LogMisread(const std::vector<int>& lines);

}  // namespace HttpClient
