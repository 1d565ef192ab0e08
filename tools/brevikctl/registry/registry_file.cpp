#include "brevikctl/registry/registry_file.h"

#include <sys/stat.h>

#include <exception>
#include <utility>

#include "brevikctl/output/terminal.h"
#include "brevikctl/output/trouble.h"
#include "brevikctl/registry/registry_writer.h"
#include "platform/posix/base/shared_text_file.h"
#include "platform/posix/registry/registry_snapshot.h"

namespace {

// Every user of the machine reads the registry.
constexpr mode_t kMode = S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;

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

DWORD Refuse(const std::string& path, const char* reason, RegistryFault* fault) {
    *fault = {path, 0, reason};
    return ERROR_INVALID_DATA;
}

// An empty text is an empty registry.
DWORD Merge(const std::string& path, std::string_view text, RegistryTree* tree,
            RegistryFault* fault) {
    *fault = {path, 0, {}};
    return text.empty() || MergeRegistryText(text, tree, fault) ? NO_ERROR : ERROR_INVALID_DATA;
}

DWORD ReadText(const std::string& path, std::string* text, RegistryFault* fault) {
    const DWORD error = SharedTextFile(path).Read(text);
    return error == ERROR_INVALID_DATA ? Refuse(path, kTooLargeRegistryText, fault) : error;
}

// What could not be read again is not written.
DWORD Write(const RegistryTree& tree, std::string* text, RegistryFault* fault) {
    std::string written = WriteRegistryText(tree);
    if (written.size() > kLargestRegistryText) {
        return Refuse(RegistryFilePath(), kTooLargeRegistryText, fault);
    }
    if (tree.CountKeys() + tree.CountValues() > kMostRegistryEntries) {
        return Refuse(RegistryFilePath(), kTooManyRegistryEntries, fault);
    }
    *text = std::move(written);
    return NO_ERROR;
}

}  // namespace

DWORD ReadRegistry(RegistryTree* tree, RegistryFault* fault) {
    std::string text;
    const DWORD error = ReadText(RegistryFilePath(), &text, fault);
    return error != NO_ERROR ? error : Merge(RegistryFilePath(), text, tree, fault);
}

void ReadRegistry(RegistryTree* tree) {
    RegistryFault fault;
    const DWORD error = ReadRegistry(tree, &fault);
    RequireRegistry(error, fault);
}

void ChangeRegistry(const std::function<void(RegistryTree* tree)>& change) {
    RegistryFault fault{RegistryFilePath(), 0, kTooLargeRegistryText};
    std::exception_ptr refusal;
    const SharedTextFile file(RegistryFilePath(), kMode);
    const DWORD error = file.Update([&](std::string* text) {
        RegistryTree tree;
        const DWORD failure = Merge(file.Path(), *text, &tree, &fault);
        if (failure != NO_ERROR) {
            return failure;
        }
        try {
            change(&tree);
        } catch (...) {
            refusal = std::current_exception();
            return ERROR_GEN_FAILURE;
        }
        return Write(tree, text, &fault);
    });
    if (refusal) {
        std::rethrow_exception(refusal);
    }
    RequireRegistry(error, fault);
}

void MergeRegistryFile(const std::string& path, RegistryTree* tree) {
    RegistryFault fault;
    std::string text;
    RequireRegistry(ReadText(path, &text, &fault), fault);
    // The comments at its head are about that file.
    std::vector<std::string> comments = tree->headComments;
    fault = {path, 0, {}};
    const bool isMerged = MergeRegistryText(text, tree, &fault);
    tree->headComments = std::move(comments);
    RequireRegistry(isMerged ? NO_ERROR : ERROR_INVALID_DATA, fault);
}

void RequireRegistry(DWORD error, const RegistryFault& fault) {
    if (error == ERROR_INVALID_DATA) {
        Fail(SafeText(fault.Text()), "Nothing was changed: a malformed file is refused whole.");
    }
    if (error != NO_ERROR) {
        Fail("the registry " + Quoted(RegistryFilePath()) + ": " + Reason(error));
    }
}
