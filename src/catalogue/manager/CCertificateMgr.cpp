#include "catalogue/manager/CCertificateMgr.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <memory>
#include <mutex>

#include "catalogue/RecordGathering.h"
#include "modules/ModuleFolders.h"
#include "platform/never_destroyed.h"
#include "text/TimedMutex.h"
#include "trace/UTrace.h"

namespace {

// How long a load waits for that of another thread, which saves it the work. That one may wait for
// this thread in turn, through a library whose initialiser asks the catalogue: then both do it.
constexpr std::chrono::milliseconds kLongestWait{500};

// The list of the last complete load of the process, and the mode it was loaded in.
struct CertificateCache {
    TimedMutex loading;  // held by a load if it could be had

    std::mutex mutex;  // guards the rest
    std::uint32_t mode = 0;
    SharedHandle<CertificateList> list;  // null before the first load
};

CertificateCache& Cache() {
    static NeverDestroyed<CertificateCache> cache;
    return *cache;
}

}  // namespace

void CCertificateMgr::Load(std::uint32_t mode, const WideString* folder, std::uint8_t reimport) {
    if (TakeCached(mode)) {
        return;
    }
    RecordGathering gathering;
    CertificateCache& cache = Cache();
    const std::unique_lock hold(cache.loading, kLongestWait);
    // After a wait there is the list of the first.
    if (TakeCached(mode)) {
        return;
    }
    Gather(mode, folder, reimport);
    OwnList();
    missed_ = gathering.Missed();
    loaded_ = 1;
    if (gathering.HasMissed()) {
        UTrace::Error("The catalogue is incomplete for now: %s", missed_.c_str());
        return;
    }
    const std::lock_guard guard(cache.mutex);
    if (cache.list == nullptr || cache.mode != mode) {
        cache.mode = mode;
        cache.list = list_;
    }
    list_ = cache.list;
    isListShared_ = true;
}

// Takes over the process's list when it is of this mode. True when the manager is loaded.
bool CCertificateMgr::TakeCached(std::uint32_t mode) {
    CertificateCache& cache = Cache();
    const std::lock_guard guard(cache.mutex);
    if (cache.list != nullptr) {
        if (cache.mode == mode) {
            list_ = cache.list;
            isListShared_ = true;
            loaded_ = 1;
        } else if (loaded_ != 0) {
            cache.mode = mode;
        }
    }
    return loaded_ != 0;
}

void CCertificateMgr::Gather(std::uint32_t mode, const WideString* folder, std::uint8_t reimport) {
    if (mode == processing_certificates || mode == folders_first) {
        AddFolders(mode, folder, reimport);
    }

    const std::size_t fromDatabase = AddRecords(mode, reimport);

    Utf8StringList paths;
    Utf8StringList guids;
    GetCertificatePathsFromRegistry(&paths, &guids);
    std::size_t fromRegistry = 0;
    for (std::size_t i = 0; i < paths.size(); ++i) {
        fromRegistry += AddCertificate(mode, paths[i], guids[i], reimport);
    }

    // The database was empty and the registry names files that could not be read: another program
    // may have filled the database in the meantime.
    if (fromDatabase == 0 && fromRegistry >= 1 && paths.size() > fromRegistry) {
        AddRecords(mode, reimport);
    }
}

void CCertificateMgr::AddFolders(std::uint32_t mode, const WideString* folder,
                                 std::uint8_t reimport) {
    std::vector<WideString> folders;
    if (folder != nullptr && !folder->empty()) {
        folders = {*folder};
    } else {
        folders = {GetProcessFolder(), GetParentProcessFolder()};
        folders.resize(folders.back().empty() ? 1 : 2);
    }
    for (const WideString& each : folders) {
        std::vector<FileSpec> files;
        GetCertificatesFolderPath(FilePath(each), &files);
        for (const FileSpec& file : files) {
            AddCertificate(mode, file.GetPath(), {}, reimport);
        }
    }
}

