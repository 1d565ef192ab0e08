// What is told of a thing: names and values, a line or a member each.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// A value's text is what a terminal shows, its JSON what a program reads.
struct Fact {
    std::string name;
    std::string text;
    std::string json;
};

Fact TextFact(const std::string& name, const std::string& text);
Fact NumberFact(const std::string& name, std::uint64_t number);
Fact YesNoFact(const std::string& name, bool value);

std::string ToLines(const std::vector<Fact>& facts);

// One JSON object without a line end.
std::string ToObject(const std::vector<Fact>& facts);
