// Gathers what the catalogue knows about one product.
//
// The certifier keeps nothing; a query makes one on its stack. Any thread, with a manager of that
// thread. Lookups let out what the manager's load lets out; the reads of one certificate throw
// nothing but std::bad_alloc.
#pragma once

#include <cstdint>
#include <string>

#include "catalogue/manager/CCertificateMgr.h"
#include "catalogue/records/SQLCertificate.h"
#include "text/SharedHandle.h"
#include "text/StringConversions.h"

// What an update of the product needs to know.
struct CertUpdateInfo {
    std::uint32_t m_dwLangID = 0;  // of the product as it was installed; 0 for none
    Utf8String m_strInstallerGUID;
    Utf8String m_strUsedBy;  // the uninstall entry of the installation that uses the product
};

// What its certificates say.
struct CertificateProductInfo {
    std::uint32_t productId = 0;
    Utf8String vectorLocation;
    std::string skuName;
    Utf8String languageCode;  // in lower case, such as "deu"
    std::uint32_t languageId = 0;
    std::uint32_t branding = 0;
    std::string htmlFolderName;
    Utf8String installerGuid;

    // These stand where the certificates say nothing.
    std::string productDisplayName = "PRODUCT_NAME";
    std::string enhancedProductDisplayName = "ENHANCED_PRODUCT_NAME";

    std::string customizationCode;
    std::string version;
    std::int32_t dialogWidth = 0;
    std::int32_t dialogHeight = 0;
    std::string usedBy;
};

class CVelmarProductCertifier {
  public:
    // Appends the GUIDs of the products whose certificates lie in the folder of the host program,
    // or, while the list is empty, in that of its parent process. Returns the list's length.
    std::uint32_t GetLocalGUIDs(CCertificateMgr& manager, Utf8StringList* guids) const;

    // The certificate of a product name, with its GUID and the GUID of the installation that uses
    // the product. Null, with both texts as they were, when no certificate has that name.
    SharedHandle<SQLCertificate> FindValidatedCertificate(CCertificateMgr& manager,
                                                          const Utf8String& name, Utf8String* guid,
                                                          Utf8String* usedBy) const;

    // Adds what one certificate says to a product's record. Stops at a certificate of another
    // location or another product.
    void CollectProductInfo(SQLCertificate& store, CertificateProductInfo* info,
                            const Utf8String& productName, const Utf8String& guid,
                            const Utf8String& usedBy) const;

    // Reads an item as a switch: 0 for off, 1 for on. `state` is -1 at first, then what an earlier
    // certificate gave, and receives the result; an item that is missing leaves it. A product's own
    // name is a switch that is on.
    std::int32_t ReadItemSwitch(const std::string& name, SQLCertificate& store,
                                std::int32_t* state) const;

    // What an update of a product needs to know. False, with `info` as it was, without a
    // certificate of that name, and unless updates are on in it. An installation that uses the
    // product is not always there; its field is then as it was.
    bool GetUpdateInfo(CCertificateMgr& manager, CertUpdateInfo* info,
                       const Utf8String& productName) const;
};