// How many certificates of the database are in the list afterwards. Each is added under its record
// key unchanged, or a key in an odd spelling would make a second certificate of one file.
std::size_t CCertificateMgr::AddRecords(std::uint32_t mode, std::uint8_t reimport) {
    std::vector<FileSpec> files;
    Utf8StringList keys;
    CertificateSources::GetCertificatesPathsInDatabase(&files, &keys);
    std::size_t added = 0;
    for (const Utf8String& key : keys) {
        added += AddCertificate(mode, key, {}, reimport);
    }
    return added;
}

std::uint8_t CCertificateMgr::AddCertificate(std::uint32_t mode, const Utf8String& path,
                                             const Utf8String& guid, std::uint8_t reimport) {
    Utf8StringList walked;
    return Add(mode, path, guid, reimport, &walked);
}

std::uint8_t CCertificateMgr::Add(std::uint32_t mode, const Utf8String& path,
                                  const Utf8String& guid, std::uint8_t reimport,
                                  Utf8StringList* walked) {
    if (path.empty()) {
        return 0;
    }
    const Utf8String key = AsciiToLower(path);
    if (CCertificateReference* known = list_ != nullptr ? list_->FindPath(key) : nullptr) {
        // The registry's GUID replaces the one in the certificate.
        if (!guid.empty() && !known->HasGUID(guid)) {
            known->SetGUID(guid);
        }
        return 1;
    }
    const UTrace::Function scope("CCertificateMgr::AddCertificate()", nullptr);
    if (walked->size() > kLongestChain || std::ranges::find(*walked, key) != walked->end()) {
        UTrace::Error("CertReferencePath leads in a circle or too far, path: %s",
                      Utf8ToNarrow(key).c_str());
        return 0;
    }
    if (RecordGathering::IsOver()) {
        return 0;
    }
    walked->push_back(key);
    const auto reference = std::make_shared<CCertificateReference>();
    if (reference->Init(key, guid, mode, reimport) == 0) {
        return 0;
    }
    const Utf8String target = reference->GetPathField(NarrowToUtf8("CertReferencePath"));
    if (!target.empty()) {
        return Add(mode, target, {}, reimport, walked);
    }
    OwnList().Append(reference);
    return 1;
}

CertificateList& CCertificateMgr::OwnList() {
    if (list_ == nullptr) {
        list_ = std::make_shared<CertificateList>();
    } else if (isListShared_) {
        list_ = std::make_shared<CertificateList>(*list_);
        isListShared_ = false;
    }
    return *list_;
}

const CertificateReferences& CCertificateMgr::References() {
    Load(normal_runtime, nullptr, 0);
    return list_->GetReferences();
}

std::int32_t CCertificateMgr::GetCertificateCount() {
    return static_cast<std::int32_t>(References().size());
}

const CertificateReferences& CCertificateMgr::GetCertificateList(CertificateReferences* list) {
    *list = References();
    return *list;
}

template <typename Matches>
SharedHandle<CCertificateReference> CCertificateMgr::FindFirst(Matches matches) {
    const CertificateReferences& references = References();
    const auto found = std::ranges::find_if(references, matches);
    return found != references.end() ? *found : nullptr;
}

SharedHandle<CCertificateReference> CCertificateMgr::GetValidCertificateReference(
    const Utf8String& name) {
    const auto found =
        FindFirst([&](const auto& reference) { return reference->HasProductName(name) != 0; });
    UTrace::Info("CCertificateMgr::GetValidCertificateReference(), %s%s founded",
                 Utf8ToNarrow(name).c_str(), found == nullptr ? " not" : "");
    return found;
}

SharedHandle<CCertificateReference> CCertificateMgr::GetCertificateReferenceByGUID(
    const Utf8String& guid) {
    return FindFirst([&](const auto& reference) { return reference->HasGUID(guid); });
}

CertificateReferences CCertificateMgr::GetCertificatesWithField(const Utf8String& name) {
    CertificateReferences found;
    std::ranges::copy_if(References(), std::back_inserter(found),
                         [&](const auto& reference) { return reference->HasField(name) != 0; });
    return found;
}

Utf8String CCertificateMgr::GetParentName(const std::string& name) {
    const auto found = FindFirst(
        [&](const auto& reference) { return reference->HasProductName(NarrowToUtf8(name)) != 0; });
    return found != nullptr ? found->GetPathField(NarrowToUtf8("QDR_ParentName")) : Utf8String();
}
