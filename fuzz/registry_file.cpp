// A text that is accepted as a registry is written in a form that reads as an equal tree, whole and
// key by key, and that is written the same again.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/posix/registry_text.h"

namespace {

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

void RequireSame(const std::string& text, const RegistryTree& tree) {
    RegistryTree again;
    RegistryFault fault;
    Require(MergeRegistryText(text, &again, &fault));
    Require(again == tree);
    Require(WriteRegistryText(again) == text);
}

// What is exported of each child of the root is enough to make it elsewhere.
void RequireExports(const RegistryTree& tree, RegistryRoot root) {
    for (const auto& [folded, child] : tree.Root(root).AllChildren()) {
        RegistryTree part;
        RegistryFault fault;
        const RegistryPath path = {root, folded};
        Require(MergeRegistryText(WriteRegistryText(tree, path), &part, &fault));
        Require(*part.Find(path) == *child);
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
    for (const RegistryRootName& row : kRegistryRoots) {
        RequireExports(tree, row.root);
    }
    return 0;
}
