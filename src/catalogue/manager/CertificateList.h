// A list of certificates in the order in which they were added.
//
// A list is filled by one thread. Once it has been handed to another it is never changed: whoever
// adds to it makes a copy first.
#pragma once

#include <map>
#include <vector>

#include "catalogue/manager/CCertificateReference.h"
#include "text/SharedHandle.h"
#include "text/StringConversions.h"

using CertificateReferences = std::vector<SharedHandle<CCertificateReference>>;

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
