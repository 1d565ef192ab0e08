// What the catalogue knows about one product: plain data, gathered from its certificates by
// CVelmarProductCertifier::CollectProductInfo.
#pragma once

#include <cstdint>
#include <string>

#include "text/StringConversions.h"

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
