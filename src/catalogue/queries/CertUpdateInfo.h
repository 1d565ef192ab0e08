// What the catalogue knows about the updates of one product: plain data, filled by
// CVelmarProductCertifier::GetUpdateInfo.
#pragma once

#include <cstdint>

#include "text/StringConversions.h"

struct CertUpdateInfo {
    std::uint32_t m_dwLangID = 0;  // of the product as it was installed; 0 for none
    Utf8String m_strInstallerGUID;
    Utf8String m_strUsedBy;  // the uninstall entry of the installation that uses the product
};
