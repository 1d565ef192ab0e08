// What is reported of a thing: names and values, a line or a member of a JSON object each.
#pragma once

#include <concepts>
#include <string>
#include <vector>

#include "brevikctl/output/trouble.h"

// The text is what a terminal shows, the JSON what a program reads.
struct Fact {
    Fact(std::string name, const std::string& value);
    Fact(std::string name, const char* value) : Fact(std::move(name), std::string(value)) {}
    Fact(std::string name, bool value);
    template <std::integral Number>
    Fact(std::string name, Number value)
        : Fact(std::move(name), std::to_string(value), std::to_string(value)) {}
    Fact(std::string factName, std::string factText, std::string factJson);

    // A value that only a program sees.
    static Fact OfJson(std::string name, std::string json) { return {std::move(name), "", json}; }

    std::string name;
    std::string text;
    std::string json;
};

using Facts = std::vector<Fact>;

// One JSON object without a line end.
std::string ToObject(const Facts& facts);

// A JSON array of what `toJson` gives for each.
template <typename Range, typename ToJson>
std::string ToArray(const Range& range, ToJson toJson) {
    std::string items;
    for (const auto& item : range) {
        items += (items.empty() ? "" : ",") + std::string(toJson(item));
    }
    return "[" + items + "]";
}

std::string TroubleJson(const Trouble& trouble);

// Prints a line for each fact, or all as one JSON object.
void PrintFacts(const Facts& facts, bool asJson = false);
