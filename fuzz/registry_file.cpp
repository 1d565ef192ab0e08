// A text that is accepted as a registry is written in a form that reads as an equal tree, whole and
// key by key, and that is written the same again.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "brevikctl/registry/registry_writer.cpp"
#include "platform/posix/registry/registry_text.h"

namespace {

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

bool IsSame(const RegistryKey* a, const RegistryKey* b) {
    return a != nullptr && b != nullptr && a->path == b->path && a->values == b->values;
}

// Every key of the one tree is in the other.
void RequireKeysOf(const RegistryTree& tree, const RegistryTree& other) {
    for (const auto& [folded, key] : tree.AllKeys()) {
        Require(IsSame(&key, other.Find(key.path)));
    }
}

void RequireSame(const std::string& text, const RegistryTree& tree) {
    RegistryTree again;
    RegistryFault fault;
    Require(MergeRegistryText(text, &again, &fault));
    RequireKeysOf(tree, again);
    RequireKeysOf(again, tree);
    Require(again.headComments == tree.headComments);
    Require(WriteRegistryText(again) == text);
}

// What is exported of a key is enough to make it, with all below it, elsewhere.
void RequireExport(const RegistryTree& tree, const RegistryKey& exported) {
    RegistryTree part;
    RegistryFault fault;
    Require(MergeRegistryText(WriteRegistryText(tree, exported.path), &part, &fault));
    for (auto [key, last] = tree.KeysFrom(exported.path); key != last; ++key) {
        Require(IsSame(&key->second, part.Find(key->second.path)));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    RegistryTree tree;
    RegistryFault fault;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (!MergeRegistryText(text, &tree, &fault)) {
        Require(!fault.reason.empty());
        return 0;
    }
    RequireSame(WriteRegistryText(tree), tree);
    for (const auto& [folded, key] : tree.AllKeys()) {
        const bool isBelowRoot = std::ranges::count(key.path, u'\\') == 1;
        if (isBelowRoot) {
            RequireExport(tree, key);
        }
    }
    return 0;
}
