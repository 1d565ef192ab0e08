#include "catalogue/queries/SplitRegistryPath.h"

#include <algorithm>
#include <string_view>

namespace {

struct Root {
    std::string_view name;
    HKEY handle;
};

const Root kRoots[] = {
    {"HKEY_CLASSES_ROOT", HKEY_CLASSES_ROOT},
    {"HKEY_CURRENT_USER", HKEY_CURRENT_USER},
    {"HKEY_LOCAL_MACHINE", HKEY_LOCAL_MACHINE},
    {"HKEY_USERS", HKEY_USERS},
    {"HKEY_PERFORMANCE_DATA", HKEY_PERFORMANCE_DATA},
    {"HKEY_PERFORMANCE_TEXT", HKEY_PERFORMANCE_TEXT},
    {"HKEY_PERFORMANCE_NLSTEXT", HKEY_PERFORMANCE_NLSTEXT},
    {"HKEY_CURRENT_CONFIG", HKEY_CURRENT_CONFIG},
    {"HKEY_DYN_DATA", HKEY_DYN_DATA},
};

}  // namespace

std::uint8_t SplitRegistryPath(const Utf8String& text, HKEY* root, Utf8String* subKey) {
    const std::size_t end = text.find('\\');
    const Utf8String name = text.substr(0, end);
    *subKey = end == Utf8String::npos ? text : text.substr(end + 1);
    for (const Root& known : kRoots) {
        if (std::ranges::equal(known.name, name)) {
            *root = known.handle;
            return 1;
        }
    }
    return 0;
}
