#include "language/InstalledLanguage.h"

#include <exception>

#include "catalogue/manager/CCertificateMgr.h"
#include "catalogue/queries/CVelmarProductCertifier.h"
#include "trace/UTrace.h"

LANGID FindInstalledLanguage() {
    CBrevikKitCertificateMgr manager;
    CertificateReferences references;
    manager.GetCertificateList(&references);
    for (const SharedHandle<CCertificateReference>& reference : references) {
        const Utf8String guid = reference->GetGUID();
        UTrace::Info("pCertRef->GetGUID() returned %s", Utf8ToNarrow(guid).c_str());
        CertificateProductInfo info;
        const CVelmarProductCertifier certifier;
        certifier.CollectProductInfo(*reference->GetStore(), &info, {}, guid, {});
        if (info.languageId != 0) {
            const auto language = static_cast<LANGID>(info.languageId);
            UTrace::Info("MUI is disabled. Installed lang = %d found from %s", language,
                         Utf8ToNarrow(reference->GetPath()).c_str());
            return language;
        }
    }
    return 0;
}

LANGID FindInstalledLanguageOrNone() {
    try {
        return FindInstalledLanguage();
    } catch (const std::exception& failure) {
        UTrace::Error("The catalogue cannot be read, so no installed language is known: %s",
                      failure.what());
    } catch (...) {
        UTrace::Error("The catalogue cannot be read, so no installed language is known.");
    }
    return 0;
}
