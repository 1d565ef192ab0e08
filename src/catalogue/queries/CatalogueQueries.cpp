#include "catalogue/queries/CatalogueQueries.h"

#include <utility>

#include "catalogue/manager/CCertificateMgr.h"
#include "catalogue/queries/CVelmarProductCertifier.h"
#include "modules/ScopedText.h"

namespace CatalogueQueries {
namespace {

using CLibraryUtils::MakeBlock;

// False without a certificate.
bool HandOutItem(const SharedHandle<CCertificateReference>& reference,
                 const std::string& identifier, void** value, std::uint32_t* size) {
    if (reference == nullptr) {
        return false;
    }
    const std::string text = ReadField(*reference->GetStore(), identifier);
    char* block = MakeBlock(text);
    if (block == nullptr) {
        return false;
    }
    *size = static_cast<std::uint32_t>(text.size() + 1);
    *value = block;
    return true;
}

}  // namespace

bool CertificateItemValue(const std::string& installerGuid, const std::string& identifier,
                          void** value, std::uint32_t* size) {
    CBrevikKitCertificateMgr manager;
    return HandOutItem(manager.GetCertificateReferenceByGUID(NarrowToUtf8(installerGuid)),
                       identifier, value, size);
}

bool CertificateItemValueByProdName(const std::string& productName, const std::string& identifier,
                                    void** value, std::uint32_t* size) {
    CBrevikKitCertificateMgr manager;
    return HandOutItem(manager.GetValidCertificateReference(NarrowToUtf8(productName)), identifier,
                       value, size);
}

std::int32_t GetLocalGUIDs(char** guids) {
    char* block = MakeBlock(std::string());
    if (block == nullptr) {
        return 0;
    }
    *guids = block;  // whatever fails from here on
    CBrevikKitCertificateMgr manager;
    const CVelmarProductCertifier certifier;
    Utf8StringList found;
    const std::uint32_t count = certifier.GetLocalGUIDs(manager, &found);
    std::string list;
    for (const Utf8String& guid : found) {
        list += Utf8ToNarrow(guid) + '\0';
    }
    block = MakeBlock(list);
    if (block == nullptr) {
        return 0;
    }
    CoTaskMemFree(std::exchange(*guids, block));
    return static_cast<std::int32_t>(count);
}

}  // namespace CatalogueQueries
