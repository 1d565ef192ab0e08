// The registry's standard text export form, as it is read.
//
// A head line, "Windows Registry Editor Version 5.00" or the older "REGEDIT4"; then keys in
// brackets, each followed by its values, one a line. A minus sign before a key, or in place of a
// value's data, removes it. A text is UTF-8, or UTF-16 little-endian with its byte order mark.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/posix/registry/registry_tree.h"
#include "platform/types.h"

namespace brevik::platform {

// Bounds for a text, for what its keys' paths take together when they are written out, and for the
// number of keys and values: a file of any size must not fill the memory of a host.
inline constexpr std::size_t kLargestRegistryText = std::size_t{64} << 20;  // bytes
inline constexpr std::size_t kMostRegistryEntries = 1'000'000;

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

// Does in the tree what the text says, in its order, and lists the sub keys. False for a malformed
// text: the tree is in the state that the lines before the fault led to, and of no further use.
PLATFORM_API bool MergeRegistryText(std::string_view text, RegistryTree* tree,
                                    RegistryFault* fault);

}  // namespace brevik::platform
