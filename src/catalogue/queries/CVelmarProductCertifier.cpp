#include "catalogue/queries/CVelmarProductCertifier.h"

#include <algorithm>

#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"
#include "catalogue/manager/CertificateSources.h"
#include "catalogue/queries/RegistryQueries.h"
#include "modules/ModuleFolders.h"
#include "platform/component_model.h"
#include "registry/CRegKeyW.h"
#include "trace/UTrace.h"

namespace {

constexpr char kUpdateSwitch[] = "QDR_UpdateManager";

// Record keys are in lower case by their ASCII letters alone, folders by all of their letters.
void AppendGUIDsIn(const WideString& folder, const CertificateReferences& references,
                   Utf8StringList* guids) {
    const WideString folded = StringToLower(folder);
    for (const SharedHandle<CCertificateReference>& reference : references) {
        WideString path = NarrowToWide(reference->GetStore()->GetKey());
        path.resize(std::min(path.rfind(WIDE('\\')), path.size()));
        if (path.size() == folded.size() && StringToLower(path) == folded) {
            guids->push_back(reference->GetGUID());
        }
    }
}

void StoreUnlessEmpty(std::string text, std::string* field) {
    if (!text.empty()) {
        *field = std::move(text);
    }
}

void ReadRegistryText(CRegKeyW& key, const WCHAR* name, std::string* field) {
    WCHAR text[MAX_PATH] = {};
    DWORD count = MAX_PATH;
    if (key.QueryStringValue(name, text, &count) == ERROR_SUCCESS) {
        *field = WideToNarrow(text);
    }
}

// Sets the GUID and reads what is kept beside the certificate under it.
void ReadInstallation(const Utf8String& guid, CertificateProductInfo* info) {
    info->installerGuid = guid;
    CRegKeyW key;
    if (key.Open(HKEY_LOCAL_MACHINE, CertificateSources::RegistryKeyOf(guid).c_str(), KEY_READ) ==
        ERROR_SUCCESS) {
        ReadRegistryText(key, WIDE("Customization Code"), &info->customizationCode);
        ReadRegistryText(key, WIDE("Version"), &info->version);
    }
}

}  // namespace

std::uint32_t CVelmarProductCertifier::GetLocalGUIDs(CCertificateMgr& manager,
                                                     Utf8StringList* guids) const {
    const UTrace::Function scope("CVelmarProductCertifier::GetLocalGUIDs", nullptr);
    const WideString folder = GetProcessFolder();
    CertificateReferences references;
    manager.GetCertificateList(&references);
    AppendGUIDsIn(folder, references, guids);
    if (guids->empty()) {
        AppendGUIDsIn(GetParentProcessFolder(), references, guids);
    }
    return static_cast<std::uint32_t>(guids->size());
}

SharedHandle<SQLCertificate> CVelmarProductCertifier::FindValidatedCertificate(
    CCertificateMgr& manager, const Utf8String& name, Utf8String* guid, Utf8String* usedBy) const {
    const UTrace::Function scope("CVelmarProductCertifier::FindValidatedCertificate", nullptr);
    const SharedHandle<CCertificateReference> found = manager.GetValidCertificateReference(name);
    if (found == nullptr) {
        return nullptr;
    }
    *guid = found->GetGUID();
    *usedBy = found->GetUsedBy();
    return found->GetStore();
}

void CVelmarProductCertifier::CollectProductInfo(SQLCertificate& store,
                                                 CertificateProductInfo* info,
                                                 const Utf8String& productName,
                                                 const Utf8String& guid,
                                                 const Utf8String& usedBy) const {
    const Utf8String location = NarrowToUtf8(ReadField(store, "Vector Location"));
    const auto productId = static_cast<std::uint32_t>(ReadNumber(store, "QDR_ProductID"));
    if ((!info->vectorLocation.empty() && info->vectorLocation != location) ||
        (info->productId != 0 && info->productId != productId)) {
        return;
    }
    info->vectorLocation = location;
    info->productId = productId;

    info->branding = static_cast<std::uint32_t>(ReadNumber(store, "QDR_Branding"));
    info->htmlFolderName = ReadField(store, "QDR_HTMLFolderName");
    info->skuName = ReadField(store, "SKUName");
    if (info->skuName.empty()) {
        info->skuName = Utf8ToNarrow(productName);
    }
    if (info->languageCode.empty()) {
        ReadProductLanguage(guid, &info->languageCode, &info->languageId);
    }
    info->dialogWidth = std::max(info->dialogWidth, ReadNumber(store, "QDR_DialogWidth"));
    info->dialogHeight = std::max(info->dialogHeight, ReadNumber(store, "QDR_DialogHeight"));
    if (info->installerGuid.empty()) {
        ReadInstallation(guid, info);
    }
    StoreUnlessEmpty(ReadField(store, "QDR_ProductDisplayName"), &info->productDisplayName);
    StoreUnlessEmpty(ReadField(store, "QDR_EnhancedProductDisplayName"),
                     &info->enhancedProductDisplayName);
    info->usedBy = Utf8ToNarrow(usedBy);
}

std::int32_t CVelmarProductCertifier::ReadItemSwitch(const std::string& name, SQLCertificate& store,
                                                     std::int32_t* state) const {
    try {
        if (*state == -1 || *state == 0) {
            std::string text;
            store.GetFieldAsText(name, &text);
            if (!text.empty()) {
                *state = TextToInt(text) != 0 ? 1 : 0;
            }
        }
        std::vector<std::string> productNames;
        store.GetFieldAsVector("QDR_ProductName", &productNames);
        if (std::ranges::find(productNames, name) != productNames.end()) {
            *state = 1;
        }
    } catch (const SQLite3WrapperException&) {
        // What was found before stands.
    } catch (const _com_error&) {
    }
    return *state;
}

bool CVelmarProductCertifier::GetUpdateInfo(CCertificateMgr& manager, CertUpdateInfo* info,
                                            const Utf8String& productName) const {
    const UTrace::Function scope("CVelmarProductCertifier::GetUpdateInfo", nullptr);
    const std::string name = Utf8ToNarrow(productName);
    UTrace::Info("CVelmarProductCertifier::GetUpdateInfo() - strProductName = %s", name.c_str());
    Utf8String guid;
    Utf8String usedBy;
    const SharedHandle<SQLCertificate> store =
        FindValidatedCertificate(manager, productName, &guid, &usedBy);
    if (store == nullptr) {
        return false;
    }
    Utf8String languageCode;
    std::uint32_t language = 0;
    ReadProductLanguage(guid, &languageCode, &language);
    std::int32_t flag = -1;
    ReadItemSwitch(kUpdateSwitch, *store, &flag);
    UTrace::Info(
        "CVelmarProductCertifier::GetUpdateInfo() - %s = %d, certificate name = %s, installer "
        "guid = %s ",
        kUpdateSwitch, flag, name.c_str(), Utf8ToNarrow(guid).c_str());
    if (flag != 1) {
        return false;
    }
    info->m_dwLangID = language;
    info->m_strInstallerGUID = guid;
    if (!usedBy.empty()) {
        info->m_strUsedBy = usedBy;
    }
    return true;
}
