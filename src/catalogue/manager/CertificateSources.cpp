#include "catalogue/manager/CertificateSources.h"

#include "catalogue/RecordGathering.h"
#include "catalogue/records/SQLCertificate.h"
#include "filesystem/FileException.h"
#include "filesystem/FileSystem.h"
#include "filesystem/FolderSpec.h"
#include "platform/errors.h"
#include "registry/ScopedRegistryKey.h"
#include "trace/UTrace.h"

namespace CertificateSources {
namespace {

constexpr DWORD kKeyNameCapacity = MAX_PATH;

int CountOf(const auto& list) {
    return static_cast<int>(list.size());
}

HRESULT ResultOf(const auto& list) {
    return list.empty() ? E_FAIL : S_OK;
}

bool IsCertificate(const FileSpec& file) {
    return file.GetExtension().IsEqual("qzc", false);
}

std::vector<FileSpec> CertificatesBelow(const FolderSpec& folder) {
    std::vector<FileSpec> found;
    try {
        std::vector<FileSpec> below;
        for (FolderIterator entries = folder.MakeIterator(); entries; entries.Advance()) {
            if (entries.IsFolder()) {
                // A link may lead back to where the walk has been.
                if (!entries.IsFolderLink()) {
                    below.push_back(entries.GetCurrent());
                }
            } else if (IsCertificate(entries.GetCurrent())) {
                found.push_back(entries.GetCurrent());
            }
        }
        for (const FileSpec& entry : below) {
            const std::vector<FileSpec> deeper = CertificatesBelow(FolderSpec(entry));
            found.insert(found.end(), deeper.begin(), deeper.end());
        }
    } catch (const std::exception& failure) {
        RecordGathering::Note(failure);
        found.clear();
    }
    return found;
}

// Calls `visit` with the name of each sub key.
template <typename Visit>
void ForEachSubKey(const ScopedRegistryKey& key, Visit visit) {
    for (DWORD index = 0;; ++index) {
        WCHAR name[kKeyNameCapacity];
        DWORD length = kKeyNameCapacity;
        if (RegEnumKeyExW(key.Get(), index, name, &length, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS) {
            return;
        }
        visit(WideString(name, length));
    }
}

struct RegistryEntries {
    Utf8StringList* paths;
    Utf8StringList* guids;

    void Take(const ScopedRegistryKey& entry, const Utf8String& guid) {
        RecordGathering::Note(static_cast<DWORD>(entry.Error()), "the registry");
        DWORD type = REG_NONE;
        const std::optional<WideString> path =
            entry.IsOpen() ? entry.ReadText(WIDE("Filename"), &type) : std::nullopt;
        if (path && (type == REG_SZ || type == REG_EXPAND_SZ)) {
            paths->push_back(WideToUtf8(*path));
            guids->push_back(guid);
        }
    }
};

}  // namespace

HRESULT GetCertificatesPathsInDatabase(std::vector<FileSpec>* files, Utf8StringList* keys) {
    const UTrace::Function scope("GetCertificatesPathsInDatabase", nullptr);
    files->clear();
    Utf8StringList accepted;
    std::vector<std::string> all;
    SQLCertificate::GetDatabaseKeys(&all);
    FileSystem::EnsureStarted();
    for (const std::string& key : all) {
        try {
            files->emplace_back(FilePath(key));
            accepted.push_back(NarrowToUtf8(key));
        } catch (const FileException& failure) {
            RecordGathering::Note(failure);
            UTrace::Error("The record key %s names no file: %s", key.c_str(), failure.what());
        }
    }
    if (keys != nullptr) {
        keys->swap(accepted);
    }
    UTrace::Info("GetCertificatesPathsInDatabase, found %d certificates.)", CountOf(*files));
    return ResultOf(*files);
}

HRESULT GetCertificatesFolderPath(const FilePath& folder, std::vector<FileSpec>* files) {
    const UTrace::Function scope("GetCertificatesFolderPath", nullptr);
    files->clear();
    FileSystem::EnsureStarted();
    try {
        *files = CertificatesBelow(FolderSpec(folder));
    } catch (const std::exception&) {
        // A text that is no path names no folder.
    }
    UTrace::Info("GetCertificatesFolderPath, found %d certificates.)", CountOf(*files));
    return ResultOf(*files);
}

HRESULT GetCertificatePathsFromRegistry(Utf8StringList* paths, Utf8StringList* guids) {
    const UTrace::Function scope("GetCertificatePathsFromRegistry", nullptr);
    paths->clear();
    guids->clear();
    constexpr REGSAM kEntryAccess = KEY_QUERY_VALUE | KEY_ENUMERATE_SUB_KEYS;
    RegistryEntries entries{paths, guids};
    const ScopedRegistryKey all(HKEY_LOCAL_MACHINE, kRegistryKey, KEY_ENUMERATE_SUB_KEYS);
    RecordGathering::Note(static_cast<DWORD>(all.Error()), "the registry");
    if (all.IsOpen()) {
        ForEachSubKey(all, [&](const WideString& name) {
            const ScopedRegistryKey entry(all.Get(), name.c_str(), kEntryAccess);
            const Utf8String guid = WideToUtf8(name);
            entries.Take(entry, guid);
            // Further certificates of one installation lie one level down, and no deeper.
            if (entry.IsOpen()) {
                ForEachSubKey(entry, [&](const WideString& below) {
                    entries.Take(ScopedRegistryKey(entry.Get(), below.c_str(), kEntryAccess), guid);
                });
            }
        });
    }
    UTrace::Info("GetCertificatePathsFromRegistry, found %d certificates.)", CountOf(*paths));
    return ResultOf(*paths);
}

}  // namespace CertificateSources
