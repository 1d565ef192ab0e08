// The catalogue: which products are installed on this machine, and which certificate belongs to
// each.
//
// A manager is a cheap object that each query makes anew. The list of the first complete load is
// kept for the process, and every later manager shares it: the catalogue of a running process does
// not change. A load is complete unless something failed that may succeed at the next try, see
// RecordGathering. The list of an incomplete one is its manager's alone, and the next manager loads
// again.
//
// The first match in the list wins: certificates of folders (modes 1 and 3), then those of the
// database, then those of the registry. A certificate has its first place, under its path in lower
// case.
//
// Threads: a manager belongs to one thread at a time. Managers of several threads may load at once:
// most often one of them does the work, and the list that is kept is never changed afterwards.
//
// Errors: a certificate that cannot be read is left out, and so is a record key that names no file,
// unless the registry or another certificate names it too. What opening the database throws passes
// through every operation, and the next one loads again.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "catalogue/manager/CCertificateReference.h"
#include "catalogue/manager/CertificateSources.h"
#include "platform/errors.h"

using CertificateReferences = std::vector<SharedHandle<CCertificateReference>>;

// Certificates in the order in which they were added. Once it has been handed to another thread a
// list is never changed: to add to it a manager copies it.
class CertificateList {
  public:
    const CertificateReferences& GetReferences() const { return references_; }

    // The certificate of a path in lower case; null when it is not in the list.
    CCertificateReference* FindPath(const Utf8String& path) const {
        const auto found = byPath_.find(path);
        return found != byPath_.end() ? found->second : nullptr;
    }

    // REQUIRES: no certificate of the list has its path.
    void Append(const SharedHandle<CCertificateReference>& reference) {
        references_.push_back(reference);
        byPath_.emplace(reference->GetPath(), reference.get());
    }

  private:
    CertificateReferences references_;
    std::map<Utf8String, CCertificateReference*> byPath_;
};

class CCertificateMgr {
  public:
    // The modes of a load.
    static constexpr std::uint32_t normal_runtime = 0;  // from the database and the registry
    static constexpr std::uint32_t processing_certificates = 1;  // folders first; opens the files
    static constexpr std::uint32_t folders_first = 3;

    // The most certificates in a row that point to one another.
    static constexpr std::size_t kLongestChain = 16;

    CCertificateMgr() = default;
    CCertificateMgr(const CCertificateMgr&) = delete;
    CCertificateMgr& operator=(const CCertificateMgr&) = delete;
    virtual ~CCertificateMgr() = default;

    // Fills the list, unless it is filled. The folders of modes 1 and 3 are `folder`, or, where
    // that is null or empty, those of the host program and of its parent. With `reimport` each
    // certificate file is read anew. A load in another mode than that of the process's list gathers
    // the certificates again and makes its list the process's.
    void Load(std::uint32_t mode, const WideString* folder, std::uint8_t reimport);

    // What kept the load from being complete, for a person to read; empty after a complete one.
    const std::string& Missed() const { return missed_; }

    // Adds a certificate, or the one that it points to. 1 when that is in the list afterwards. One
    // that was there keeps its place, and takes the GUID where that is not empty. A longer
    // row than kLongestChain ends with 0 and an error line, and so does one that comes back to
    // where it was.
    std::uint8_t AddCertificate(std::uint32_t mode, const Utf8String& path, const Utf8String& guid,
                                std::uint8_t reimport);

    // The sources of a load; see CertificateSources.h.
    HRESULT GetCertificatesPathsInDatabase(std::vector<FileSpec>* files) const {
        return CertificateSources::GetCertificatesPathsInDatabase(files);
    }
    HRESULT GetCertificatesFolderPath(const FilePath& folder, std::vector<FileSpec>* files) const {
        return CertificateSources::GetCertificatesFolderPath(folder, files);
    }
    HRESULT GetCertificatePathsFromRegistry(Utf8StringList* paths, Utf8StringList* guids) const {
        return CertificateSources::GetCertificatePathsFromRegistry(paths, guids);
    }

    // ---- Lookups. Each begins with Load in mode 0. ----

    std::int32_t GetCertificateCount();

    // Copies the list, and gives it back as well.
    const CertificateReferences& GetCertificateList(CertificateReferences* list);

    // The first certificate of a product name, without regard to the case of ASCII letters; null
    // when there is none.
    SharedHandle<CCertificateReference> GetValidCertificateReference(const Utf8String& name);

    // The first certificate with this GUID, byte for byte; null when there is none.
    SharedHandle<CCertificateReference> GetCertificateReferenceByGUID(const Utf8String& guid);

    // The certificates that have a field.
    CertificateReferences GetCertificatesWithField(const Utf8String& name);

    // The parent product in the first certificate of a product name; empty without either.
    Utf8String GetParentName(const std::string& name);

  private:
    // `walked` are the paths of those that pointed here.
    std::uint8_t Add(std::uint32_t mode, const Utf8String& path, const Utf8String& guid,
                     std::uint8_t reimport, Utf8StringList* walked);
    bool TakeCached(std::uint32_t mode);
    std::size_t AddRecords(std::uint32_t mode, std::uint8_t reimport);
    void AddFolders(std::uint32_t mode, const WideString* folder, std::uint8_t reimport);
    void Gather(std::uint32_t mode, const WideString* folder, std::uint8_t reimport);

    // The list for reading; loads it first.
    const CertificateReferences& References();
    template <typename Matches>
    SharedHandle<CCertificateReference> FindFirst(Matches matches);

    // A list of this manager's own.
    CertificateList& OwnList();

    std::uint8_t loaded_ = 0;
    bool isListShared_ = false;
    SharedHandle<CertificateList> list_;
    std::string missed_;
};

// The certificate manager that queries make.
class CBrevikKitCertificateMgr : public CCertificateMgr {};
