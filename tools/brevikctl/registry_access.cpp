#include "registry_access.h"

#include <algorithm>
#include <exception>
#include <stdexcept>

#include "platform/posix/host_text.h"
#include "platform/posix/registry_snapshot.h"
#include "platform/registry.h"
#include "terminal.h"
#include "text_argument.h"

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

std::string Reason(DWORD error) {
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
            return "no such key, value or file\nbrevikctl registry get KEY shows what a key holds.";
        case ERROR_PATH_NOT_FOUND:
            return "the machine's folder is missing\nTry: brevikctl machine create";
        case ERROR_ACCESS_DENIED:
            return "it is not yours to change, or no plain file; see ls -l on it\nThe machine of "
                   "all users is changed as root.";
        case ERROR_SHARING_VIOLATION:
            return "another program holds its lock; see fuser on " +
                   Quoted(RegistryFilePath() + ".lock");
        case ERROR_DISK_FULL:
            return "the disk is full";
        case ERROR_INVALID_PARAMETER:
            return "no value can have this name, or a root is to be removed";
        default:
            return "error " + std::to_string(error);
    }
}

}  // namespace

RegistryPath RegistryArgument(const std::string& text) {
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
    RegistryPath result;
    std::string reason;
    if (!ParseRegistryPath(path, &result, &reason)) {
        throw std::runtime_error(Quoted(text) + ": " + reason +
                                 "\nA key is HKLM\\SOFTWARE\\Vendor\\Product, with one of the "
                                 "roots HKLM, HKCU, HKU and HKCR or its long name.");
    }
    return result;
}

std::string TextOf(const RegistryPath& path) {
    std::u16string text;
    for (const RegistryRootName& row : kRegistryRoots) {
        text = row.root == path.root ? row.name : text;
    }
    return Utf8FromWide(path.keys.empty() ? text : text + u"\\" + path.keys);
}

void RequireRegistry(DWORD error, const RegistryFault& fault) {
    if (error == NO_ERROR) {
        return;
    }
    if (error == ERROR_INVALID_DATA) {
        throw std::runtime_error(SafeText(fault.Text()) +
                                 "\nNothing was changed: a malformed file is refused whole.");
    }
    throw std::runtime_error("the registry " + Quoted(RegistryFilePath()) + ": " + Reason(error));
}

void ReadRegistry(RegistryTree* tree) {
    RegistryFault fault;
    const DWORD error = RegistryFile::OfMachine().Read(tree, &fault);
    RequireRegistry(error, fault);
}

void ChangeRegistry(const std::function<void(RegistryTree* tree)>& change) {
    RegistryFault fault;
    std::exception_ptr refusal;
    const auto guarded = [&](RegistryTree* tree) -> DWORD {
        try {
            change(tree);
            return NO_ERROR;
        } catch (...) {
            refusal = std::current_exception();
            return ERROR_GEN_FAILURE;
        }
    };
    const DWORD error = RegistryFile::OfMachine().Update(guarded, &fault);
    if (refusal) {
        std::rethrow_exception(refusal);
    }
    RequireRegistry(error, fault);
}

RegistryPath PlaceForPrograms(const RegistryTree& tree, std::u16string_view belowSoftware) {
    const RegistryPath view = {RegistryRoot::kLocalMachine,
                               u"SOFTWARE\\Wow6432Node\\" + std::u16string(belowSoftware)};
    if (tree.Find(view) != nullptr) {
        return view;
    }
    return {RegistryRoot::kLocalMachine, u"SOFTWARE\\" + std::u16string(belowSoftware)};
}

RegistryValue TextValue(std::u16string_view name, const std::string& text) {
    RegistryValue value = {std::u16string(name), REG_SZ, {}};
    for (const char16_t unit : WideFromUtf8(text) + u'\0') {
        value.data += static_cast<char>(unit & 0xFF);
        value.data += static_cast<char>(unit >> 8);
    }
    return value;
}

std::string TextOf(const RegistryValue* value) {
    if (value == nullptr || (value->type != REG_SZ && value->type != REG_EXPAND_SZ)) {
        return {};
    }
    std::u16string text;
    for (std::size_t index = 0; index + 1 < value->data.size(); index += 2) {
        const auto low = static_cast<unsigned char>(value->data[index]);
        const auto high = static_cast<unsigned char>(value->data[index + 1]);
        const auto unit = static_cast<char16_t>(low | high << 8);
        if (unit == u'\0') {
            break;
        }
        text += unit;
    }
    return Utf8FromWide(text);
}

const RegistryValue* FindValue(const RegistryKey& key, std::u16string_view name) {
    return key.FindValue(FoldRegistryName(name));
}
