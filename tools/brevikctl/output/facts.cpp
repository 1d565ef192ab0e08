#include "brevikctl/output/facts.h"

#include <cstdio>

#include "brevikctl/output/terminal.h"

Fact::Fact(std::string factName, std::string factText, std::string factJson)
    : name(std::move(factName)), text(std::move(factText)), json(std::move(factJson)) {}

Fact::Fact(std::string name, const std::string& value)
    : Fact(std::move(name), SafeText(value), JsonString(value)) {}

Fact::Fact(std::string name, bool value)
    : Fact(std::move(name), value ? "yes" : "no", value ? "true" : "false") {}

std::string ToObject(const Facts& facts) {
    std::string members;
    for (const Fact& fact : facts) {
        members += (members.empty() ? "" : ",") + JsonString(fact.name) + ":" + fact.json;
    }
    return "{" + members + "}";
}

std::string TroubleJson(const Trouble& trouble) {
    return ToObject({{"reason", trouble.reason}, {"hint", trouble.hint}});
}

void PrintFacts(const Facts& facts, bool asJson) {
    constexpr std::size_t kColumn = 15;
    if (asJson) {
        PrintLine(ToObject(facts));
        return;
    }
    for (const Fact& fact : facts) {
        std::string name = SafeText(fact.name);
        name.resize(name.size() < kColumn ? kColumn : name.size() + 1, ' ');
        std::printf("%s%s\n", name.c_str(), fact.text.c_str());
    }
}
