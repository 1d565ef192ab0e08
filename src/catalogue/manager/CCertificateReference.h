// One certificate in the hands of a certificate manager.
//
// Made and initialised by one thread; from then on any number of threads share it.
#pragma once

#include <cstdint>
#include <mutex>

#include "catalogue/records/SQLCertificate.h"
#include "text/SharedHandle.h"
#include "text/StringConversions.h"

class CCertificateReference {
  public:
    CCertificateReference() = default;
    CCertificateReference(const CCertificateReference&) = delete;
    CCertificateReference& operator=(const CCertificateReference&) = delete;
    virtual ~CCertificateReference() = default;

    // Reads the certificate of a path in lower case into memory, importing its file if need be. In
    // mode 1 the file is first opened to every user of the machine. With an empty `guid` the one of
    // the certificate's Vector Location is taken. 1 when the reference is good, else 0. Throws what
    // opening the database throws.
    std::uint8_t Init(const Utf8String& path, const Utf8String& guid, std::uint32_t mode,
                      std::uint8_t reimport);

    // The certificate's rows; null before Init.
    SharedHandle<SQLCertificate> GetStore() const { return store_; }

    // The installer GUID, empty where no source gives it.
    Utf8String GetGUID() const;

    // Whether GetGUID would return this one. Copies nothing.
    bool HasGUID(const Utf8String& guid) const {
        const std::lock_guard hold(mutex_);
        return guid_ == guid;
    }

    // Also has the next GetUsedBy look again.
    void SetGUID(const Utf8String& guid);

    Utf8String GetPath() const { return path_; }

    // GUID of the installation that uses this product, read from the registry on first demand;
    // empty where there is none.
    Utf8String GetUsedBy();

    // Whether the product bears this name, without regard to the case of ASCII letters.
    std::uint8_t HasProductName(const Utf8String& name) const;

    std::uint8_t HasField(const Utf8String& name) const;

    // The field's first value, empty where it has none.
    Utf8String GetPathField(const Utf8String& name) const;

  private:
    SharedHandle<SQLCertificate> store_;
    mutable std::mutex mutex_;  // guards the two below
    Utf8String guid_;
    Utf8String usedBy_;
    Utf8String path_;
    Utf8StringList productNames_;
};
