#include "facts.h"

#include "terminal.h"

Fact TextFact(const std::string& name, const std::string& text) {
    return {name, SafeText(text), JsonString(text)};
}

Fact NumberFact(const std::string& name, std::uint64_t number) {
    return {name, std::to_string(number), std::to_string(number)};
}

Fact YesNoFact(const std::string& name, bool value) {
    return {name, value ? "yes" : "no", value ? "true" : "false"};
}

std::string ToLines(const std::vector<Fact>& facts) {
    constexpr std::size_t kColumn = 15;
    std::string lines;
    for (const Fact& fact : facts) {
        std::string name = SafeText(fact.name);
        name.resize(name.size() < kColumn ? kColumn : name.size() + 1, ' ');
        lines += name + fact.text + "\n";
    }
    return lines;
}

std::string ToObject(const std::vector<Fact>& facts) {
    std::string members;
    for (const Fact& fact : facts) {
        members += (members.empty() ? "" : ",") + JsonString(fact.name) + ":" + fact.json;
    }
    return "{" + members + "}";
}
