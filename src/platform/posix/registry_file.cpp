#include "platform/posix/registry_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <utility>
#include <vector>

#include "platform/posix/host_errors.h"
#include "platform/posix/registry_snapshot.h"
#include "platform/posix/scoped_descriptor.h"

namespace brevik::platform {
namespace {

// Every user of the machine reads the registry.
constexpr mode_t kMode = S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;

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

bool WriteAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(descriptor, text.data(), text.size());
        if (count < 0 && errno != EINTR) {
            return false;
        }
        text.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    return true;
}

// The file's place, where its path is a link.
std::string PlaceOf(const std::string& path) {
    std::error_code error;
    const std::filesystem::path place = std::filesystem::canonical(path, error);
    return error ? path : place.string();
}

// REQUIRES: the lock. It makes one name enough for the new file.
DWORD Replace(const std::string& path, std::string_view text) {
    const std::string newPath = path + ".new";
    unlink(newPath.c_str());
    const ScopedDescriptor file(
        open(newPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode));
    if (!file) {
        return ErrorFromHost(errno);
    }
    // The mode again: a new file's lacks what the umask takes away.
    if (!WriteAll(file.Get(), text) || fchmod(file.Get(), kMode) != 0 ||
        std::rename(newPath.c_str(), path.c_str()) != 0) {
        const int failure = errno;
        unlink(newPath.c_str());
        return ErrorFromHost(failure);
    }
    return NO_ERROR;
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
    // Reads and locks by the shared file, which would leave one that only its owner may read.
    return file_.Update([&](std::string* before) {
        RegistryTree tree;
        DWORD error = before->empty() ? NO_ERROR : Merge(Path(), *before, &tree, fault);
        if (error == NO_ERROR) {
            error = change(&tree);
        }
        if (error != NO_ERROR) {
            return error;
        }
        // What could not be read again is not written.
        const std::string after = WriteRegistryText(tree);
        if (after.size() > kLargestRegistryText) {
            return Refuse(Path(), kTooLargeRegistryText, fault);
        }
        if (tree.CountEntries() > kMostRegistryEntries) {
            return Refuse(Path(), kTooManyRegistryEntries, fault);
        }
        return after == *before ? NO_ERROR : Replace(PlaceOf(Path()), after);
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
