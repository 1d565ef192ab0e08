#include "platform/posix/registry_file.h"

#include <sys/stat.h>

#include <cstdint>
#include <utility>
#include <vector>

#include "platform/posix/registry_snapshot.h"

namespace brevik::platform {
namespace {

DWORD Refuse(const std::string& path, const char* reason, RegistryFault* fault) {
    *fault = {path, 0, reason};
    return ERROR_INVALID_DATA;
}

// Asked before the reading, which takes as much memory as there is file.
bool IsTooLarge(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 &&
           static_cast<std::uint64_t>(status.st_size) > kLargestRegistryText;
}

DWORD Merge(const std::string& path, std::string_view text, RegistryTree* tree,
            RegistryFault* fault) {
    *fault = {path, 0, {}};
    return MergeRegistryText(text, tree, fault) ? NO_ERROR : ERROR_INVALID_DATA;
}

}  // namespace

RegistryFile RegistryFile::OfMachine() {
    return RegistryFile(RegistryFilePath());
}

DWORD RegistryFile::Read(RegistryTree* tree, RegistryFault* fault) const {
    if (IsTooLarge(Path())) {
        return Refuse(Path(), kTooLargeRegistryText, fault);
    }
    std::string text;
    const DWORD error = file_.Read(&text);
    return error != NO_ERROR || text.empty() ? error : Merge(Path(), text, tree, fault);
}

DWORD RegistryFile::Update(const std::function<DWORD(RegistryTree* tree)>& change,
                           RegistryFault* fault) const {
    if (IsTooLarge(Path())) {
        return Refuse(Path(), kTooLargeRegistryText, fault);
    }
    return file_.Update([&](std::string* text) {
        RegistryTree tree;
        DWORD error = text->empty() ? NO_ERROR : Merge(Path(), *text, &tree, fault);
        if (error == NO_ERROR) {
            error = change(&tree);
        }
        if (error != NO_ERROR) {
            return error;
        }
        // What could not be read again is not written.
        std::string after = WriteRegistryText(tree);
        if (after.size() > kLargestRegistryText) {
            return Refuse(Path(), kTooLargeRegistryText, fault);
        }
        if (tree.CountEntries() > kMostRegistryEntries) {
            return Refuse(Path(), kTooManyRegistryEntries, fault);
        }
        *text = std::move(after);
        return DWORD{NO_ERROR};
    });
}

DWORD RegistryFile::SetValue(const RegistryPath& key, const RegistryValue& value,
                             RegistryFault* fault) const {
    if (!IsRegistryValueName(value.name)) {
        return ERROR_INVALID_PARAMETER;
    }
    const auto change = [&](RegistryTree* tree) {
        tree->Make(key)->SetValue(value);
        return DWORD{NO_ERROR};
    };
    return Update(change, fault);
}

DWORD RegistryFile::DeleteValue(const RegistryPath& key, std::u16string_view name,
                                RegistryFault* fault) const {
    const auto change = [&](RegistryTree* tree) {
        RegistryKey* found = tree->Find(key);
        const bool isRemoved = found != nullptr && found->RemoveValue(FoldRegistryName(name));
        return isRemoved ? NO_ERROR : ERROR_FILE_NOT_FOUND;
    };
    return Update(change, fault);
}

DWORD RegistryFile::DeleteKey(const RegistryPath& key, RegistryFault* fault) const {
    if (key.keys.empty()) {
        return ERROR_INVALID_PARAMETER;
    }
    const auto change = [&](RegistryTree* tree) {
        return tree->Remove(key) ? NO_ERROR : ERROR_FILE_NOT_FOUND;
    };
    return Update(change, fault);
}

DWORD RegistryFile::Import(const std::string& path, RegistryFault* fault) const {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) {
        return ERROR_FILE_NOT_FOUND;
    }
    if (IsTooLarge(path)) {
        return Refuse(path, kTooLargeRegistryText, fault);
    }
    std::string text;
    if (const DWORD error = SharedTextFile(path).Read(&text); error != NO_ERROR) {
        return error;
    }
    const auto change = [&](RegistryTree* tree) {
        // The comments at its head are about that file.
        std::vector<std::string> comments = tree->HeadComments();
        const DWORD error = Merge(path, text, tree, fault);
        tree->HeadComments() = std::move(comments);
        return error;
    };
    return Update(change, fault);
}

DWORD RegistryFile::Export(const RegistryPath* key, std::string* text, RegistryFault* fault) const {
    RegistryTree tree;
    if (const DWORD error = Read(&tree, fault); error != NO_ERROR) {
        return error;
    }
    *text = key != nullptr ? WriteRegistryText(tree, *key) : WriteRegistryText(tree);
    return text->empty() ? ERROR_FILE_NOT_FOUND : NO_ERROR;
}

}  // namespace brevik::platform
