#include "brevikctl/registry/registry_paths.h"

#include <algorithm>

#include "brevikctl/output/terminal.h"
#include "brevikctl/output/trouble.h"

namespace {

struct ShortRoot {
    std::u16string_view name;
    std::u16string_view root;
};

constexpr ShortRoot kShortRoots[] = {
    {u"HKLM", u"HKEY_LOCAL_MACHINE"},
    {u"HKCU", u"HKEY_CURRENT_USER"},
    {u"HKU", u"HKEY_USERS"},
    {u"HKCR", u"HKEY_CLASSES_ROOT"},
};

}  // namespace

std::u16string RegistryArgument(const std::string& text) {
    std::u16string path = WideArgument(text);
    const std::size_t end = std::min(path.find(u'\\'), path.size());
    for (const ShortRoot& row : kShortRoots) {
        if (FoldRegistryName(path.substr(0, end)) == row.name) {
            path.replace(0, end, row.root);
            break;
        }
    }
    if (path.ends_with(u'\\')) {
        path.pop_back();
    }
    std::u16string result;
    if (const char* fault = ParseRegistryPath(path, &result); fault != nullptr) {
        Fail(Quoted(text) + ": " + fault,
             "A key is HKLM\\SOFTWARE\\Vendor\\Product, with one of the roots HKLM, HKCU, HKU and "
             "HKCR or its long name.");
    }
    return result;
}

std::u16string PlaceForPrograms(const RegistryTree& tree, std::u16string_view belowSoftware) {
    const std::u16string software = u"HKEY_LOCAL_MACHINE\\SOFTWARE\\";
    const std::u16string names(belowSoftware);
    const std::u16string view = software + u"Wow6432Node\\" + names;
    return tree.Find(view) != nullptr ? view : software + names;
}
