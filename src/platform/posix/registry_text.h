// The registry's standard text export form.
//
// A head line, "Windows Registry Editor Version 5.00" or the older "REGEDIT4"; then keys in
// brackets, each followed by its values, one a line. A minus sign in front of a key or for a
// value's data removes it. A text is UTF-8, or UTF-16 little-endian with its byte order mark.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/posix/registry_tree.h"
#include "platform/types.h"

namespace brevik::platform {

inline constexpr std::size_t kLargestRegistryText = std::size_t{64} << 20;  // bytes
inline constexpr std::size_t kMostRegistryEntries = 1'000'000;              // keys and values

// The reasons for refusing what is beyond these.
inline constexpr char kTooLargeRegistryText[] = "larger than 64 MiB";
inline constexpr char kTooManyRegistryEntries[] = "more than a million keys and values";

// Why a text is no registry.
struct RegistryFault {
    std::string file;      // empty where the text came from none
    std::size_t line = 0;  // from 1; 0 for the text as a whole
    std::string reason;

    // "FILE:LINE: REASON", with the parts there are.
    PLATFORM_API std::string Text() const;
};

// Does in the tree what the text says, in its order. False for a malformed text: the tree is in
// the state that the lines before the fault led to, and of no further use.
PLATFORM_API bool MergeRegistryText(std::string_view text, RegistryTree* tree,
                                    RegistryFault* fault);

// The whole tree in version 5, UTF-8 without a mark, LF, keys and values in their order. Reading it
// gives an equal tree.
PLATFORM_API std::string WriteRegistryText(const RegistryTree& tree);

// The same of a key and all below it; empty for a key that is not there.
PLATFORM_API std::string WriteRegistryText(const RegistryTree& tree, const RegistryPath& path);

}  // namespace brevik::platform
